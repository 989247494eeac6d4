// conflicts/pair_formula.h - a formula whose models are the pairs of a question.
// Here:      two configurations, how they are related, in what they differ, pairs ruled out.
// Not here:  the search for models (conflicts/pair_search.h), which pairs are to be ruled out
//            (conflicts/core_blocking.h).
#pragma once

#include <optional>

#include "configuration/search_instance.h"
#include "conflicts/core_blocking.h"
#include "conflicts/pair_question.h"

namespace vorel::conflicts {

// What the two configurations' inclusion in each other leaves open.
enum class Inclusion : std::uint8_t {
  first_in_second,
  either_in_other,
};

class PairFormula {
 public:
  using Instance = configuration::SearchInstance<net::StgPrefix>;

  // Both must outlive it.
  PairFormula(Instance& instance, const PairQuestion& question);

  // Two configurations with codes as the question has them, one perhaps within the other.
  void encode(std::optional<Inclusion> inclusion);
  // In one of the candidates, which are sorted. Once.
  void add_any_difference(std::vector<std::uint32_t> candidates);
  const std::vector<std::uint32_t>& candidates() const { return candidates_; }
  // Those that the current model differs in.
  std::vector<std::uint32_t> differing_candidates() const;

  EncodedPair pair() { return {instance_.formula(), instance_.state(0), instance_.state(1)}; }
  // The two configurations of the current model.
  std::pair<configuration::EventSet, configuration::EventSet> model_pair() const;

  // Excludes the pairs but for those that differ in a candidate besides the `known` ones; with null
  // it excludes all.
  void exclude(std::span<const BlockedPairs> blocked, sat::ClauseGroup group,
               const std::vector<std::uint32_t>* known);

 private:
  void add_inclusion(Inclusion inclusion);
  sat::Lit difference(configuration::StgEventId event);

  Instance& instance_;
  const PairQuestion& question_;
  std::vector<std::uint32_t> candidates_;
  sat::Lits differences_;  // by position in the list of candidates
};

}  // namespace vorel::conflicts
