// conflicts/pairs_left.h - whether a search for all pairs has found them all.
// Here:      a second formula, which asks only for differences that were not refuted.
// Not here:  the pairs (conflicts/pair_search.h), refutations (conflicts/local_refutation.h).
//
// Which of many pairs come first decides what cores they are reduced to, so the search itself asks
// for a difference in any candidate, whatever is easy to prove of some of them. But then its last
// question, which has no answer, is to be proved of all candidates in the formula of the whole
// prefix. This formula has the same answer, as no pair differs in a refuted candidate, and is in no
// one's way: what it learns and decides leaves the search as it was.
#pragma once

#include "conflicts/pair_formula.h"

namespace vorel::conflicts {

class PairsLeft {
 public:
  // Of the candidates, which are sorted. The structure and the question must outlive it.
  PairsLeft(const configuration::StateStructure<net::StgPrefix>& structure,
            const PairQuestion& question, const configuration::EncodingOptions& options,
            std::optional<Inclusion> inclusion, std::vector<std::uint32_t> candidates);

  // As the search excludes them, see PairFormula.
  void exclude(std::span<const BlockedPairs> blocked, const std::vector<std::uint32_t>* known);
  // True if no pair is left; false also after a reported failure. Solves only if the last pair that
  // it has seen has been excluded.
  bool is_none();

 private:
  configuration::SearchInstance<net::StgPrefix> instance_;
  PairFormula formula_;
  bool has_seen_ = false;                 // a pair that is left
  configuration::EventSet seen_;          // what it differs in
  std::vector<std::uint32_t> differing_;  // its candidates
};

}  // namespace vorel::conflicts
