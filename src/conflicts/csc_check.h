// conflicts/csc_check.h - the engine of -C: is the state coding complete.
#pragma once

#include "conflicts/conflict_check.h"

namespace vorel::conflicts {

// Two configurations are in conflict when their codes are equal, but some output or internal signal
// has different next values after them.
class CscCheck : public ConflictCheck {
 public:
  enum class Warnings : std::uint8_t { given, left_out };

  CscCheck(const net::StgPrefix& prefix, const base::Params& params,
           Warnings warnings = Warnings::given);

  bool is_conflict(const configuration::EventSet& one,
                   const configuration::EventSet& other) const override;
  const results::Report& solutions() const { return found(); }

 protected:
  Inclusion inclusion() const override;
  void add_any_difference() override;
  std::uint32_t first_candidate() const override { return process().inputs_end; }
  std::uint32_t end_candidate() const override { return process().internals_end; }
  void add_candidate_difference(std::uint32_t candidate, sat::ClauseGroup group) override;
  std::unique_ptr<results::Solution> new_solution() const override;
  std::unique_ptr<results::Solution> solution_of_pair(const Core& core) const override;

 private:
  std::uint32_t signal_of_model() const;
  std::unique_ptr<results::Solution> solution_for(std::uint32_t signal) const;

  std::vector<std::pair<sat::Lit, sat::Lit>>
      next_values_;  // of the outputs and internal signals, method 1
};

}  // namespace vorel::conflicts
