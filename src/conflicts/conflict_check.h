// conflicts/conflict_check.h - the search for conflicts of codes, and their cores.
// Here:      equal codes, minimal cores of the conflicts found, solutions out of them.
// Not here:  what a conflict is (conflicts/csc_check.h, conflicts/usc_check.h), the rounds of the
//            search (conflicts/pair_search.h).
#pragma once

#include "conflicts/pair_search.h"

namespace vorel::conflicts {

class ConflictCheck : public PairSearch {
 public:
  // Before run(): a core that counts as found already.
  void seed(Core core) { seen_pairs_.seed(std::move(core)); }
  // The cores found by a search for all solutions and those seeded, in the order of finding.
  const std::list<Core>& seen_pairs() const { return seen_pairs_.cores(); }

  // Whether two configurations are in conflict, worked out without the formula.
  virtual bool is_conflict(const configuration::EventSet& one,
                           const configuration::EventSet& other) const = 0;

 protected:
  ConflictCheck(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
                results::VerdictMessages messages, Notes notes);

  // At verbosity 1: the code of the two states and what is enabled in each, for every solution.
  void finish() final;
  void encode(sat::ClauseGroup group) final;
  void add_code_constraint(const EncodedPair& pair, net::SignalId signal) const final;
  bool search_all() final;
  void record_and_block() final;
  virtual std::unique_ptr<results::Solution> solution_of_pair(const Core& core) const = 0;
  bool validate(const results::Solution& solution) const override;

 private:
  std::string diagnostics_of(const results::Solution& solution) const;

  MinimalCores seen_pairs_;
};

}  // namespace vorel::conflicts
