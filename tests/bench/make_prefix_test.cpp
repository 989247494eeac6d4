// Big prefixes are trusted by their construction; small ones of the same construction are tried
// by brute force, after a way through the files and the program's readers.
#include "bench/make_prefix.h"

#include <gtest/gtest.h>

#include <sstream>

#include "formats/mci_reader.h"
#include "formats/pnml_reader.h"
#include "net/sanity_checks.h"
#include "oracle/coding.h"
#include "oracle/prefix_checks.h"
#include "oracle/reference_unfolder.h"

namespace vorel::bench {
namespace {

using enum ModuleKind;
using oracle::Exploration;
using oracle::StateGraph;

struct SmallCase {
  std::vector<GroupShape> groups;
  bool has_deadlock;
};

std::vector<SmallCase> small_cases() {
  std::vector<SmallCase> cases;
  for (const ModuleKind kind : {two_orders, join, exclusion, three_orders, two_locks}) {
    cases.push_back({{{{kind}, 2, GroupEnding::starts_again}}, kind == two_locks});
    cases.push_back({{{{kind}, 4, GroupEnding::ends}}, true});
  }
  cases.push_back({{{{two_orders, exclusion}, 6, GroupEnding::starts_again}}, false});
  cases.push_back({{{{two_locks, join}, 4, GroupEnding::starts_again}}, true});
  // A deadlock needs all groups.
  const GroupShape small_cycle{{join}, 2, GroupEnding::starts_again};
  const GroupShape small_end{{two_orders}, 2, GroupEnding::ends};
  cases.push_back({{small_cycle, small_end}, false});
  cases.push_back({{small_end, small_end}, true});
  return cases;
}

PrefixFamily family_of(const std::vector<GroupShape>& shapes) {
  std::vector<Group> groups;
  std::uint64_t events = 0;
  for (const GroupShape& shape : shapes) {
    groups.push_back(make_group(shape));
    events += groups.back().events.size();
  }
  return {std::move(groups), events};  // each group once
}

std::unique_ptr<FullVariant> through_pnml(const PrefixFamily& family, NetKind kind) {
  std::ostringstream out;
  write_pnml(family, kind, out);
  return read_pnml_text<FullVariant>(out.str());
}

template <class N>
void expect_complete(const PrefixOf<N>& prefix, bool has_deadlock) {
  const StateGraph<N> graph = oracle::explore<N>(prefix);
  ASSERT_EQ(graph.outcome, Exploration::complete);
  EXPECT_EQ(graph.has_deadlock(), has_deadlock);
  EXPECT_EQ(oracle::branching_fault(prefix), "");
  EXPECT_EQ(oracle::completeness_fault(prefix, graph), "");
  EXPECT_TRUE(passes_sanity_checks(prefix));
  // Not only complete: the same number of events as unfolding gives.
  const auto unfolded = oracle::unfold<N>(prefix);
  ASSERT_TRUE(unfolded);
  EXPECT_EQ(unfolded->events.size(), prefix.events.size());
  EXPECT_EQ(unfolded->conditions.size(), prefix.conditions.size());
}

TEST(MadePrefixes, AreThoseThatUnfoldingGives) {
  int number = 0;
  for (const SmallCase& small : small_cases()) {
    SCOPED_TRACE(number++);
    const PrefixFamily family = family_of(small.groups);
    ASSERT_EQ(family.copies().size(), small.groups.size());
    const auto net = through_pnml(family, NetKind::net);
    ASSERT_TRUE(net);
    expect_complete(std::get<NetPrefix>(*net), small.has_deadlock);
    const auto stg = through_pnml(family, NetKind::stg);
    ASSERT_TRUE(stg);
    expect_complete(std::get<StgPrefix>(*stg), small.has_deadlock);
  }
}

TEST(MadePrefixes, HaveCodesThatTellAllStatesApart) {
  for (const SmallCase& small : small_cases()) {
    const auto process = through_pnml(family_of(small.groups), NetKind::stg);
    const auto& stg = std::get<StgPrefix>(*process);
    const auto graph = oracle::explore<Stg>(stg);
    const auto initial = oracle::find_initial_values(stg, graph);
    ASSERT_TRUE(initial);
    EXPECT_EQ(*initial, oracle::Values(stg.signals.size(), 0));
    EXPECT_FALSE(oracle::has_usc_conflict(graph, *initial));
  }
}

TEST(MadePrefixes, AreTheSameInBothFormats) {
  for (const bool with_deadlock : {false, true}) {
    const PrefixFamily family(standard_templates(with_deadlock), 500);
    const auto from_pnml = through_pnml(family, NetKind::stg);
    ASSERT_TRUE(from_pnml);
    std::stringstream mci;
    write_mci(family, NetKind::stg, mci);
    const auto from_mci = read_mci_stg(mci, "made.mci");
    ASSERT_TRUE(from_mci);
    std::ostringstream of_pnml, of_mci;
    print_statistics(std::get<StgPrefix>(*from_pnml), of_pnml);
    print_statistics(*from_mci, of_mci);
    EXPECT_EQ(of_pnml.str(), of_mci.str());
    EXPECT_EQ(oracle::branching_fault(*from_mci), "");
  }
}

TEST(MadePrefixes, HaveTenToThirtyPercentOfCutOffs) {
  for (const bool with_deadlock : {false, true}) {
    const PrefixFamily family(standard_templates(with_deadlock), 100'000);
    const auto& sizes = family.sizes();
    EXPECT_GE(sizes.events, 100'000u);
    EXPECT_LT(sizes.events, 101'000u);
    EXPECT_GT(sizes.cut_offs * 10, sizes.events);
    EXPECT_LT(sizes.cut_offs * 10, sizes.events * 3);
  }
}

}  // namespace
}  // namespace vorel::bench
