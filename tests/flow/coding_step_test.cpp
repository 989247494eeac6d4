// Encoding conflicts of random STGs, against all of their states.
#include "flow/coding_step.h"

#include <map>
#include <set>

#include "flow/flow_testing.h"
#include "oracle/random_stg.h"
#include "support/caught_messages.h"
#include "support/seeds.h"

namespace vorel::flow {
namespace {

using flow_testing::state_after;
using flow_testing::Subject;
using Names = std::set<std::string>;

class CodingTruth {
 public:
  explicit CodingTruth(const Subject& subject)
      : subject_{subject},
        stg_{subject.prefix},
        initial_{*oracle::find_initial_values(stg_, subject.graph)} {}

  bool usc_holds() const {
    std::map<oracle::Values, oracle::Marking> markings;
    for (const auto& state : subject_.graph.states) {
      const auto [found, is_new] = markings.emplace(code_of(state), state.marking);
      if (found->second != state.marking) return false;
    }
    return true;
  }
  // Of those that no dummy decides, see conflicts_support.h; and of all.
  oracle::SignalSet certain_csc_conflicts() const {
    oracle::SignalSet signals = csc_conflicts();
    for (const std::uint32_t signal : oracle::signals_that_dummies_disable(subject_.graph))
      signals.erase(signal);
    return signals;
  }
  oracle::SignalSet csc_conflicts() const {
    return oracle::csc_conflict_signals(stg_, subject_.graph, initial_);
  }

  void check(const Conflict& conflict) const {
    const std::uint32_t first = state(conflict, conflict.first);
    const std::uint32_t second = state(conflict, conflict.second);
    EXPECT_EQ(code_text(first), conflict.code);
    EXPECT_EQ(code_text(second), conflict.code);
    EXPECT_EQ(excited(first), signals_of(conflict.excited_first));
    EXPECT_EQ(excited(second), signals_of(conflict.excited_second));
    EXPECT_NE(subject_.graph.states[first].marking, subject_.graph.states[second].marking);
    EXPECT_EQ(conflict.first.size() + conflict.second.size(), conflict.core.size());
    EXPECT_EQ(conflict.is_csc, !conflict.signal.empty());
    if (conflict.is_csc) {
      EXPECT_NE(excited(first).contains(conflict.signal),
                excited(second).contains(conflict.signal));
    }
  }

 private:
  oracle::Values code_of(const oracle::StateGraph<net::Stg>::State& state) const {
    return oracle::code_of(state, initial_);
  }
  std::string code_text(std::uint32_t state) const {
    const oracle::Values code = code_of(subject_.graph.states[state]);
    std::string text;
    for (const net::SignalId signal : stg_.visible_signals())
      text += code[signal.value] == 1 ? '1' : '0';
    return text;
  }
  std::uint32_t state(const Conflict& conflict, const StgTrace& behind) const {
    StgTrace trace = conflict.common;
    trace.insert(trace.end(), behind.begin(), behind.end());
    const auto found = state_after(subject_, trace);
    EXPECT_TRUE(found);
    return found.value_or(0);
  }
  Names excited(std::uint32_t state) const {
    Names names;
    for (const std::uint32_t signal : oracle::enabled_through_dummies(subject_.graph, state))
      names.insert(stg_.signals[signal]->name);
    return names;
  }
  static Names signals_of(const std::vector<std::string>& edges) {
    Names names;
    for (const std::string& edge : edges) names.insert(edge.substr(0, edge.size() - 1));
    return names;
  }

  const Subject& subject_;
  const net::Stg& stg_;
  const oracle::Values initial_;
};

TEST(CodingStep, TellsConflictsThatTheStatesHave) {
  std::size_t csc = 0, usc = 0, without = 0;
  const support::CaughtMessages warnings;
  const auto [first, end] = support::seeds(40);
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const bool dummies = seed % 4 == 3;
    const Subject subject(oracle::random_stg(seed, {.dummies = dummies, .toggles = seed % 3 == 1}));
    const CodingTruth truth(subject);
    const auto coding = find_coding(subject.prefix, {.solver = static_cast<int>(seed % 2)});
    ASSERT_TRUE(coding);
    // Signals may be disabled by dummies, before which a state then counts.
    EXPECT_TRUE(!coding->csc_holds || truth.certain_csc_conflicts().empty());
    EXPECT_TRUE(coding->csc_holds || !truth.csc_conflicts().empty());
    if (!dummies) {
      EXPECT_EQ(coding->usc_holds, truth.usc_holds());
    }
    CoreMap map(subject.prefix.events.size());
    std::set<std::vector<std::uint32_t>> cores;
    for (const Conflict& conflict : coding->conflicts) {
      truth.check(conflict);
      EXPECT_TRUE(cores.insert(conflict.core).second);
      ++(conflict.is_csc ? csc : usc);
      if (conflict.is_csc)
        for (const std::uint32_t event : conflict.core) ++map[event];
    }
    EXPECT_EQ(coding->core_map, map);
    EXPECT_EQ(find_core_map(subject.prefix, {}).value().size(), map.size());
    without += coding->conflicts.empty() ? 1 : 0;
  }
  EXPECT_GT(csc, 10u);
  EXPECT_GT(usc, 10u);
  EXPECT_GT(without, 2u);
}

}  // namespace
}  // namespace vorel::flow
