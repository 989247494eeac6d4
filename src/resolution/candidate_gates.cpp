#include "resolution/candidate_gates.h"

#include <array>
#include <cassert>

namespace vorel::resolution {

using sat::Lit;
using sat::Lits;

// Occurrences are numbered candidate after candidate.
CandidateList CandidateGates::candidates_in(base::BitRow occurrences) const {
  CandidateList list;
  base::for_each_bit(occurrences, [&](std::uint32_t occurrence) {
    const CandidateId candidate = candidates_.candidate_of(OccurrenceId{occurrence});
    if (list.empty() || list.back() != candidate) list.push_back(candidate);
  });
  return list;
}

Lits CandidateGates::literals_of(const CandidateList& list) const {
  Lits lits;
  for (const CandidateId candidate : list) lits.push_back(literals_[candidate]);
  return lits;
}

Lit CandidateGates::any_of(const CandidateList& set) {
  const auto [cell, is_new] = any_.try_emplace(set, sat::LitFalse);
  if (is_new) cell->second = make_gate(sat::GateOr, literals_of(set));
  return cell->second;
}

Lit CandidateGates::at_most_one(const CandidateList& list) {
  if (list.size() < 2) return sat::LitTrue;
  const auto [cell, is_new] = at_most_one_.try_emplace(list, sat::LitTrue);
  if (is_new) cell->second = new_at_most_one(list);
  return cell->second;
}

// A chain: seen is true as soon as one of the candidates so far is chosen.
Lit CandidateGates::new_at_most_one(const CandidateList& list) {
  const Lit result(formula_.new_var(true), false);
  Lit seen = literals_[list.front()];
  for (std::size_t i = 1; i < list.size(); ++i) {
    const Lit next = literals_[list[i]];
    add_clause(std::array{~result, ~seen, ~next});
    if (i + 1 == list.size()) break;
    const Lit seen_next(formula_.new_var(true), false);
    add_clause(std::array{~seen, seen_next});
    add_clause(std::array{~next, seen_next});
    seen = seen_next;
  }
  return result;
}

}  // namespace vorel::resolution
