#include "formats/mp_writer.h"

#include <gtest/gtest.h>

#include "formats/mp_reader.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_merger.h"
#include "oracle/reference_unfolder.h"
#include "support/legacy_files.h"
#include "support/process_builder.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::formats {
namespace {

template <class N>
std::string written(const net::MergedProcessOf<N>& process) {
  const support::CaughtMessages messages;
  std::ostringstream stream;
  EXPECT_TRUE(write_mp(process, stream));
  EXPECT_EQ(messages.text(), support::deprecation("*.mp"));
  return stream.str();
}

template <class N, class Reader>
void expect_same_when_read(const N& net, Reader reader) {
  const auto prefix = oracle::unfold(net, 500);
  if (!prefix) return;
  auto merged = oracle::merge(*prefix);
  const auto again = support::read_bytes(reader, written(merged)).process;
  ASSERT_NE(again, nullptr);
  support::forget_arcs_of_dead_transitions(merged);
  EXPECT_EQ(support::describe(*again), support::describe(merged));
}

TEST(MpWriter, RandomMergedProcessesAreReadBackTheSame) {
  support::for_each_seed(40, [&](std::uint64_t seed) {
    expect_same_when_read(oracle::random_net(seed), read_mp_net);
    expect_same_when_read(oracle::random_stg(seed, {.dummies = true}), read_mp_stg);
  });
}

TEST(MpWriter, TheExampleIsWrittenBackByteForByte) {
  const std::string bytes = support::read_text(support::example("philosophers4.mp"));
  EXPECT_EQ(written(*support::read_bytes(read_mp_net, bytes).process), bytes);
}

TEST(MpWriter, WhatTheFormatCannotHoldIsAnErrorAndNothingIsWritten) {
  support::ProcessBuilder<net::NetMergedProcess> line_feed;
  line_feed.condition("a\nb", 1);
  const auto deep_token = support::process_from<net::NetMergedProcess>("marked p'");
  const auto empty_preset = support::process_from<net::NetMergedProcess>("t: -> p");
  const std::pair<const net::NetMergedProcess*, std::string> rows[] = {
      {&line_feed.finish(), "a line feed is in the name \"a\nb\""},
      {deep_token.get(), "c0 is marked at depth 2"},
      {empty_preset.get(), "e0 has an empty preset"}};
  for (const auto& [process, reason] : rows) {
    const support::CaughtMessages messages;
    std::ostringstream stream;
    EXPECT_FALSE(write_mp(*process, stream));
    EXPECT_EQ(stream.str(), "");
    EXPECT_EQ(messages.text(),
              support::deprecation("*.mp") +
                  "\nError: the merged process cannot be written in the *.mp format: " + reason +
                  "\n");
  }
}

}  // namespace
}  // namespace vorel::formats
