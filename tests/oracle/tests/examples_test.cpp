// The examples, whose answers were worked out by other means than ours.
#include <gtest/gtest.h>

#include <sstream>

#include "oracle/coding.h"
#include "oracle/net_text.h"
#include "oracle/parse_g.h"
#include "oracle/reference_merger.h"
#include "oracle/reference_unfolder.h"

namespace vorel::oracle {
namespace {

struct PrefixSizes {
  std::size_t conditions = 0, events = 0, cut_offs = 0, consumed = 0, produced = 0;
  bool operator==(const PrefixSizes&) const = default;
};

void PrintTo(const PrefixSizes& s, std::ostream* out) {
  *out << "B " << s.conditions << " E " << s.events << " C " << s.cut_offs << " BE " << s.consumed
       << " EB " << s.produced;
}

template <class N>
PrefixSizes sizes_of(const net::PrefixOf<N>& prefix) {
  PrefixSizes sizes{prefix.conditions.size(), prefix.events.size()};
  for (const auto& event : prefix.events) {
    sizes.cut_offs += event->is_cut_off() ? 1 : 0;
    sizes.consumed += event->preset.size();
    sizes.produced += event->postset.size();
  }
  return sizes;
}

struct ExampleRow {
  const char* name;
  std::size_t states;
  PrefixSizes sizes;
  const char* csc_signals;  // in the order of signals
  const char* normalcy;     // of the outputs and internal signals, p and n
};

constexpr ExampleRow example_table[] = {
    {"celement", 8, {10, 6, 1, 8, 8}, "", "c:p "},
    {"vme_read", 14, {15, 12, 1, 14, 13}, "d lds ", "d: lds: dtack:p "},
    {"vme_read_csc", 16, {17, 14, 1, 16, 15}, "", "d:p lds:p dtack:p csc: "},
    {"toggle", 8, {9, 8, 1, 8, 8}, "", "a: b: "},
    {"sequencer", 12, {13, 12, 1, 12, 12}, "ar br pa ", "ar: br: pa: "},
    {"fork_join", 20, {15, 12, 1, 14, 14}, "", "ar:p br:p pa:p "},
    {"latch_ctrl", 18, {17, 12, 1, 15, 15}, "", "lt: ain:p rout:p "},
    {"mutex2", 12, {13, 8, 2, 10, 10}, "", "g1: g2: "},
    {"dummy_fork", 28, {14, 12, 1, 13, 13}, "done ", "xa:p xb:p done: "},
    {"muller3", 32, {29, 16, 1, 25, 25}, "", nullptr},
};

net::Stg example(const std::string& name) {
  const auto text = read_file(VOREL_EXAMPLES "/" + name + ".g");
  EXPECT_TRUE(text) << name;
  auto stg = text ? parse_g(*text) : std::nullopt;
  EXPECT_TRUE(stg) << name;
  return stg ? std::move(*stg) : net::Stg{};
}

class Examples : public testing::TestWithParam<ExampleRow> {};

TEST_P(Examples, HaveTheirKnownStatesAndPrefixes) {
  const ExampleRow& row = GetParam();
  const net::Stg stg = example(row.name);
  const StateGraph<net::Stg> graph = explore(stg);
  ASSERT_EQ(graph.outcome, Exploration::complete);
  EXPECT_EQ(graph.states.size(), row.states);
  EXPECT_FALSE(graph.has_deadlock());
  const auto prefix = unfold(stg);
  ASSERT_TRUE(prefix);
  EXPECT_EQ(sizes_of(*prefix), row.sizes);
}

TEST_P(Examples, HaveTheirKnownCodingProperties) {
  const ExampleRow& row = GetParam();
  const net::Stg stg = example(row.name);
  const StateGraph<net::Stg> graph = explore(stg);
  const auto initial = find_initial_values(stg, graph);
  ASSERT_TRUE(initial);
  EXPECT_EQ(*initial, Values(stg.signals.size(), 0));
  std::string conflicts, normalcy;
  for (const std::uint32_t signal : csc_conflict_signals(stg, graph, *initial)) {
    conflicts += stg.signals[signal]->name + " ";
  }
  EXPECT_EQ(conflicts, row.csc_signals);
  for (std::uint32_t i = stg.inputs_end; i < stg.internals_end; ++i) {
    const Normalcy of_signal = normalcy_of(graph, *initial, i);
    normalcy += stg.signals[i]->name + ":" + (of_signal.p ? "p" : "") + (of_signal.n ? "n" : "");
    normalcy += " ";
  }
  if (row.normalcy != nullptr) {
    EXPECT_EQ(normalcy, row.normalcy);
  }
}

INSTANTIATE_TEST_SUITE_P(All, Examples, testing::ValuesIn(example_table),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Philosophers, FourOfThemHaveTheirKnownStatesPrefixAndMergedProcess) {
  const net::Net net = philosophers(4);
  const StateGraph<net::Net> graph = explore(net);
  EXPECT_EQ(graph.states.size(), 34u);
  EXPECT_EQ(graph.deadlocks().size(), 1u);
  EXPECT_EQ(graph.shortest_deadlock(), 4u);
  const auto prefix = unfold(net);
  ASSERT_TRUE(prefix);
  EXPECT_EQ(sizes_of(*prefix), (PrefixSizes{28, 12, 4, 20, 20}));
  const net::NetMergedProcess merged = merge(*prefix);
  EXPECT_EQ(merged.conditions.size(), 24u);
  EXPECT_EQ(merged.events.size(), 12u);
}

}  // namespace
}  // namespace vorel::oracle
