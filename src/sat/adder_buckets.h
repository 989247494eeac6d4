// sat/adder_buckets.h - adds up weighted literals, column by column.
// Here:      half and full adders, and the compressor through which all sums go.
// Not here:  sums of numbers and comparisons (sat/integer_circuit.h).
#pragma once

#include <cstdint>
#include <vector>

#include "sat/cnf_formula.h"

namespace vorel::sat {

struct SumAndCarry {
  Lit sum, carry;
};

// a + b = sum + 2 carry. The polarity is that of the sum; the carry is always fully defined,
// because it goes on into another adder, which uses it with both signs.
SumAndCarry half_adder(CnfFormula& formula, Lit a, Lit b, ClauseGroup group, Polarity polarity);
SumAndCarry full_adder(CnfFormula& formula, Lit a, Lit b, Lit c, ClauseGroup group,
                       Polarity polarity);

class AdderBuckets {
 public:
  explicit AdderBuckets(CnfFormula& formula) : formula_{formula} {}

  // One more literal that counts 2^weight. LitFalse is left out.
  void add(Lit lit, std::size_t weight);
  // A number of which the lowest bit counts 2^shift.
  void add_number(std::span<const Lit> bits, std::size_t shift);
  // The sum of all that was added, lowest bit first. Empties the buckets.
  Lits sum(ClauseGroup group, Polarity polarity);

 private:
  Lit compress(std::size_t weight, ClauseGroup group, Polarity polarity);

  CnfFormula& formula_;
  std::vector<Lits> buckets_;  // by weight
};

}  // namespace vorel::sat
