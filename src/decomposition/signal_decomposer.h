// decomposition/signal_decomposer.h - all ways to decompose one signal, and the best of them.
// Here:      candidates from all sources, completed by gates and insertions, in the order of cost.
// Not here:  the sources (decomposition/direct_candidates.h, decomposition/alg_decomposer.h,
//            decomposition/boolean_decomposer.h), the choice among signals
//            (decomposition/decomposition_driver.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/hashing.h"
#include "decomposition/alg_decomposer.h"
#include "decomposition/boolean_decomposer.h"
#include "decomposition/deco.h"
#include "decomposition/deco_cost.h"
#include "decomposition/deco_queue.h"
#include "decomposition/derivation.h"
#include "decomposition/direct_candidates.h"
#include "decomposition/gate_library.h"
#include "decomposition/gate_matcher.h"
#include "decomposition/literal_counts.h"
#include "decomposition/signal_variables.h"
#include "decomposition/subfunction_inserter.h"

namespace vorel::decomposition {

class SignalDecomposer {
 public:
  struct Stats {
    std::uint64_t candidates = 0;
    std::uint64_t completed = 0;  // candidates for which insertions were looked for
    std::uint64_t relations = 0;  // of functions and gates
  };

  using Names = std::set<std::string>;

  // Gates by name, of which none has more pins than there are variables for, in the order in which
  // they are tried. Signals that lose their excitation to others get single gates. All arguments
  // outlive this.
  SignalDecomposer(const GateLibrary& library, const std::vector<std::string>& gates,
                   SignalVariables& variables, SubfunctionInserter& inserter,
                   const Names& disabled_signals);

  // The cheapest gate that implements the signal as it is, or latch with gates for its SET and
  // RESET. Uninitialised if there is none.
  Deco implementation_of(const SignalFunctions& functions);
  // Whether such a one still does what the signal must do, in an STG that has changed.
  bool still_holds(const Deco& implementation, const SignalFunctions& functions);
  // For a signal without one. The insertions are those of the inserter's prefix, which has so many
  // signals; the queue goes out of use with it.
  DecoQueue decompositions(const SignalFunctions& functions, std::uint32_t signal_count);

  // From now on latches count as implementations and candidates whatever they cost.
  void admit_costly_latches() { latch_cost_ = LatchCost::any; }
  bool admits_costly_latches() const { return latch_cost_ == LatchCost::any; }

  const Stats& stats() const { return stats_; }
  const GateMatcher::Stats& matcher_stats() const { return matcher_.stats(); }

 private:
  struct Alternative;
  // Of a conjunction or disjunction of variables 0 and 1.
  struct TwoInputGate {
    AlgKind kind;
    GateMatch match;
    bdd::BDDCover shape;
  };

  // Candidates of one alternative. They depend on nothing but its four sets.
  const std::vector<Deco>& candidates_of(const Alternative& alternative);
  void add_algebraic(const Alternative& alternative, std::vector<Deco>& candidates);
  void add_boolean(const Alternative& alternative, std::vector<Deco>& candidates);
  void add_collapsed(std::vector<Deco>& candidates);
  OutputInverter inverter_of(const std::string& signal) const;
  std::vector<Deco> all_candidates(const SignalFunctions& functions);
  std::vector<Deco> latches(const SignalFunctions& functions);
  void add_insertions(Deco& deco);
  DecoSetting setting(std::uint32_t signal_count);
  void tell(const std::string& signal, DecoQueue& queue) const;

  const GateLibrary& library_;
  const std::vector<std::string>& gates_;
  SignalVariables& variables_;
  SubfunctionInserter& inserter_;
  const Names& disabled_signals_;
  GateMatcher matcher_;
  LiteralCounts literals_;
  LatchCost latch_cost_ = LatchCost::below_gate;
  BooleanDecomposer boolean_;
  std::vector<TwoInputGate> two_input_gates_;
  std::unordered_map<std::vector<bdd::Bdd>, std::vector<Deco>, base::SequenceHash> known_;
  Stats stats_;
};

}  // namespace vorel::decomposition
