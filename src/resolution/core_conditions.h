// resolution/core_conditions.h - the cores of a step as conditions on the candidates.
// Here:      for each core whether it is resolved, as clauses and as literals to be counted.
// Not here:  what the candidates do to a core (resolution/core_effects.h), weighing the counts
//            (resolution/cost_formula.h).
#pragma once

#include <span>

#include "resolution/core_effects.h"
#include "sat/sums_tree_builder.h"

namespace vorel::resolution {

// The conflicts that a step works on.
struct CoreStore {
  std::vector<conflicts::Core> cores;
  std::vector<bool> is_csc;  // by core: also a conflict of complete state coding
};

// What is left of the cores after a step: each literal is one core. All are defined in both
// directions.
struct CoreCounters {
  sat::Lits csc_counter_literals;  // conflicts of complete state coding, the broken ones included
  sat::Lits usc_counter_literals;  // the others
};

struct CoreCounts {
  std::uint64_t csc = 0, usc = 0;
};

// Adds that some core is resolved, and that no core is broken that no candidate resolves: it would
// be in conflict for good. If no candidate resolves a conflict of complete state coding there is no
// solution, and a warning tells why.
CoreCounters require_progress(const CoreStore& store, const Candidates& candidates,
                              const CandidateLits& literals, sat::CnfFormula& formula,
                              sat::SumsTreeBuilder& sums);

// The same numbers for a choice at hand.
CoreCounts cores_left(const CoreStore& store, const Candidates& candidates, const Choice& chosen);

}  // namespace vorel::resolution
