// resolution/candidates.h - the insertions that a step chooses from, with all their occurrences.
// Here:      which new events each candidate would make in the prefix.
// Not here:  which insertions are valid (resolution/insertions.h), how occurrences of several
//            candidates are ordered (resolution/occurrence_order.h).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "resolution/edge_occurrence.h"
#include "resolution/transformation.h"
#include "sat/literal.h"

namespace vorel::resolution {

using CandidateId = base::Id<net::Insertion>;
// By candidate: whether it is chosen.
using CandidateLits = base::IndexedBy<net::Insertion, sat::Lit>;
using Choice = base::IndexedBy<net::Insertion, bool>;

// Occurrences are numbered candidate after candidate. Refers to the prefix, whose events must be
// numbered causally, and is of no use after it has been edited.
class Candidates {
 public:
  // The insertions must be valid, and sorted.
  Candidates(const net::StgPrefix& prefix, std::vector<net::Insertion> insertions);

  const net::StgPrefix& prefix() const { return prefix_; }
  std::uint32_t size() const { return static_cast<std::uint32_t>(insertions_.size()); }
  base::IdRange<net::Insertion> all() const { return {0, size()}; }
  const net::Insertion& insertion(CandidateId candidate) const {
    assert(candidate.value < size());
    return insertions_[candidate.value];
  }

  base::IdRange<EdgeOccurrence> all_occurrences() const {
    return {0, static_cast<std::uint32_t>(occurrences_.size())};
  }
  base::IdRange<EdgeOccurrence> occurrences_of(CandidateId candidate) const {
    assert(candidate.value < size());
    return {begins_[candidate.value], begins_[candidate.value + 1]};
  }
  const EdgeOccurrence& occurrence(OccurrenceId id) const {
    assert(id.value < occurrences_.size());
    return occurrences_[id.value];
  }
  CandidateId candidate_of(OccurrenceId id) const {
    assert(id.value < candidate_of_.size());
    return candidate_of_[id.value];
  }

 private:
  class Maker;

  const net::StgPrefix& prefix_;
  std::vector<net::Insertion> insertions_;
  std::vector<EdgeOccurrence> occurrences_;
  std::vector<CandidateId> candidate_of_;  // by occurrence
  std::vector<std::uint32_t> begins_;      // by candidate, and the end of the last
};

// The insertions chosen, in the order of candidates.
SignalInsertion insertions_of(const Candidates& candidates, const Choice& choice);

}  // namespace vorel::resolution
