// conflicts/pair_search.h - the search for two configurations that differ in something.
// Here:      the rounds over candidates, the searches for one, all and the cheapest.
// Not here:  the formula (conflicts/pair_formula.h), what the difference is
//            (conflicts/conflict_check.h, conflicts/normalcy_check.h).
//
// Method 1 asks for a difference in any candidate (signal or place), method 2 for each candidate in
// turn, in one solver: what is learnt in one round serves the next. A candidate that a small part
// of a large prefix refutes (conflicts/local_refutation.h) is left out. docs/semantics.md tells
// what the two configurations are.
#pragma once

#include <functional>

#include "configuration/final_state.h"
#include "configuration/search_engine.h"
#include "conflicts/core.h"
#include "conflicts/local_refutation.h"
#include "conflicts/pairs_left.h"

namespace vorel::conflicts {

using configuration::Notes;
using State = configuration::FinalState<net::StgPrefix>;

class PairSearch : public configuration::SearchEngine<net::StgPrefix>, public PairQuestion {
 public:
  // After a search for all solutions: it has ended at its limit, so that there may be more.
  bool has_met_limit() const { return has_met_limit_; }

 protected:
  // Warns of dummy cut-offs, and tells of the optimised method.
  PairSearch(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
             results::VerdictMessages messages, Notes notes);

  // What the next steps say is added to the permanent group.
  void encode(sat::ClauseGroup group) override;
  virtual Inclusion inclusion() const = 0;

  bool search_one() override;
  bool search_all() override;
  bool search_least_cost() override;
  // In a search for all solutions: keeps what the current model says and excludes it.
  virtual void record_and_block() = 0;

  // Excludes the pairs that the core explains, of method 1 but for those that differ in a candidate
  // besides the `known` ones; with null it excludes all.
  void block(const Core& core, const std::vector<std::uint32_t>* known = nullptr);
  // The same as long as the round goes on.
  void block_in_round(const Core& core);

  bool takes_candidates_in_turn() const { return method_ != 1; }
  std::uint32_t candidate() const { return candidate_; }  // of the current round of method 2
  // In which the current model differs, sorted: of method 2, that of the round.
  std::vector<std::uint32_t> differing_candidates() const;
  State state_after(const configuration::EventSet& set) const { return {structure(), set}; }
  // The two configurations of the current model.
  std::pair<configuration::EventSet, configuration::EventSet> model_pair() const {
    return pairs_.model_pair();
  }
  // The two configurations of the last two traces.
  std::pair<configuration::EventSet, configuration::EventSet> pair_of(
      const results::Solution& solution) const;
  void add_traces(results::Solution& solution, const configuration::EventSet& one,
                  const configuration::EventSet& other) const;

 private:
  static constexpr std::uint32_t property_group = 1;  // the candidate of a round
  static constexpr std::uint32_t attempt_group = 2;   // of the descent to the least cost

  // Calls `round` for all candidates together, or for each in turn until it says false.
  void for_each_round(const std::function<bool()>& round);
  std::vector<BlockedPairs> pairs_explained_by(const Core& core) const;
  // Of the clauses that last for one candidate.
  sat::ClauseGroup round_group() { return formula().group(property_group); }
  // Of method 1.
  void add_any_difference(std::optional<Inclusion> inclusion);
  // Without a search of the whole formula; false says nothing.
  bool is_refuted(std::uint32_t candidate);
  // The length of the two traces as a binary number, least significant bit first.
  sat::Lits cost_bits();
  // The same in the current model.
  std::uint64_t model_cost() const;

  const bool conflict_free_;
  const std::int32_t method_;
  bool adds_inclusion_ = false;
  bool has_met_limit_ = false;
  std::uint32_t candidate_ = base::no_index;
  PairFormula pairs_;
  std::unique_ptr<PairsLeft> pairs_left_;   // null where too little is known of candidates
  std::unique_ptr<LocalRefutation> local_;  // made when asked
};

}  // namespace vorel::conflicts
