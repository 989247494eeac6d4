// decomposition/insertion_search.h - sets of edges for one function, within SubfunctionInserter.
// Here:      what all functions share until the STG changes, the search for the best set.
// Not here:  results that are kept, insertions of tag General
// (decomposition/subfunction_inserter.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "decomposition/edge_states.h"
#include "decomposition/subfunction_inserter.h"
#include "sat/core_guided.h"

namespace vorel::decomposition {

struct SubfunctionInserter::Step {
  // The engine must have started a step, and go no further while this is in use.
  Step(resolution::InsertionEngine& started, const configuration::EncodingOptions& options,
       const resolution::CostCoefficients& coefficients);

  resolution::InsertionEngine& engine;
  EdgeStates states;
  sat::Lits acks;  // the number of signals that wait for the new one
  // That number, and what weighs less than one of them, the cost.
  std::vector<sat::WeightedLit> rating;
};

// The edges of a step that one function admits, and searches among them. The formula is left as it
// was found.
class SubfunctionInserter::Search {
 public:
  Search(SubfunctionInserter& inserter, Step& step, bdd::Bdd function,
         std::span<const resolution::SignalInsertion> refused)
      : inserter_{inserter},
        step_{step},
        formula_{step.engine.formula()},
        function_{std::move(function)},
        own_{formula_.new_group()},
        mode_{formula_.new_group()},
        listing_{formula_.new_group()} {
    step_.states.set_target(function_, inserter.names_);
    add_admissions();
    for (const resolution::SignalInsertion& edges : refused) exclude(edges, own_);
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;
  ~Search() {
    formula_.remove_group(own_);
    formula_.remove_group(mode_);
    formula_.remove_group(listing_);
  }

  bool has_edges() const { return has_edges_; }
  // The best; with `exact`, of those that compute the function.
  std::optional<SubfunctionInsertion> best(bool exact, bool local);
  std::vector<SubfunctionInsertion>& found() { return found_; }
  resolution::SignalInsertion admitted() const;

 private:
  // Edges that make a signal.
  struct EdgeSet {
    resolution::Choice choice;
    bool begins_at_1;
    std::uint64_t waiting;  // signals that wait for it
    std::uint64_t rating;
  };

  void add_admissions();
  void forget_listed();
  // Lists sets that are not listed yet; false if there are so many or more.
  bool list_sets(std::size_t most);
  bool has_more_sets(std::uint64_t least_waiting);
  // The cheapest that is acceptable: of those listed, of all, of those that so many wait for.
  std::optional<SubfunctionInsertion> best_of(std::vector<EdgeSet> sets);
  std::optional<SubfunctionInsertion> best_of_all();
  std::optional<SubfunctionInsertion> best_with(std::uint64_t waiting);
  std::optional<EdgeSet> cheapest_set();
  EdgeSet set_of_model() const;
  static bool has(const EdgeSet& set, const EdgeStates::Deviation& deviation);
  std::optional<SubfunctionInsertion> accept(const EdgeSet& set);
  SubfunctionInsertion rated(const resolution::Choice& choice,
                             const resolution::InsertedSignal& inserted, bool is_expected) const;
  void exclude(const resolution::Choice& choice, sat::ClauseGroup group);
  void exclude(const resolution::SignalInsertion& edges, sat::ClauseGroup group);

  SubfunctionInserter& inserter_;
  Step& step_;
  sat::CnfFormula& formula_;
  const bdd::Bdd function_;
  const sat::ClauseGroup own_;  // the clauses of this function
  sat::ClauseGroup mode_;       // those of a search for the best
  sat::Lit begins_at_1_ = sat::LitFalse;
  bool has_edges_ = false;  // of both kinds
  bool is_exact_ = false;
  std::vector<resolution::CandidateId> admitted_;
  std::vector<EdgeStates::Deviation> deviations_;  // of sets met in a search for the best
  std::vector<EdgeSet> listed_;                    // by it
  sat::ClauseGroup listing_;                       // excludes them
  std::vector<SubfunctionInsertion> found_;        // each set once
};

}  // namespace vorel::decomposition
