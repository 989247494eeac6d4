#include "resolution/insertion_constraints.h"

#include <iostream>

#include "base/messages.h"
#include "base/run_state.h"
#include "resolution/insertion_mutex.h"
#include "toolkit/cliques.h"

namespace vorel::resolution {
namespace {

constexpr int verbosity_of_cover = 4;

void print_statistics(const std::vector<toolkit::Clique>& cover) {
  std::size_t sum = 0;
  for (const toolkit::Clique& clique : cover) sum += clique.size();
  base::print_formatted(std::cerr, "\nCover statistics: |cover|=%u ||cover||=%u",
                        static_cast<std::uint32_t>(cover.size()), static_cast<std::uint32_t>(sum));
}

}  // namespace

CandidateLits add_insertion_constraints(const Candidates& candidates, const OccurrenceOrder& order,
                                        const CandidateLits& chosen, sat::SumsTreeBuilder& parities,
                                        sat::CnfFormula& formula, sat::ClauseGroup group) {
  const auto cover = toolkit::clique_cover(insertion_mutex(candidates, order));
  if (base::verbosity() >= verbosity_of_cover) print_statistics(cover);
  for (const toolkit::Clique& clique : cover) {
    sat::Lits literals;
    for (const std::uint32_t candidate : clique) literals.push_back(chosen[CandidateId{candidate}]);
    formula.add_at_most_one(literals, group);
  }
  return add_alternation(candidates, order, chosen, parities, formula, group);
}

}  // namespace vorel::resolution
