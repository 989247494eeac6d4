// conflicts/normalcy_check.h - the engine of -N: can every signal have a monotonic gate.
// Here:      the search for two configurations that refute the hypothesis on a signal's type.
// Not here:  the hypothesis, and violations that it shows (conflicts/normalcy_hypothesis.h).
//
// A signal is p-normal when its next value never falls as the code grows, n-normal when it never
// rises; it is in order when it is one of them. The evidence behind a hypothesis excludes one type,
// two configurations that refute it exclude the other.
#pragma once

#include "conflicts/conflict_check.h"
#include "conflicts/normalcy_solution.h"

namespace vorel::conflicts {

class NormalcyCheck : public ConflictCheck {
 public:
  // Reports an error when there is no hypothesis; then nothing is searched.
  NormalcyCheck(const net::StgPrefix& prefix, const base::Params& params);

  // Violations do not compose: no pair explains another.
  bool is_conflict(const configuration::EventSet&, const configuration::EventSet&) const override {
    return false;
  }

 protected:
  // The codes of the pair are ordered, so it cannot be turned round.
  Inclusion inclusion() const override { return Inclusion::either_in_other; }
  void add_code_constraint() override;
  void add_any_difference() override;
  std::uint32_t first_candidate() const override { return process().inputs_end; }
  std::uint32_t end_candidate() const override { return process().internals_end; }
  void add_candidate_difference(std::uint32_t candidate, sat::ClauseGroup group) override;

  bool search_one() override;
  bool search_all() override;
  bool search_least_cost() override;
  void record_solution() override;
  void record_and_block() override;
  void make_all_solutions() override {}
  std::unique_ptr<results::Solution> solution_of_pair(const Core& core) const override;
  bool validate(const results::Solution& solution) const override;

 private:
  bool record_hypothesis_violation();
  bool record_csc_conflict();
  void add_evidence(NormalcySolution& solution, const TriggerEvidence& evidence) const;
  std::unique_ptr<NormalcySolution> make_solution(NormalcyViolation kind,
                                                  std::uint32_t signal) const;
  // The signals of which the current model shows a violation: of method 2, the candidate.
  std::vector<std::uint32_t> signals_of_model();
  void record_violation_of(std::uint32_t signal);
  sat::Lit violation(std::uint32_t signal);
  bool shows_violation(const NormalcySolution& solution) const;

  NormalcyHypothesis hypothesis_;
  std::vector<sat::Lit> violation_;  // by signal number, LitUninit until asked for
};

}  // namespace vorel::conflicts
