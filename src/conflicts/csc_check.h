// conflicts/csc_check.h - the engine of -C: is the state coding complete.
#pragma once

#include "conflicts/conflict_check.h"

namespace vorel::conflicts {

// Two configurations are in conflict when their codes are equal, but some output or internal signal
// has different next values after them.
class CscCheck : public ConflictCheck {
 public:
  CscCheck(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
           Notes notes = Notes::given);

  bool is_conflict(const configuration::EventSet& one,
                   const configuration::EventSet& other) const override;

  // After run() without `all_solutions`: the conflict, if there is one, and its signal.
  const results::Report& solutions() const { return found(); }
  net::SignalId conflict_signal() const { return conflict_signal_; }

 protected:
  Inclusion inclusion() const override;
  std::uint32_t candidate_count() const override { return process().driven_signals().size(); }
  void add_candidate_difference(const EncodedPair& pair, std::uint32_t candidate,
                                sat::ClauseGroup group) const override;
  sat::Lits differences(const EncodedPair& pair,
                        std::span<const std::uint32_t> candidates) const override;
  void record_solution() override;
  std::unique_ptr<results::Solution> new_solution() const override;
  std::unique_ptr<results::Solution> solution_of_pair(const Core& core) const override;

 private:
  net::SignalId signal_of(std::uint32_t candidate) const {
    return {process().inputs_end + candidate};
  }
  std::unique_ptr<results::Solution> solution_for(net::SignalId signal) const;

  net::SignalId conflict_signal_;
};

}  // namespace vorel::conflicts
