#include "decomposition/boolean_decomposer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <set>

#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"
#include "decomposition/gate_library.h"
#include "oracle/table_relation.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;
using oracle::SmallFunction, oracle::values_of;

constexpr std::uint32_t first_pin = 0, first_input = 8;

// ER+, QR+, ER- and QR- of a signal, by codes. A code may lie in the sets of both values that the
// signal can have there, never in sets that it leaves for different values.
struct RandomSignal {
  RandomSignal(oracle::Random& random, std::uint32_t input_count) : inputs{input_count} {
    const std::uint32_t free = random.below(60), overlapping = random.chance(30) ? 20 : 0;
    has_own_variable = random.chance(50);
    for (std::uint32_t x = 0; x < 1u << inputs; ++x) {
      if (random.chance(free)) continue;
      const bool next = random.chance(50);
      const bool now = has_own_variable ? (x & 1u) != 0 : random.chance(50);
      const bool both = !has_own_variable && random.chance(overlapping);
      for (const bool value : {false, true})
        if (both || value == now) sets[set_of(value, next)] |= SmallFunction{1} << x;
    }
  }
  static std::size_t set_of(bool now, bool next) {
    return next ? (now ? 1u : 0u) : (now ? 2u : 3u);
  }
  DecomposedFunction function() const {
    std::vector<Bdd> variables;
    for (std::uint32_t i = 0; i < inputs; ++i)
      variables.push_back(bdd::bdd_variable(first_input + i));
    const auto bdd = [&](std::size_t set) { return oracle::bdd_of_function(sets[set], variables); };
    DecomposedFunction f{{bdd(0), bdd(1), bdd(2), bdd(3)}, 0, {}};
    f.literals = bdd::literal_count(f.covers.er_plus | f.covers.qr_plus);
    if (has_own_variable) f.own_variable = first_input;
    return f;
  }

  std::uint32_t inputs;
  bool has_own_variable;
  std::array<SmallFunction, 4> sets = {};
};

// By the gate's function at each code and each present value of the signal.
bool does_the_same(const toolkit::LibraryGate& gate, const std::vector<Bdd>& pins,
                   const RandomSignal& signal) {
  const toolkit::TruthTable table = toolkit::truth_table(gate.function, gate.pin_count());
  for (std::uint32_t x = 0; x < 1u << signal.inputs; ++x) {
    std::uint32_t values = 0;
    for (std::size_t i = 0; i < pins.size(); ++i)
      values |=
          static_cast<std::uint32_t>((values_of(pins[i], first_input, signal.inputs) >> x) & 1u)
          << i;
    for (const bool now : {false, true}) {
      const std::uint32_t feedback = now && gate.has_feedback ? 1u << pins.size() : 0;
      const bool next = (table.front() >> (values | feedback)) % 2 == 1;
      if ((signal.sets[RandomSignal::set_of(now, !next)] >> x) % 2 == 1) return false;
    }
  }
  return true;
}

TEST(BooleanDecomposer, AGateOfTheCandidateDoesWhatTheSignalDoes) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  const std::vector<std::string> names = library->gate_list(~0u, true);
  BooleanDecomposer decomposer;
  std::size_t with_latch = 0, without = 0;
  for (auto [seed, end] = support::seeds(60); seed != end; ++seed) {
    oracle::Random random(seed);
    const RandomSignal signal(random, random.between(2, 5));
    const DecomposedFunction f = signal.function();
    const toolkit::LibraryGate& gate = library->gate(names[random.below(names.size())]);
    const DecomposingGate decomposing(gate, first_pin);
    const auto candidates = decomposer.decompose(f, decomposing);
    ASSERT_LE(candidates.size(), 5u);
    ASSERT_TRUE(std::ranges::is_sorted(candidates, {}, &BooleanCandidate::cost));
    std::set<std::vector<Bdd>> distinct;
    for (const auto& [pins, cost] : candidates) {
      ASSERT_TRUE(does_the_same(gate, pins, signal)) << gate.name << " seed " << seed;
      ASSERT_TRUE(distinct.insert(pins).second);
      double literals = 0;
      for (const Bdd& pin : pins) {
        ASSERT_FALSE(pin.is_constant());
        ASSERT_TRUE(decomposing.is_latch || !is_literal(pin) || pin.variable() != f.own_variable);
        if (is_literal(pin)) continue;
        ASSERT_LT(literal_count(pin), f.literals);
        literals += static_cast<double>(literal_count(pin));
      }
      ASSERT_EQ(cost, literals) << gate.name << " seed " << seed;
    }
    (decomposing.is_latch ? with_latch : without) += candidates.size();
  }
  EXPECT_GT(std::min(with_latch, without), 0u);
}

TEST(BooleanDecomposer, KnownDecompositionsAreFound) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  const Bdd a = bdd::bdd_variable(10), b = bdd::bdd_variable(11), c = bdd::bdd_variable(12),
            d = bdd::bdd_variable(13);
  const auto best = [&](const Bdd& f, std::optional<std::uint32_t> own, const char* gate) {
    const auto candidates = BooleanDecomposer().decompose({bdd::BDDCover(f), literal_count(f), own},
                                                          {library->gate(gate), first_pin});
    return candidates.empty() ? std::vector<Bdd>() : candidates.front().pins;
  };
  const std::vector<Bdd> join = {a, b}, none;
  const Bdd c_element = (a & b) | (d & (a | b));
  const bdd::BDDCover with_memory(~d & a & b, d & (a | b), d & ~a & ~b, ~d & (~a | ~b));
  const auto latched = BooleanDecomposer().decompose(
      {with_memory, 5, 13}, {library->gate("c_element0:asynch"), first_pin});
  ASSERT_FALSE(latched.empty());
  EXPECT_TRUE(std::ranges::is_permutation(latched.front().pins, join));
  EXPECT_EQ(latched.front().cost, 0);
  for (const Bdd& pin : best(c_element, 13, "and2:combinational")) EXPECT_NE(pin, d);
  const auto split = best((a & b) | (c & d), {}, "or2:combinational");
  ASSERT_EQ(split.size(), 2u);
  EXPECT_EQ(split[0] | split[1], (a & b) | (c & d));
  EXPECT_EQ(literal_count(split[0]) + literal_count(split[1]), 4u);
  EXPECT_EQ(best(a & b, {}, "inv:combinational"), none);
  EXPECT_EQ(best(a & b, {}, "const1:combinational"), none);
}

}  // namespace
}  // namespace vorel::decomposition
