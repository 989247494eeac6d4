// verify/progress_check.h - whether each output that is due comes without another input.
// Here:      the search for a marking from which one does not.
// Not here:  runs from one marking (verify/gate_runs.h).
//
// For each signal a marking is looked for in which the STG lets it change and its gate is not
// excited. From there the gates run on their own. If the edge comes, all markings that have the
// tokens which the run took are excluded, and the search goes on; if it never does, the output
// stays away. Most of these rounds are saved by looking only at markings in which those gates rest
// that cannot run for ever: if an output stays away from a marking, it does from all that such
// gates lead to, unless it is not due there any more.
#pragma once

#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "verify/faults.h"
#include "verify/marking_formula.h"
#include "verify/trace_builder.h"

namespace vorel::verify {

class ProgressCheck {
 public:
  // `arbiters`: outputs of gates that may take their excitation from one another.
  // `is_persistent`: no gate loses its excitation or has it where the STG does not let it fire.
  ProgressCheck(MarkingFormula& formula, const FaultFinder& faults, const TraceBuilder& traces,
                std::span<const std::pair<WireId, WireId>> arbiters, bool is_persistent);

  struct Result {
    Answer answer = Answer::undecided;
    std::optional<Finding> finding;
    std::size_t rounds = 0;  // runs of gates that were tried
  };
  // That it holds is said of the markings of the prefix. A failure without a finding has been
  // reported as an error.
  Result run();

 private:
  Answer check_signal(WireId wire, Result& result);
  sat::Lits question(WireId wire);
  void choose_resting_gates();
  void add_resting(std::size_t gate, sat::Lits& lits);
  bool stays_due(const net::Signal& signal) const;
  // And all that depends on the wire, through gates.
  void let_wait_for_arbiter(WireId wire);
  bool has_no_free_choice() const;
  bool is_silently_acyclic() const;

  MarkingFormula& formula_;
  const Composition& composition_;
  const FaultFinder& faults_;
  const TraceBuilder& traces_;
  const bool is_persistent_;
  std::vector<bool> waits_for_arbiter_;  // by wire
  // What says that the chosen gates are, of wires that are no signals or of all.
  sat::Lits hidden_at_rest_, all_at_rest_;
};

}  // namespace vorel::verify
