// conflicts/normalcy_check.h - the engine of -N: can every signal have a monotonic gate.
// Here:      the search for two configurations that refute the hypothesis on a signal's type.
// Not here:  the hypothesis, and violations that it shows (conflicts/normalcy_hypothesis.h).
//
// A signal is p-normal when its next value never falls as the code grows, n-normal when it never
// rises; it is in order when it is one of them. The evidence behind a hypothesis excludes one type,
// two configurations that refute it exclude the other. Violations do not compose: no pair explains
// another, so there are no cores.
#pragma once

#include "conflicts/normalcy_solution.h"
#include "conflicts/pair_search.h"

namespace vorel::conflicts {

class NormalcyCheck : public PairSearch {
 public:
  // Reports an error when there is no hypothesis; then nothing is searched.
  NormalcyCheck(const net::StgPrefix& prefix, const configuration::SearchOptions& options);

 protected:
  // The codes of the pair are ordered, so it cannot be turned round.
  Inclusion inclusion() const override { return Inclusion::either_in_other; }
  void add_code_constraint(const EncodedPair& pair, net::SignalId signal) const override;
  std::uint32_t candidate_count() const override { return process().driven_signals().size(); }
  void add_candidate_difference(const EncodedPair& pair, std::uint32_t candidate,
                                sat::ClauseGroup group) const override;
  sat::Lits differences(const EncodedPair& pair,
                        std::span<const std::uint32_t> candidates) const override;

  bool search_one() override;
  bool search_all() override;
  bool search_least_cost() override;
  void record_solution() override;
  void record_and_block() override;

 private:
  bool record_hypothesis_violation();
  bool record_csc_conflict();
  void add_evidence(NormalcySolution& solution, const TriggerEvidence& evidence) const;
  std::unique_ptr<NormalcySolution> make_solution(NormalcyViolation kind,
                                                  net::SignalId signal) const;
  net::SignalId signal_of(std::uint32_t candidate) const {
    return {process().inputs_end + candidate};
  }
  void record_violation_of(net::SignalId signal);
  sat::Lit violation(const EncodedPair& pair, net::SignalId signal) const;

  NormalcyHypothesis hypothesis_;
};

}  // namespace vorel::conflicts
