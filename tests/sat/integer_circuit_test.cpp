#include "sat/integer_circuit.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "sat/sat_testing.h"

namespace vorel::sat {
namespace {

std::uint64_t number_of(std::span<const Lit> bits, Assignment assignment) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < bits.size(); ++i)
    number |= std::uint64_t{holds(bits[i], assignment)} << i;
  return number;
}

std::uint64_t truths_of(std::span<const Lit> lits, Assignment assignment) {
  return static_cast<std::uint64_t>(
      std::ranges::count_if(lits, [&](Lit lit) { return holds(lit, assignment); }));
}

// `bits` is the expected number for every assignment of the inputs.
void expect_number(FormulaOf& f, std::span<const Lit> bits,
                   const std::function<std::uint64_t(Assignment)>& expected) {
  const IntegerCircuit circuit(f.formula);
  for (Assignment a = 0; a < f.assignment_count(); ++a) {
    ASSERT_TRUE(f.possible(a));
    ASSERT_EQ(circuit.model_value(bits), expected(a)) << "for " << a;
  }
}

// Constraints hold for exactly the expected assignments.
void expect_models(FormulaOf& f, const std::function<bool(Assignment)>& expected) {
  for (Assignment a = 0; a < f.assignment_count(); ++a) ASSERT_EQ(f.possible(a), expected(a)) << a;
}

TEST(IntegerCircuit, CountsTrueLiteralsAmongRepeatedAndConstantOnes) {
  Random random(11);
  for (int round = 0; round < 120; ++round) {
    FormulaOf f(5);
    const Lits lits = random_lits(random, f.inputs, random.below(10), round % 2 == 0);
    const Lits bits = IntegerCircuit(f.formula).count_ones(lits, PermanentGroup);
    expect_number(f, bits, [&](Assignment a) { return truths_of(lits, a); });
  }
}

TEST(IntegerCircuit, EachBitOfACountHoldsInTheWantedDirection) {
  for (const Polarity polarity : {-1, 1})
    for (const bool plus_one : {false, true}) {
      FormulaOf f(6);
      Lits lits = fixing(f.inputs, 0x2D);
      if (plus_one) lits.insert(lits.begin(), LitTrue);  // it enters the last adder
      const Lits bits = IntegerCircuit(f.formula).count_ones(lits, PermanentGroup, polarity);
      for (std::size_t i = 0; i < bits.size(); ++i)
        expect_literal(f, bits[i], polarity,
                       [&](Assignment a) { return (truths_of(lits, a) >> i & 1u) != 0; });
    }
}

TEST(IntegerCircuit, ACountOfZeroMakesItsLiteralsFalseWithoutADecision) {
  for (std::uint32_t size = 1; size <= 40; ++size) {
    CnfFormula formula(CnfParams{.restrict_branching = true});
    const Lits lits = formula.new_vars(size);  // nothing here is decided on
    IntegerCircuit circuit(formula);
    circuit.assert_equal(circuit.count_ones(lits, PermanentGroup), 0, PermanentGroup);
    ASSERT_TRUE(formula.solve());
    for (const Lit lit : lits) EXPECT_EQ(formula.value(lit), ModelValue::no) << size;
  }
}

TEST(IntegerCircuit, TurnsSortedUnaryNumbersIntoBinary) {
  for (std::uint32_t size = 0; size <= 9; ++size) {
    FormulaOf f(size);
    const Lits lits = fixing(size, ~0u);
    const Lits bits = IntegerCircuit(f.formula).sorted_to_binary(lits, PermanentGroup);
    for (std::uint32_t ones = 0; ones <= size; ++ones) {
      ASSERT_TRUE(f.possible((1u << ones) - 1));
      EXPECT_EQ(IntegerCircuit(f.formula).model_value(bits), ones) << "of " << size;
    }
  }
}

TEST(IntegerCircuit, ThresholdIsTrueWhenMoreThanKLiteralsAre) {
  Random random(5);
  for (const Polarity polarity : {-1, 0, 1})
    for (std::uint64_t k = 0; k <= 7; ++k)
      for (int round = 0; round < 8; ++round) {
        FormulaOf f(4);
        const Lits lits = random_lits(random, f.inputs, random.below(9), round % 2 == 0);
        const Lit lit = IntegerCircuit(f.formula).threshold(lits, k, PermanentGroup, polarity);
        const Polarity defined = lit.is_constant() || lit.variable() < Var{4} ? 0 : polarity;
        expect_literal(f, lit, defined, [&](Assignment a) { return truths_of(lits, a) > k; });
      }
}

// Widths 0 to 3 with every value, also with those that do not fit.
template <class Check>
void for_each_width_and_value(const Check& check) {
  for (std::uint32_t width = 0; width <= 3; ++width)
    for (std::uint64_t value = 0; value <= 17; ++value) check(width, value);
}

TEST(IntegerCircuit, AssertedComparisonsWithConstantsHaveTheRightModels) {
  using Assert = void (IntegerCircuit::*)(std::span<const Lit>, std::uint64_t, ClauseGroup);
  using Compare = bool (*)(std::uint64_t, std::uint64_t);
  const std::vector<std::pair<Assert, Compare>> rows = {
      {&IntegerCircuit::assert_equal, [](auto x, auto v) { return x == v; }},
      {&IntegerCircuit::assert_not_equal, [](auto x, auto v) { return x != v; }},
      {&IntegerCircuit::assert_greater, [](auto x, auto v) { return x > v; }},
      {&IntegerCircuit::assert_at_most, [](auto x, auto v) { return x <= v; }},
  };
  for (const auto& [assertion, compare] : rows)
    for_each_width_and_value([&](std::uint32_t width, std::uint64_t value) {
      FormulaOf f(width);
      const Lits bits = fixing(width, 0x5);
      IntegerCircuit circuit(f.formula);
      (circuit.*assertion)(bits, value, f.formula.group(1));
      expect_models(f, [&](Assignment a) { return compare(number_of(bits, a), value); });
    });
}

TEST(IntegerCircuit, ComparisonsWithConstantsAreTrueInTheRightModels) {
  for (const Polarity polarity : {-1, 0, 1})
    for_each_width_and_value([&](std::uint32_t width, std::uint64_t value) {
      FormulaOf f(width);
      const Lits bits = fixing(width, 0x2);
      IntegerCircuit circuit(f.formula);
      const auto defined = [&](Lit lit) {
        return lit.is_constant() || lit.variable() < Var{width} ? 0 : polarity;
      };
      const Lit equal = circuit.is_equal(bits, value, PermanentGroup, polarity);
      const Lit at_most = circuit.is_at_most(bits, value, PermanentGroup, polarity);
      expect_literal(f, equal, defined(equal),
                     [&](Assignment a) { return number_of(bits, a) == value; });
      expect_literal(f, at_most, defined(at_most),
                     [&](Assignment a) { return number_of(bits, a) <= value; });
    });
}

TEST(IntegerCircuit, ComparesTwoNumbersOfAnyWidths) {
  for (std::uint32_t width_x = 0; width_x <= 3; ++width_x)
    for (std::uint32_t width_y = 0; width_y <= 3; ++width_y) {
      const Lits all = fixing(width_x + width_y, ~0u);
      const auto x = std::span(all).first(width_x), y = std::span(all).subspan(width_x);
      const auto less = [&](Assignment a) { return number_of(x, a) < number_of(y, a); };
      FormulaOf literal(width_x + width_y), asserted(width_x + width_y), refuted(width_x + width_y);
      expect_literal(literal, IntegerCircuit(literal.formula).is_less(x, y, PermanentGroup), 0,
                     less);
      IntegerCircuit(asserted.formula).assert_less_than(x, y, PermanentGroup);
      expect_models(asserted, less);
      IntegerCircuit(refuted.formula).assert_not_greater(y, x, PermanentGroup);
      expect_models(refuted, [&](Assignment a) { return number_of(y, a) <= number_of(x, a); });
    }
}

TEST(IntegerCircuit, AddsAndMultiplies) {
  Random random(29);
  for (int round = 0; round < 80; ++round) {
    FormulaOf f(5);
    IntegerCircuit circuit(f.formula);
    std::vector<Lits> numbers;
    std::vector<std::uint64_t> values;
    for (int i = 0; i < 3; ++i) {
      numbers.push_back(random_lits(random, f.inputs, random.below(5), round % 2 == 0));
      values.push_back(random.below(12));
    }
    const auto total = [&](Assignment a, const std::vector<std::uint64_t>& weights) {
      std::uint64_t sum = 0;
      for (std::size_t i = 0; i < weights.size(); ++i) sum += weights[i] * number_of(numbers[i], a);
      return sum;
    };
    const std::vector<const Lits*> references = {&numbers[0], &numbers[2]};
    const ClauseGroup g = PermanentGroup;
    expect_number(f, circuit.add(numbers[0], numbers[1], g), [&](Assignment a) {
      return total(a, {1, 1});
    });
    expect_number(f, circuit.multiply(values[0], numbers[0], g),
                  [&](Assignment a) { return total(a, {values[0]}); });
    expect_number(f, circuit.sum(numbers, g), [&](Assignment a) { return total(a, {1, 1, 1}); });
    expect_number(f, circuit.sum_refs(references, g), [&](Assignment a) {
      return total(a, {1, 0, 1});
    });
    expect_number(f, circuit.weighted_sum(values, numbers, g),
                  [&](Assignment a) { return total(a, values); });
  }
}

TEST(IntegerCircuit, HighestFactorKeepsAllItsBits) {
  FormulaOf f(2);
  IntegerCircuit circuit(f.formula);
  const std::uint64_t factor = std::uint64_t{1} << 63;
  const Lits bits = circuit.multiply(factor, fixing(2, 3), PermanentGroup);
  EXPECT_EQ(bits.size(), 65u);
  ASSERT_TRUE(f.possible(Assignment{1}));
  EXPECT_EQ(circuit.model_value(bits), factor);
  ASSERT_TRUE(f.possible(Assignment{2}));
  EXPECT_EQ(circuit.model_value(bits), std::numeric_limits<std::uint64_t>::max());
}

TEST(IntegerCircuit, DecodesEachValueOfTheLowBits) {
  for (std::uint32_t width = 0; width <= 3; ++width)
    for (std::uint64_t n = 0; n <= 9; ++n) {
      FormulaOf f(width);
      const Lits bits = fixing(width, 0x6);
      const Lits lits = IntegerCircuit(f.formula).decode(bits, n, PermanentGroup);
      ASSERT_EQ(lits.size(), n + 1);
      const std::uint64_t low = std::bit_ceil(n + 1) - 1;
      for (std::uint64_t value = 0; value <= n; ++value)
        expect_literal(f, lits[value], 0,
                       [&](Assignment a) { return (number_of(bits, a) & low) == value; });
    }
}

}  // namespace
}  // namespace vorel::sat
