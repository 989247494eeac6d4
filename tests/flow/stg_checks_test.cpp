// What is wrong with random STGs, against all of their states.
#include "flow/stg_checks.h"

#include <map>
#include <set>

#include "flow/flow_testing.h"
#include "flow/unfold_findings.h"
#include "oracle/parse_g.h"
#include "oracle/random.h"
#include "oracle/random_stg.h"
#include "support/caught_messages.h"
#include "support/seeds.h"

namespace vorel::flow {
namespace {

using flow_testing::state_after;
using flow_testing::Subject;
using Names = std::vector<std::string>;

// By loser and taker, the length of a shortest trace to where the loser has lost.
using Disabled = std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t>;

class DisabledSearch {
 public:
  explicit DisabledSearch(const Subject& subject) : subject_{subject} {
    for (std::uint32_t s = 0; s < subject.graph.states.size(); ++s)
      enabled_.push_back(oracle::enabled_through_dummies(subject.graph, s));
    for (std::uint32_t s = 0; s < subject.graph.states.size(); ++s) search_from(s);
  }
  const Disabled& result() const { return result_; }

 private:
  void search_from(std::uint32_t start) {
    std::map<std::uint32_t, std::size_t> distance{{start, subject_.graph.states[start].distance}};
    std::vector<std::uint32_t> open{start};
    for (std::size_t i = 0; i < open.size(); ++i) {
      const std::size_t length = distance[open[i]] + 1;
      for (const auto& arc : subject_.graph.states[open[i]].arcs) {
        if (!arc.transition->signal->is_dummy())
          note(start, arc, length);
        else if (distance.emplace(arc.target, length).second)
          open.push_back(arc.target);
      }
    }
  }
  void note(std::uint32_t start, const oracle::StateGraph<net::Stg>::Arc& arc, std::size_t length) {
    const std::uint32_t taker = arc.transition->signal->index;
    for (const std::uint32_t loser : enabled_[start]) {
      if (loser == taker || enabled_[arc.target].contains(loser)) continue;
      if (std::max(loser, taker) < subject_.prefix.inputs_end) continue;
      auto [found, is_new] = result_.emplace(std::pair(loser, taker), length);
      if (!is_new) found->second = std::min(found->second, length);
    }
  }

  const Subject& subject_;
  std::vector<oracle::SignalSet> enabled_;
  Disabled result_;
};

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
  const DisabledSearch search(subject);
  for (const auto& [pair, length] : search.result())
    expected[{kind_of(stg, pair.first, pair.second),
              {stg.signals[pair.first]->name, stg.signals[pair.second]->name}}] = length;
  // The oracle has said which outputs are disabled long before this test.
  std::set<std::pair<std::uint32_t, std::uint32_t>> outputs;
  for (const auto& [pair, length] : search.result())
    if (pair.first >= stg.inputs_end) outputs.insert(pair);
  EXPECT_EQ(outputs, oracle::disabled_signals(stg, subject.graph));
  return expected;
}

void check_findings(const Subject& subject, std::map<FindingKind, int>* counts = nullptr) {
  for (const int solver : {0, 1}) {
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
      if (counts != nullptr) ++(*counts)[finding.kind];
    }
    EXPECT_EQ(found, expected_findings(subject));
    EXPECT_TRUE(std::ranges::is_sorted(findings, std::greater{}, &StgFinding::gravity));
  }
}

TEST(StgChecks, FindWhatTheStatesShow) {
  std::map<FindingKind, int> counts;
  const auto [first, end] = support::seeds(40);
  for (std::uint64_t seed = first; seed < end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    check_findings(
        Subject(oracle::random_stg(seed, {.dummies = seed % 2 == 1, .toggles = seed % 3 == 1})),
        &counts);
    if (HasFatalFailure() || HasNonfatalFailure()) return;
  }
  for (const FindingKind kind : {FindingKind::not_persistent, FindingKind::arbitration,
                                 FindingKind::input_held_back, FindingKind::deadlock})
    EXPECT_GT(counts[kind], 0) << static_cast<int>(kind);
  for (const auto& [kind, count] : counts)
    RecordProperty(std::to_string(static_cast<int>(kind)), count);
}

}  // namespace
}  // namespace vorel::flow
