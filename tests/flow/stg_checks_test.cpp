// What is wrong with random STGs, against all of their states.
#include "flow/stg_checks.h"

#include <map>
#include <set>

#include "flow/flow_testing.h"
#include "flow/unfold_findings.h"
#include "oracle/random.h"
#include "oracle/random_stg.h"
#include "support/caught_messages.h"
#include "support/seeds.h"

namespace vorel::flow {
namespace {

using flow_testing::state_after;
using flow_testing::Subject;
using Names = std::vector<std::string>;

FindingKind kind_of(const net::Stg& stg, std::uint32_t loser, std::uint32_t taker) {
  if (loser < stg.inputs_end) return FindingKind::input_held_back;
  return taker < stg.inputs_end ? FindingKind::not_persistent : FindingKind::arbitration;
}

using Expected = std::map<std::pair<FindingKind, Names>, std::optional<std::size_t>>;

Expected expected_findings(const Subject& subject) {
  const net::Stg& stg = subject.prefix;
  Expected expected;
  std::set<const net::StgTransition*> live;
  oracle::SignalSet live_signals;
  for (const auto& state : subject.graph.states) {
    for (const auto& arc : state.arcs) {
      live.insert(arc.transition);
      live_signals.insert(arc.transition->signal->index);
    }
  }
  for (const auto& transition : stg.transitions)
    if (!live.contains(transition.get()))
      expected[{FindingKind::dead_transition, {transition->name}}] = std::nullopt;
  for (const net::SignalId signal : stg.visible_signals())
    if (!live_signals.contains(signal.value))
      expected[{FindingKind::dead_signal, {stg.signals[signal.value]->name}}] = std::nullopt;
  if (const auto length = subject.graph.shortest_deadlock())
    expected[{FindingKind::deadlock, {}}] = *length;
  for (const auto& [pair, length] : oracle::shortest_disablings(subject.graph)) {
    const auto [loser, taker] = pair;
    if (std::max(loser, taker) >= stg.inputs_end)
      expected[{kind_of(stg, loser, taker), {stg.signals[loser]->name, stg.signals[taker]->name}}] =
          length;
  }
  return expected;
}

void check_findings(const Subject& subject, int solver, std::set<FindingKind>& kinds) {
  const std::vector<StgFinding> findings = check_stg(subject.prefix, {.solver = solver});
  Expected found;
  for (const StgFinding& finding : findings) {
    std::optional<std::size_t> length;
    if (finding.trace) {
      length = finding.trace->size();
      EXPECT_TRUE(state_after(subject, *finding.trace)) << finding.message;
    }
    EXPECT_TRUE(found.emplace(std::pair(finding.kind, finding.subjects), length).second);
    EXPECT_EQ(finding.gravity == Gravity::fault, finding.kind == FindingKind::not_persistent);
    kinds.insert(finding.kind);
  }
  EXPECT_EQ(found, expected_findings(subject));
  EXPECT_TRUE(std::ranges::is_sorted(findings, std::greater{}, &StgFinding::gravity));
}

TEST(StgChecks, FindWhatTheStatesShow) {
  std::set<FindingKind> kinds;
  const support::CaughtMessages warnings;
  const auto [first, end] = support::seeds(200);
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    check_findings(
        Subject(oracle::random_stg(seed, {.dummies = seed % 2 == 1, .toggles = seed % 3 == 1})),
        static_cast<int>(seed / 2 % 2), kinds);
  }
  EXPECT_EQ(kinds, (std::set{FindingKind::not_persistent, FindingKind::dead_transition,
                             FindingKind::dead_signal, FindingKind::deadlock,
                             FindingKind::arbitration, FindingKind::input_held_back}));
}

Names names_in(const StgTrace& trace) {
  Names names;
  for (const TraceStep& step : trace) names.push_back(step.transition);
  return names;
}

// All firings but the last go well, and that one brings the second token.
void check_unsafe(const net::Stg& stg, const StgFinding& finding) {
  Names names = names_in(*finding.trace);
  EXPECT_FALSE(oracle::replay(stg, names));
  ASSERT_FALSE(names.empty());
  const auto last =
      std::ranges::find_if(stg.transitions, [&](const auto& t) { return t->name == names.back(); });
  names.pop_back();
  const auto marking = oracle::replay(stg, names);
  ASSERT_TRUE(marking && oracle::is_enabled(*marking, **last));
  const auto place = std::ranges::find_if(
      (*last)->postset, [&](const auto* p) { return p->name == finding.subjects.at(0); });
  ASSERT_NE(place, (*last)->postset.end());
  EXPECT_TRUE((*marking)[(*place)->index]);
}

// The last edge tells one initial value of the signal, some other edge the other.
void check_inconsistent(const oracle::StateGraph<net::Stg>& graph, const net::Stg& stg,
                        const StgFinding& finding) {
  EXPECT_TRUE(oracle::replay(stg, names_in(*finding.trace)));
  ASSERT_FALSE(finding.trace->empty());
  EXPECT_EQ(finding.trace->back().signal, finding.subjects.at(0));
  std::set<bool> initial;
  for (const auto& state : graph.states)
    for (const auto& arc : state.arcs)
      if (arc.transition->signal->name == finding.subjects[0] &&
          arc.transition->sign != net::Sign::toggle)
        initial.insert((arc.transition->sign == net::Sign::minus) !=
                       state.parity[arc.transition->signal->index]);
  EXPECT_EQ(initial.size(), 2u);
}

TEST(StgChecks, TellPlacesThatHaveTwoTokensFromTheStart) {
  net::Stg stg = oracle::random_stg(1);
  stg.places[0]->initial_marking = 2;
  const support::CaughtMessages errors;
  unfolder::Unfolder<net::Stg> unfolder(std::move(stg), {});
  EXPECT_FALSE(unfolder.unfold());
  const StgFinding finding = unsafe_finding(unfolder);
  EXPECT_EQ(finding.subjects, Names{unfolder.net().places[0]->name});
  EXPECT_TRUE(finding.trace && finding.trace->empty());
}

// One more edge of a signal of the STG, which nothing follows: it happens once, and may need what
// another transition needs, or a place that it leaves as it is.
void add_last_edge(net::Stg& stg, oracle::Random& random) {
  auto& edge = base::append_new(stg.transitions);
  edge.signal = stg.signals[random.below(stg.internals_end)].get();
  edge.sign = random.chance(20) ? net::Sign::toggle
                                : (random.chance(50) ? net::Sign::plus : net::Sign::minus);
  edge.name = edge.signal->name + "/last";
  if (random.chance(80)) {
    auto& once = base::append_new(stg.places);
    once.name = "once";
    once.initial_marking = 1;
    net::add_arc(once, edge);
  }
  const bool is_bound = edge.preset.empty() || random.chance(70);
  net::StgPlace& needed = *stg.places[random.below(stg.places.size())];
  if (is_bound && needed.name != "once") {
    net::add_arc(needed, edge);
    if (edge.preset.size() == 2 && random.chance(50)) net::add_arc(edge, needed);
  }
  auto& end = base::append_new(stg.places);
  end.name = "end";
  net::add_arc(edge, end);
  net::sort_net(stg);
}

TEST(StgChecks, TellWhyThereIsNoPrefix) {
  int unsafe = 0, inconsistent = 0;
  const support::CaughtMessages errors;
  const auto [first, end] = support::seeds(60);
  for (std::uint64_t seed = first; seed < end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    net::Stg stg = oracle::random_stg(seed, {.dummies = seed % 2 == 1});
    oracle::Random random(seed);
    net::StgTransition& changed = *stg.transitions[random.below(stg.transitions.size())];
    if (random.chance(40))
      add_last_edge(stg, random);
    else if (random.chance(50))
      stg.places[random.below(stg.places.size())]->initial_marking = 1;
    else if (changed.sign != net::Sign::toggle)
      changed.sign = changed.sign == net::Sign::plus ? net::Sign::minus : net::Sign::plus;
    const auto graph = oracle::explore(stg, 3000);
    if (graph.outcome == oracle::Exploration::too_large) continue;
    unfolder::Unfolder<net::Stg> unfolder(std::move(stg), {});
    if (!unfolder.unfold()) {
      ASSERT_EQ(graph.outcome, oracle::Exploration::unsafe);
      check_unsafe(unfolder.net(), unsafe_finding(unfolder));
      ++unsafe;
      continue;
    }
    ASSERT_EQ(graph.outcome, oracle::Exploration::complete);
    net::StgPrefix prefix = std::move(unfolder).result();
    const auto values = oracle::find_initial_values(prefix, graph);
    const auto inconsistency = net::settle_initial_values(prefix);
    ASSERT_EQ(inconsistency.has_value(), !values);
    if (values) continue;
    check_inconsistent(graph, prefix, inconsistent_finding(prefix, *inconsistency));
    ++inconsistent;
  }
  EXPECT_GT(unsafe, 5);
  EXPECT_GT(inconsistent, 10);
}

}  // namespace
}  // namespace vorel::flow
