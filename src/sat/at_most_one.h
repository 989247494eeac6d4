// sat/at_most_one.h - the constraint that at most one of some literals is true.
// Here:      folding of constants, copies and complements; pairs for few literals, a chain of
//            helper variables for many.
// Not here:  thresholds above one (sat/integer_circuit.h).
#pragma once

#include <cstdint>
#include <span>

#include "sat/literal.h"

namespace vorel::sat {

class CnfFormula;

// Its members are scratch memory: one encoder serves any number of constraints.
class AtMostOneEncoder {
 public:
  void add(CnfFormula& formula, std::span<const Lit> lits, ClauseGroup group);

 private:
  void strip_constants();
  bool split_variables();

  Lits sorted_;
  Lits singles_;              // may be true, but only one of them
  Lits must_be_false_;        // stand twice in the list
  std::uint32_t truths_ = 0;  // how many members of the list are true in any case
};

}  // namespace vorel::sat
