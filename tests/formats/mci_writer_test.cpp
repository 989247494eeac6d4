#include "formats/mci_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>

#include "formats/mci_reader.h"
#include "oracle/random_net.h"
#include "oracle/reference_unfolder.h"
#include "support/legacy_files.h"
#include "support/process_builder.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::formats {
namespace {

template <class N>
std::string written(const net::PrefixOf<N>& prefix) {
  const support::CaughtMessages messages;
  std::ostringstream stream;
  EXPECT_TRUE(write_mci(prefix, stream));
  EXPECT_EQ(messages.text(), support::deprecation("*.mci"));
  return stream.str();
}

TEST(MciWriter, RandomPrefixesAreReadBackTheSame) {
  support::for_each_seed(100, [&](std::uint64_t seed) {
    auto prefix = oracle::unfold(oracle::random_net(seed), 500);
    if (!prefix) return;
    const auto again = support::read_bytes(read_mci_net, written(*prefix)).process;
    ASSERT_NE(again, nullptr) << "seed " << seed;
    support::forget_arcs_of_dead_transitions(*prefix);
    EXPECT_EQ(support::describe(*again), support::describe(*prefix)) << "seed " << seed;
  });
}

TEST(MciWriter, TheExampleIsWrittenBackByteForByte) {
  const std::string bytes = support::read_text(support::example("philosophers4.mci"));
  EXPECT_EQ(written(*support::read_bytes(read_mci_net, bytes).process), bytes);
}

TEST(MciWriter, SeveralCorrespondentsBecomeAnUnknownOne) {
  const auto prefix = support::process_from<net::NetPrefix>("t: p ->; u: p ->");
  auto &t = *prefix->events[0], &u = *prefix->events[1];
  u.cut_off.set_correspondents(std::array{&t, &u});
  const auto again = support::read_bytes(read_mci_net, written(*prefix)).process;
  ASSERT_NE(again, nullptr);
  EXPECT_TRUE(again->events[1]->cut_off.is_unknown());
}

// In memory the order is t, x+, y-; with prefixes it is d.t, O.y-, i.x+.
TEST(MciWriter, AnStgIsWrittenWithItsKindsAndReadBackTheSame) {
  const std::string bytes =
      support::words({4, 3, 3, 2, 1, 1, 0, 1, 0, 1, 1, 2, 0, 1, 2, 3, 0, 1, 3, 0, 0, 0, 1, 3, 4}) +
      support::names({"p", "", "d.t", "O.y-", "i.x+", ""});
  const auto prefix = support::read_bytes(read_mci_stg, bytes).process;
  ASSERT_NE(prefix, nullptr);
  EXPECT_EQ(prefix->transitions[1]->name, "x+");
  const support::CaughtMessages messages;
  std::ostringstream stream;
  ASSERT_TRUE(write_stg_mci(*prefix, stream));
  EXPECT_EQ(stream.str(), bytes);
  EXPECT_EQ(prefix->transitions[1]->name, "x+");
}

TEST(MciWriter, ANameThatTheFormatCannotHoldIsAnErrorRatherThanAnotherNet) {
  support::ProcessBuilder<net::NetPrefix> b;
  b.condition(std::string("a\0b", 3));
  const net::NetPrefix& prefix = b.finish();
  std::ostringstream stream;
  const support::CaughtMessages messages;
  EXPECT_FALSE(write_mci(prefix, stream));
  EXPECT_EQ(stream.str(), "");
}

}  // namespace
}  // namespace vorel::formats
