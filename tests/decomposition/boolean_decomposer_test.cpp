#include "decomposition/boolean_decomposer.h"

#include <gtest/gtest.h>

#include <array>

#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"
#include "decomposition/gate_library.h"
#include "oracle/table_relation.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;

constexpr std::uint32_t first_pin = 0, first_input = 8;

// The sets of codes in which a signal has one value and gets another one.
struct RandomSignal {
  RandomSignal(oracle::Random& random, std::uint32_t input_count)
      : inputs{input_count}, knows_itself{random.chance(50)} {
    const std::uint32_t free = random.below(60), overlapping = random.chance(30) ? 20 : 0;
    for (std::uint32_t x = 0; x < 1u << inputs; ++x) {
      if (random.chance(free)) continue;
      const bool next = random.chance(50), now = knows_itself ? x % 2 == 1 : random.chance(50);
      const oracle::SmallFunction code = oracle::SmallFunction{1} << x;
      at[now][next] |= code;
      // A context without the signal may not tell whether it is excited.
      if (!knows_itself && random.chance(overlapping)) at[!now][next] |= code;
    }
  }
  DecomposedFunction function() const {
    std::vector<Bdd> variables;
    for (std::uint32_t i = 0; i < inputs; ++i)
      variables.push_back(bdd::bdd_variable(first_input + i));
    const auto set = [&](bool now, bool next) {
      return oracle::bdd_of_function(at[now][next], variables);
    };
    DecomposedFunction f{{set(0, 1), set(1, 1), set(1, 0), set(0, 0)}, 0, {}};
    f.literals = bdd::literal_count(f.covers.er_plus | f.covers.qr_plus);
    if (knows_itself) f.own_variable = first_input;
    return f;
  }
  // The values of pins with which the gate's function, present value in the place of a feedback, is
  // the next value wherever the signal has one.
  oracle::TableRelation pins_of(const toolkit::LibraryGate& gate) const {
    const std::uint64_t table = toolkit::truth_table(gate.function, gate.pin_count()).front();
    oracle::TableRelation relation{inputs, gate.input_count(), {}};
    for (std::uint32_t x = 0; x < 1u << inputs; ++x) {
      std::uint32_t allowed = (1u << (1u << relation.outputs)) - 1;
      for (const bool now : {false, true}) {
        const auto to_1 = static_cast<std::uint32_t>(
            table >> (now && gate.has_feedback ? 1u << relation.outputs : 0u));
        if ((at[now][1] >> x) % 2 == 1) allowed &= to_1;
        if ((at[now][0] >> x) % 2 == 1) allowed &= ~to_1;
      }
      relation.allowed.push_back(allowed);
    }
    return relation;
  }

  std::uint32_t inputs;
  bool knows_itself;
  std::array<std::array<oracle::SmallFunction, 2>, 2> at = {};  // [value][next value]
};

TEST(BooleanDecomposer, AGateOfTheCandidateDoesWhatTheSignalDoes) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  const std::vector<std::string> names = library->gate_list(~0u, true);
  LiteralCounts counts;
  BooleanDecomposer decomposer(counts);
  std::size_t count[2] = {};
  for (auto [seed, end] = support::seeds(60); seed != end; ++seed) {
    oracle::Random random(seed);
    const RandomSignal signal(random, random.between(2, 5));
    const DecomposedFunction f = signal.function();
    const toolkit::LibraryGate& gate = library->gate(names[random.below(names.size())]);
    const DecomposingGate decomposing(gate, first_pin);
    const oracle::TableRelation right = signal.pins_of(gate);
    const auto candidates = decomposer.decompose(f, decomposing);
    ASSERT_LE(candidates.size(), 5u);
    ASSERT_TRUE(std::ranges::is_sorted(candidates, {}, &BooleanCandidate::cost));
    for (const auto& [pins, cost] : candidates) {
      ASSERT_TRUE(right.contains(oracle::values_of(pins, first_input, signal.inputs)))
          << gate.name << " seed " << seed;
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
    count[decomposing.is_latch] += candidates.size();
  }
  EXPECT_GT(std::min(count[0], count[1]), 0u);
}

TEST(BooleanDecomposer, ASignalThatWaitsForTwoOthersIsALatchOfThem) {
  const auto library = GateLibrary::read("");
  ASSERT_TRUE(library);
  const Bdd a = bdd::bdd_variable(10), b = bdd::bdd_variable(11), c = bdd::bdd_variable(12);
  const bdd::BDDCover join(~c & a & b, c & (a | b), c & ~a & ~b, ~c & (~a | ~b));
  LiteralCounts counts;
  const auto candidates = BooleanDecomposer(counts).decompose(
      {join, 5, 12}, {library->gate("c_element0:asynch"), first_pin});
  ASSERT_FALSE(candidates.empty());
  EXPECT_EQ(candidates.front().cost, 0);
}

}  // namespace
}  // namespace vorel::decomposition
