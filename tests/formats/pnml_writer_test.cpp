#include "formats/pnml_writer.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <variant>

#include "formats/pnml_reader.h"
#include "oracle/coding.h"
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

template <net::Process P>
std::string written(const P& process) {
  std::ostringstream stream;
  EXPECT_TRUE(write_pnml(process, stream));
  return stream.str();
}

// As `describe` tells it; a text without meaning if the document is refused or of another kind.
template <net::Process P>
std::string description_of(std::unique_ptr<net::FullVariant> variant) {
  if (variant == nullptr || !std::holds_alternative<P>(*variant)) return "not read";
  return support::describe(std::get<P>(*variant));
}

template <net::Process P>
void expect_same_when_read(const P& process) {
  const support::CaughtMessages warnings;
  EXPECT_EQ(description_of<P>(read_pnml_text<net::FullVariant>(written(process))),
            support::describe(process));
}

const std::string hard_names[] = {"",       " ",        "  a  b  ", "\r",    "a\r\nb\r", "\tx\n",
                                  "<a+,b>", "]]>",      "&lt;",     "&#13;", "'\"&",     "<!--",
                                  "\x01",   "\x1f\x7f", "\xc3\xa9", "p q\\", "</text>",  "%s"};

template <class P>
class PnmlWriterOf : public ::testing::Test {};
using Kinds =
    ::testing::Types<net::NetPrefix, net::StgPrefix, net::NetMergedProcess, net::StgMergedProcess>;
TYPED_TEST_SUITE(PnmlWriterOf, Kinds);

TYPED_TEST(PnmlWriterOf, NamesOfAnyCharactersAreReadBack) {
  support::ProcessBuilder<TypeParam> b;
  for (const std::string& name : hard_names) {
    auto& before = b.condition(name, 1);
    b.event(name, {&before}, {&b.condition(name + "'", 0)});
  }
  TypeParam& process = b.finish();
  if constexpr (TypeParam::NetType::has_signals) {  // as the reader finds them
    for (const auto& transition : process.transitions) {
      transition->signal->initial_value = transition->sign == net::Sign::minus ? 1 : 0;
    }
  }
  expect_same_when_read(process);
}

TYPED_TEST(PnmlWriterOf, AProcessWithoutEventsIsReadBack) {
  support::ProcessBuilder<TypeParam> b;
  b.condition("p", 1);
  expect_same_when_read(b.finish());
}

TYPED_TEST(PnmlWriterOf, AZeroByteInANameIsAnErrorAndNothingIsWritten) {
  support::ProcessBuilder<TypeParam> b;
  b.condition(std::string("a\0b", 3));
  const support::CaughtMessages messages;
  std::ostringstream stream;
  EXPECT_FALSE(write_pnml(b.finish(), stream));
  EXPECT_EQ(stream.str(), "");
  EXPECT_NE(messages.text().find("zero byte"), std::string::npos);
}

TEST(PnmlWriter, TheFiveCasesOfCutOffsAreReadBack) {
  const auto prefix =
      support::process_from<net::NetPrefix>("a: a ->; b: b ->; c: c ->; d: d ->; e: e ->");
  const auto& events = prefix->events;
  events[1]->cut_off.set_correspondents({});
  events[2]->cut_off.set_unknown();
  events[3]->cut_off.set_correspondents(std::array{events[0].get()});
  events[4]->cut_off.set_correspondents(std::array{events[2].get(), events[0].get()});
  expect_same_when_read(*prefix);
}

// All that the format knows of a merged process, and its letters.
TEST(PnmlWriter, TheTextIsThatOfTheFormat) {
  EXPECT_EQ(written(*support::process_from<net::NetMergedProcess>("marked p; t!: p -> q'")),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<pnml>\n<net id=\"process\" type=\"merged_process:low_level_net\">\n"
            "<original_net>\n<net id=\"original\" type=\"low_level_net\">\n<page>\n"
            "<place id=\"p0\"><name><text>p</text></name>"
            "<initialMarking><text>1</text></initialMarking></place>\n"
            "<place id=\"p1\"><name><text>q</text></name></place>\n"
            "<transition id=\"t0\"><name><text>t</text></name></transition>\n"
            "<arc source=\"p0\" target=\"t0\"/>\n<arc source=\"t0\" target=\"p1\"/>\n"
            "</page>\n</net>\n</original_net>\n<page>\n"
            "<place id=\"c0\"><originalNode ref=\"p0\"/>"
            "<occurrence_depth><text>1</text></occurrence_depth>"
            "<initialMarking><text>1</text></initialMarking></place>\n"
            "<place id=\"c1\"><originalNode ref=\"p1\"/>"
            "<occurrence_depth><text>2</text></occurrence_depth></place>\n"
            "<transition id=\"e0\"><originalNode ref=\"t0\"/><cut-off/></transition>\n"
            "<arc source=\"c0\" target=\"e0\"/>\n<arc source=\"e0\" target=\"c1\"/>\n"
            "</page>\n</net>\n</pnml>\n");
}

TEST(PnmlWriter, ConditionsLeftOutAfterCutOffsGetNumbersBehindTheOthers) {
  support::ProcessBuilder<net::NetPrefix> b;
  auto& p = b.condition("p");
  auto& t = b.event("t", {&p}, {});
  t.cut_off.set_correspondents({});
  net::NetPrefix& prefix = b.finish();
  net::ConditionOf<net::Net> left_out;
  left_out.place = p.place;
  net::add_link(t, left_out);
  net::add_arc(*t.transition, *p.place);
  const support::CaughtMessages warnings;
  EXPECT_EQ(description_of<net::NetPrefix>(read_pnml_text<net::FullVariant>(written(prefix))),
            "place p marked 1 <- 0 -> 0\n"
            "transition t <- 0 -> 0\n"
            "condition p <- -> 0\n"
            "condition p <- 0 ->\n"
            "event t <- 0 -> 1 cut-off of\n");
}

TEST(PnmlWriter, RandomPrefixesAndTheirMergedProcessesAreReadBack) {
  support::for_each_seed(40, [&](std::uint64_t seed) {
    const auto prefix = oracle::unfold(oracle::random_net(seed), 500);
    net::Stg stg = oracle::random_stg(seed, {.dummies = seed % 2 == 0, .toggles = seed % 3 == 0});
    ASSERT_TRUE(oracle::assign_initial_values(stg));
    const auto stg_prefix = oracle::unfold(stg, 500);
    if (prefix) {
      expect_same_when_read(*prefix);
      expect_same_when_read(oracle::merge(*prefix));
    }
    if (stg_prefix) {
      expect_same_when_read(*stg_prefix);
      expect_same_when_read(oracle::merge(*stg_prefix));
    }
  });
}

// More than any buffer holds, so that writing fails in the middle and not only at the end.
TEST(PnmlWriter, AFileThatCannotBeWrittenIsAnErrorAndLeavesNothingBehind) {
  const support::TemporaryFolder folder;
  support::ProcessBuilder<net::NetPrefix> b;
  for (int i = 0; i < 3000; ++i) b.event("t", {&b.condition("p")}, {&b.condition("p")});
  const net::NetPrefix& prefix = b.finish();
  std::filesystem::create_symlink("/dev/full", folder.path("full.pnml"));
  std::filesystem::create_symlink("/dev/full", folder.path("full.pnml.gz"));
  for (const char* const name : {"full.pnml", "full.pnml.gz"}) {
    const support::CaughtMessages messages;
    EXPECT_FALSE(save_pnml(prefix, folder.path(name))) << name;
    EXPECT_EQ(messages.text(), "\nError: cannot write a file\n") << name;
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 2);
}

}  // namespace
}  // namespace vorel::formats
