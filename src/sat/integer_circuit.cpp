#include "sat/integer_circuit.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <limits>

#include "sat/adder_buckets.h"
#include "sat/totalizer.h"

namespace vorel::sat {
namespace {

constexpr std::size_t value_bits = 64;
constexpr std::uint64_t most_in_unary = 16;

std::size_t bit_length(std::uint64_t value) {
  return static_cast<std::size_t>(std::bit_width(value));
}

bool bit_of(std::uint64_t value, std::size_t i) {
  return i < value_bits && ((value >> i) & 1u) != 0;
}

Lit bit_of(std::span<const Lit> bits, std::size_t i) {
  return i < bits.size() ? bits[i] : LitFalse;
}

bool is_wider(std::uint64_t value, std::span<const Lit> bits) {
  return bit_length(value) > bits.size();
}

// The literals that are true exactly when the bits have the value.
Lits matching_literals(std::span<const Lit> bits, std::uint64_t value) {
  Lits lits;
  for (std::size_t i = 0; i < bits.size(); ++i) lits.push_back(bits[i] ^ !bit_of(value, i));
  return lits;
}

void add_multiple(AdderBuckets& buckets, std::uint64_t value, std::span<const Lit> bits) {
  for (std::size_t i = 0; i < value_bits; ++i)
    if (bit_of(value, i)) buckets.add_number(bits, i);
}

}  // namespace

std::uint64_t IntegerCircuit::model_value(std::span<const Lit> bits) const {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bits.size(); ++i) {
    if (!formula_.is_true(bits[i])) continue;
    if (i >= value_bits) return std::numeric_limits<std::uint64_t>::max();
    value |= std::uint64_t{1} << i;
  }
  return value;
}

Lits IntegerCircuit::constant(std::uint64_t value) {
  Lits bits;
  for (std::size_t i = 0; i < bit_length(value); ++i)
    bits.push_back(constant_lit(bit_of(value, i)));
  return bits;
}

Lits IntegerCircuit::count_ones(std::span<const Lit> lits, ClauseGroup group, Polarity polarity) {
  AdderBuckets buckets(formula_);
  for (const Lit lit : lits) buckets.add(lit, 0);
  return buckets.sum(group, polarity);
}

// Bit j is true when the run of true literals ends in an odd multiple of 2^j.
Lits IntegerCircuit::sorted_to_binary(std::span<const Lit> lits, ClauseGroup group,
                                      Polarity polarity) {
  if (lits.size() < 2) return Lits(lits.begin(), lits.end());
  Lits bits;
  for (std::size_t step = 1; step <= lits.size(); step *= 2) {
    Lits ends;
    for (std::size_t i = step - 1; i < lits.size(); i += 2 * step) {
      const bool last = i + step >= lits.size();
      ends.push_back(
          last ? lits[i]
               : formula_.make_gate(Gate(GateAnd, {lits[i], ~lits[i + step]}), group, polarity));
    }
    bits.push_back(formula_.make_gate(Gate(GateOr, ends), group, polarity));
  }
  return bits;
}

Lit IntegerCircuit::threshold(std::span<const Lit> lits, std::uint64_t k, ClauseGroup group,
                              Polarity polarity) {
  if (lits.size() <= k) return LitFalse;
  if (k == 0) return formula_.make_gate(Gate(GateOr, lits), group, polarity);
  if (k + 1 == lits.size()) return formula_.make_gate(Gate(GateAnd, lits), group, polarity);
  // In unary where that is no larger. It propagates better than a binary sum: many literals that
  // exclude each other lead a search into such a sum again and again.
  if (k < most_in_unary) return Totalizer(lits, polarity).at_least(k + 1, formula_, group);
  const std::uint64_t least_false = lits.size() - k;
  if (least_false > most_in_unary) return ~is_at_most(count_ones(lits, group), k, group, -polarity);
  Lits complements(lits.begin(), lits.end());
  for (Lit& lit : complements) lit = ~lit;
  return ~Totalizer(complements, -polarity).at_least(least_false, formula_, group);
}

void IntegerCircuit::assert_equal(std::span<const Lit> bits, std::uint64_t value,
                                  ClauseGroup group) {
  if (is_wider(value, bits))
    formula_.add_clause({}, group);
  else
    formula_.add_units(matching_literals(bits, value), false, group);
}

void IntegerCircuit::assert_not_equal(std::span<const Lit> bits, std::uint64_t value,
                                      ClauseGroup group) {
  if (is_wider(value, bits)) return;
  Lits clause = matching_literals(bits, value);
  for (Lit& lit : clause) lit = ~lit;
  formula_.add_clause(clause, group);
}

void IntegerCircuit::assert_greater(std::span<const Lit> bits, std::uint64_t value,
                                    ClauseGroup group) {
  const std::size_t length = bit_length(value);
  const bool all_ones = std::popcount(value) == static_cast<int>(length);
  if (length > bits.size() || (length == bits.size() && all_ones)) {
    formula_.add_clause({}, group);
    return;
  }
  Lit low_bits_greater = LitFalse;
  for (std::size_t i = 0; i < length; ++i) {
    const GateType type = bit_of(value, i) ? GateAnd : GateOr;
    low_bits_greater = formula_.make_gate(Gate(type, {low_bits_greater, bits[i]}), group, +1);
  }
  Lits clause = {low_bits_greater};
  clause.insert(clause.end(), bits.begin() + static_cast<std::ptrdiff_t>(length), bits.end());
  formula_.add_clause(clause, group);
}

// Whether the bits from `first` on, where the value has a 0, and below `end` are at most the
// value's. The bits below `first` are all 1 in the value and do not matter.
Lit IntegerCircuit::chain(std::span<const Lit> bits, std::uint64_t value, std::size_t first,
                          std::size_t end, ClauseGroup group, Polarity polarity) {
  assert(!bit_of(value, first) && end <= bits.size());
  Lit at_most = ~bits[first];
  for (std::size_t i = first + 1; i < end; ++i) {
    const GateType type = bit_of(value, i) ? GateOr : GateAnd;
    at_most = formula_.make_gate(Gate(type, {at_most, ~bits[i]}), group, polarity);
  }
  return at_most;
}

Lit IntegerCircuit::is_at_most(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group,
                               Polarity polarity) {
  if (value == 0) return ~formula_.make_gate(Gate(GateOr, bits), group, -polarity);
  // Without this, the highest of the bits would be compared with a 1 that is not there.
  if (is_wider(value, bits)) return LitTrue;
  const std::size_t top = bit_length(value) - 1;
  Lits conditions;
  for (std::size_t i = bits.size() - 1; i > top; --i) conditions.push_back(~bits[i]);
  const auto first = static_cast<std::size_t>(std::countr_one(value));
  if (first < top) {
    const Lit low = chain(bits, value, first, top, group, polarity);
    conditions.push_back(formula_.make_gate(Gate(GateOr, {low, ~bits[top]}), group, polarity));
  }
  return formula_.make_gate(Gate(GateAnd, conditions), group, polarity);
}

void IntegerCircuit::assert_at_most(std::span<const Lit> bits, std::uint64_t value,
                                    ClauseGroup group) {
  if (is_wider(value, bits)) return;
  const std::size_t length = bit_length(value);
  formula_.add_units(bits.subspan(length), true, group);
  const auto first = static_cast<std::size_t>(std::countr_one(value));
  if (first < length) {
    const Lit low = chain(bits, value, first, length - 1, group, +1);
    formula_.add_binary(low, ~bits[length - 1], group);
  }
}

void IntegerCircuit::assert_not_greater(std::span<const Lit> x, std::span<const Lit> y,
                                        ClauseGroup group) {
  formula_.add_unit(~is_less(y, x, group, -1), group);
}

void IntegerCircuit::assert_less_than(std::span<const Lit> x, std::span<const Lit> y,
                                      ClauseGroup group) {
  formula_.add_unit(is_less(x, y, group, +1), group);
}

Lit IntegerCircuit::is_equal(std::span<const Lit> bits, std::uint64_t value, ClauseGroup group,
                             Polarity polarity) {
  if (is_wider(value, bits)) return LitFalse;
  return formula_.make_gate(Gate(GateAnd, matching_literals(bits, value)), group, polarity);
}

Lit IntegerCircuit::is_less(std::span<const Lit> x, std::span<const Lit> y, ClauseGroup group,
                            Polarity polarity) {
  Lit less = LitFalse;
  for (std::size_t i = 0; i < std::max(x.size(), y.size()); ++i)
    less = formula_.make_gate(Gate(GateLess, {less, bit_of(x, i), bit_of(y, i)}), group, polarity);
  return less;
}

Lits IntegerCircuit::add(std::span<const Lit> x, std::span<const Lit> y, ClauseGroup group,
                         Polarity polarity) {
  Lits bits;
  Lit carry = LitFalse;
  for (std::size_t i = 0; i < std::max(x.size(), y.size()); ++i) {
    const SumAndCarry added =
        full_adder(formula_, bit_of(x, i), bit_of(y, i), carry, group, polarity);
    bits.push_back(added.sum);
    carry = added.carry;
  }
  bits.push_back(carry);
  while (!bits.empty() && bits.back() == LitFalse) bits.pop_back();
  return bits;
}

Lits IntegerCircuit::multiply(std::uint64_t value, std::span<const Lit> x, ClauseGroup group,
                              Polarity polarity) {
  AdderBuckets buckets(formula_);
  add_multiple(buckets, value, x);
  return buckets.sum(group, polarity);
}

Lits IntegerCircuit::sum(std::span<const Lits> numbers, ClauseGroup group, Polarity polarity) {
  AdderBuckets buckets(formula_);
  for (const Lits& number : numbers) buckets.add_number(number, 0);
  return buckets.sum(group, polarity);
}

Lits IntegerCircuit::sum_refs(std::span<const Lits* const> numbers, ClauseGroup group,
                              Polarity polarity) {
  AdderBuckets buckets(formula_);
  for (const Lits* number : numbers) buckets.add_number(*number, 0);
  return buckets.sum(group, polarity);
}

Lits IntegerCircuit::weighted_sum(std::span<const std::uint64_t> values,
                                  std::span<const Lits> numbers, ClauseGroup group,
                                  Polarity polarity) {
  assert(values.size() == numbers.size());
  AdderBuckets buckets(formula_);
  for (std::size_t i = 0; i < values.size(); ++i) add_multiple(buckets, values[i], numbers[i]);
  return buckets.sum(group, polarity);
}

Lits IntegerCircuit::decode(std::span<const Lit> bits, std::uint64_t n, ClauseGroup group) {
  Lits low_bits;
  for (std::size_t i = 0; i < bit_length(n); ++i) low_bits.push_back(bit_of(bits, i));
  Lits lits;
  for (std::uint64_t value = 0;; ++value) {
    lits.push_back(is_equal(low_bits, value, group));
    if (value == n) return lits;
  }
}

}  // namespace vorel::sat
