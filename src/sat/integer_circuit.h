// sat/integer_circuit.h - arithmetic over numbers whose bits are literals.
// Here:      counting, sums, multiples, comparisons, decoding, reading a number from a model.
// Not here:  the adders (sat/adder_buckets.h).
// A number is a vector of literals, lowest bit first; missing bits are false. The polarity of a
// result is that of each of its literals.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "sat/cnf_formula.h"

namespace vorel::sat {

class IntegerCircuit {
 public:
  explicit IntegerCircuit(CnfFormula& formula) : formula_{formula} {}

  // The number that the last model gives; the highest 64-bit number if it is above that.
  std::uint64_t model_value(std::span<const Lit> bits) const;
  // No leading zeros: 0 has no bits.
  static Lits constant(std::uint64_t value);

  // How many of the literals are true.
  Lits count_ones(std::span<const Lit> lits, ClauseGroup group,
                  Polarity polarity = default_polarity);
  // The same for literals of which the true ones come first.
  Lits sorted_to_binary(std::span<const Lit> lits, ClauseGroup group,
                        Polarity polarity = default_polarity);
  // True when more than k of the literals are true.
  Lit threshold(std::span<const Lit> lits, std::uint64_t k, ClauseGroup group,
                Polarity polarity = default_polarity);

  void assert_equal(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group);
  void assert_not_equal(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group);
  void assert_greater(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group);
  void assert_at_most(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group);
  void assert_not_greater(std::span<const Lit> x, std::span<const Lit> y, ClauseGroup group);
  void assert_less_than(std::span<const Lit> x, std::span<const Lit> y, ClauseGroup group);
  Lit is_equal(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group,
               Polarity polarity = default_polarity);
  Lit is_at_most(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group,
                 Polarity polarity = default_polarity);
  Lit is_less(std::span<const Lit> x, std::span<const Lit> y, ClauseGroup group,
              Polarity polarity = default_polarity);

  Lits add(std::span<const Lit> x, std::span<const Lit> y, ClauseGroup group,
           Polarity polarity = default_polarity);
  Lits multiply(std::uint64_t value, std::span<const Lit> x, ClauseGroup group,
                Polarity polarity = default_polarity);
  Lits sum(std::span<const Lits> numbers, ClauseGroup group, Polarity polarity = default_polarity);
  Lits sum_refs(std::span<const Lits* const> numbers, ClauseGroup group,
                Polarity polarity = default_polarity);
  // The sum of the numbers, each multiplied by the value in its place.
  Lits weighted_sum(std::span<const std::uint64_t> values, std::span<const Lits> numbers,
                    ClauseGroup group, Polarity polarity = default_polarity);
  // One literal for each value from 0 to n: whether the low bits, as many as n has, are that value.
  Lits decode(std::span<const Lit> bits, std::uint64_t n, ClauseGroup group);

 private:
  Lit chain(std::span<const Lit> bits, std::uint64_t value, std::size_t first, std::size_t end,
            ClauseGroup group, Polarity polarity);

  CnfFormula& formula_;
};

}  // namespace vorel::sat
