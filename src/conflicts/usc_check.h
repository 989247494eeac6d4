// conflicts/usc_check.h - the engine of -U: is the state coding unique.
#pragma once

#include "conflicts/conflict_check.h"

namespace vorel::conflicts {

// Two configurations are in conflict when their codes are equal and their final markings are not.
class UscCheck : public ConflictCheck {
 public:
  UscCheck(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
           Notes notes = Notes::given);

  // Reports an error when a final marking shows that the net is not safe.
  bool is_conflict(const configuration::EventSet& one,
                   const configuration::EventSet& other) const override;

 protected:
  Inclusion inclusion() const override { return Inclusion::first_in_second; }
  std::uint32_t candidate_count() const override {
    return static_cast<std::uint32_t>(process().places.size());
  }
  void add_candidate_difference(const EncodedPair& pair, std::uint32_t candidate,
                                sat::ClauseGroup group) const override;
  sat::Lits differences(const EncodedPair& pair,
                        std::span<const std::uint32_t> candidates) const override;
  std::unique_ptr<results::Solution> new_solution() const override;
  std::unique_ptr<results::Solution> solution_of_pair(const Core& core) const override;

 private:
  std::pair<sat::Lit, sat::Lit> marked(const EncodedPair& pair, std::uint32_t place) const;
};

}  // namespace vorel::conflicts
