#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <set>

#include "base/messages.h"
#include "sat/alternatives.h"
#include "sat/core_guided.h"
#include "sat/enumeration.h"
#include "sat/integer_circuit.h"
#include "sat/sat_testing.h"
#include "support/seeds.h"

namespace vorel::sat {
namespace {

constexpr std::uint64_t no_limit = ~std::uint64_t{0};

// Random clauses over the inputs, added to the formula and kept for evaluation.
struct RandomFormula : FormulaOf {
  RandomFormula(Random& random, std::uint32_t variables, std::uint32_t clause_count, int solver = 1)
      : FormulaOf(variables, solver) {
    for (std::uint32_t i = 0; i < clause_count; ++i) {
      clauses.push_back(random_lits(random, variables, 2 + random.below(2), false));
      formula.add_clause(clauses.back(), PermanentGroup);
    }
  }
  bool is_model(Assignment a) const {
    return std::ranges::all_of(clauses, [&](const Lits& c) { return clause_holds(c, a); });
  }
  std::vector<Lits> clauses;
};

std::string pattern(std::span<const Lit> lits, Assignment a) {
  std::string text;
  for (const Lit lit : lits) text += lit.is_uninit() ? '-' : holds(lit, a) ? '1' : '0';
  return text;
}

std::string pattern(const LiteralCube& cube) {
  std::string text;
  for (std::size_t i = 0; i < cube.size(); ++i) text += "01-"[static_cast<int>(cube[i])];
  return text;
}

// Random literals, some of them with two below that they imply one of.
std::vector<Alternative> random_alternatives(Random& random, RandomFormula& f) {
  std::vector<Alternative> result;
  Lits all;
  for (const Lit lit : random_lits(random, f.inputs, 2 + random.below(12))) {
    all.push_back(lit);
    result.push_back({lit, {}});
    if (random.below(2) == 0 || lit.is_constant()) continue;
    f.clauses.push_back(random_lits(random, f.inputs, 2, false));
    for (const Lit below : f.clauses.back()) result.back().below.push_back({below, {}});
    f.clauses.back().push_back(~lit);
    f.formula.add_clause(f.clauses.back(), PermanentGroup);
  }
  f.clauses.push_back(all);
  f.formula.add_clause(all, PermanentGroup);
  return result;
}

TEST(AlternativeSearch, HasTheAnswerOfTheFormulaOrNone) {
  Random random(59);
  int models = 0, refuted = 0;
  for (int round = 0; round < 600; ++round) {
    RandomFormula f(random, 8, 10 + random.below(40), round % 2);
    AlternativeSearch search(random_alternatives(random, f));
    bool expected = false;
    for (Assignment a = 0; a < f.assignment_count(); ++a) expected = expected || f.is_model(a);
    const std::optional<bool> answer = search.solve(f.formula);
    ASSERT_EQ(answer.value_or(expected), expected) << "round " << round;
    models += answer == true ? 1 : 0;
    refuted += !expected;
    if (answer == true) {
      Assignment model = 0;
      for (std::uint32_t v = 0; v < f.inputs; ++v) model |= f.formula.is_true(lit_of(v)) << v;
      EXPECT_TRUE(f.is_model(model));
    }
    EXPECT_EQ(f.formula.solve(), expected);
  }
  EXPECT_GT(models, 50);
  EXPECT_GT(refuted, 50);
}

TEST(Enumeration, ListsEachAssignmentOfTheLiteralsOnce) {
  Random random(41);
  for (int round = 0; round < 60; ++round) {
    RandomFormula f(random, 6, 4 + random.below(10));
    Lits lits = random_lits(random, f.inputs, random.below(5));
    if (round % 5 == 0) lits.push_back(LitUninit);
    std::set<std::string> expected;
    for (Assignment a = 0; a < f.assignment_count(); ++a)
      if (f.is_model(a)) expected.insert(pattern(lits, a));
    std::vector<std::string> found;
    enumerate(
        f.formula, lits, f.formula.group(0),
        [&](const LiteralCube& cube) { found.push_back(pattern(cube)); }, no_limit);
    EXPECT_EQ(found.size(), expected.size());
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()), expected);
  }
}

TEST(Enumeration, StopsWhenTheCallbackReportsAnError) {
  const auto run = [] {
    FormulaOf f(3);
    int calls = 0;
    const auto fail = [&](const LiteralCube&) { ++calls, base::print_error("failed on purpose"); };
    enumerate(f.formula, fixing(3, 0), f.formula.group(0), fail, no_limit);
    std::exit(calls);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(1), "failed on purpose");
}

// Each cube is that of a model which has, for every cube before, another value somewhere in it;
// and no further model has that.
void check_sets(bool listed) {
  Random random(listed ? 43 : 47);
  for (int round = 0; round < 60; ++round) {
    RandomFormula f(random, 6, random.below(12));
    const Lits lits = random_lits(random, f.inputs, 1 + random.below(5));
    const ClauseGroup group = f.formula.group(0);
    std::vector<LiteralCube> cubes;
    if (listed)
      enumerate_true(f.formula, lits, cubes, group);
    else
      enumerate_false(f.formula, lits, cubes, group);
    const auto differs = [&](const LiteralCube& cube, Assignment a) {
      for (std::size_t i = 0; i < lits.size(); ++i)
        if (cube[i] != CubeValue::any && holds(lits[i], a) != listed) return true;
      return false;
    };
    std::size_t models_left = 0;
    for (Assignment a = 0; a < f.assignment_count(); ++a) {
      const auto differs_from = [&](const LiteralCube& cube) { return differs(cube, a); };
      if (f.is_model(a) && std::ranges::all_of(cubes, differs_from)) ++models_left;
    }
    EXPECT_EQ(models_left, 0u);
    for (std::size_t n = 0; n < cubes.size(); ++n) {
      bool found = false;
      for (Assignment a = 0; a < f.assignment_count() && !found; ++a) {
        found = f.is_model(a);
        for (std::size_t i = 0; i < lits.size(); ++i)
          found = found && (cubes[n][i] != CubeValue::any) == (holds(lits[i], a) == listed);
        for (std::size_t m = 0; m < n; ++m) found = found && differs(cubes[m], a);
      }
      EXPECT_TRUE(found) << pattern(cubes[n]);
    }
  }
}

TEST(Enumeration, SetsOfFalseLiteralsCoverAllModels) { check_sets(false); }
TEST(Enumeration, SetsOfTrueLiteralsCoverAllModels) { check_sets(true); }

TEST(Enumeration, RequiredCubesAreEachMetSomewhere) {
  FormulaOf f(3);
  std::vector<LiteralCube> cubes(2, LiteralCube(3, CubeValue::any));
  cubes[0].set(0, CubeValue::yes);
  cubes[0].set(2, CubeValue::no);
  cubes[1].set(1, CubeValue::no);
  require_cubes(f.formula, cubes, fixing(3, 7), PermanentGroup);
  for (Assignment a = 0; a < 8; ++a) EXPECT_EQ(f.possible(a), (a & 2) == 0 && (a & 5) != 4) << a;
}

// Few weights make large plateaus; literals stand more than once, and with their complements.
void check_core_guided(Random& random, int solver) {
  const bool is_hard = random.chance(50);
  RandomFormula f(random, 10, random.below(is_hard ? 45 : 15), solver);
  const std::uint32_t most = std::array{1, 3, 30}[random.below(3)];
  std::vector<WeightedLit> cost;
  for (std::uint32_t i = random.below(16); i > 0; --i)
    cost.push_back({random_lit(random, f.inputs), most == 1 ? 1 : random.below(most)});
  for (std::uint32_t v = 0; v < f.inputs && random.chance(70); ++v)
    cost.push_back({lit_of(v) ^ random.chance(20), 1 + random.below(most)});
  const auto cost_of = [&](Assignment a) {
    std::uint64_t sum = 0;
    for (const auto& [lit, weight] : cost) sum += holds(lit, a) ? weight : 0;
    return sum;
  };
  std::optional<std::uint64_t> least;
  for (Assignment a = 0; a < f.assignment_count(); ++a)
    if (f.is_model(a)) least = std::min(least.value_or(no_limit), cost_of(a));

  const std::uint64_t bound = random.chance(50) ? no_limit : least.value_or(4) + random.below(3);
  const auto group = random.chance(50) ? PermanentGroup : f.formula.group(2);
  if (least && *least >= bound) least.reset();
  std::uint64_t last = bound;
  const auto found = find_least_cost(f.formula, cost, bound, group, [&] {
    Assignment model = 0;
    for (std::uint32_t v = 0; v < f.inputs; ++v)
      model |= f.formula.is_true(lit_of(v)) ? 1u << v : 0;
    EXPECT_TRUE(f.is_model(model));
    EXPECT_LT(cost_of(model), last) << "each is better than the one before";
    last = cost_of(model);
    EXPECT_EQ(model_cost(f.formula, cost), last);
  });
  EXPECT_EQ(found, least);
  EXPECT_EQ(last, least.value_or(bound));
}

// Many small formulas side by side, of which each has two forms: one variable chooses the form of
// all. Enough of them for all that is only done in large searches.
void check_many_choices(Random& random, int solver) {
  constexpr std::uint32_t width = 4;
  CnfFormula formula(CnfParams{.solver = solver});
  const Lit second_form(formula.new_var(false), false);
  std::array<std::uint64_t, 2> least{};
  std::vector<WeightedLit> cost;
  for (std::uint32_t blocks = random.below(700); blocks > 0; --blocks) {
    Lits inputs;
    for (std::uint32_t v = 0; v < width; ++v) inputs.push_back(Lit(formula.new_var(false), false));
    for (const Lit lit : inputs) cost.push_back({lit, 1});
    std::array<std::vector<bool>, 2> is_model;
    is_model.fill(std::vector<bool>(1 << width, true));
    for (std::uint32_t i = 1 + random.below(4); i > 0; --i) {
      const Assignment wanted = 1 + random.below((1 << width) - 1);  // one of these is true
      const std::uint32_t forms = random.below(4);                   // 2 and more: in both
      Lits clause;
      for (std::uint32_t v = 0; v < width; ++v)
        if (wanted >> v & 1u) clause.push_back(inputs[v]);
      if (forms < 2) clause.push_back(second_form ^ (forms == 1));
      formula.add_clause(clause, PermanentGroup);
      for (Assignment a = 0; a < 1 << width; ++a)
        for (const std::uint32_t form : {0u, 1u})
          if ((a & wanted) == 0 && (forms >= 2 || forms == form)) is_model[form][a] = false;
    }
    for (const std::uint32_t form : {0u, 1u}) {
      int fewest = width;
      for (Assignment a = 0; a < 1 << width; ++a)
        if (is_model[form][a]) fewest = std::min(fewest, std::popcount(a));
      least[form] += static_cast<std::uint64_t>(fewest);
    }
  }
  std::uint64_t last = no_limit;
  const auto found = find_least_cost(formula, cost, no_limit, formula.group(2),
                                     [&] { last = model_cost(formula, cost); });
  EXPECT_EQ(found, std::min(least[0], least[1]));
  EXPECT_EQ(found, last);
}

TEST(CoreGuided, AddsUpManyChoices) {
  support::for_each_seed(10, [&](std::uint64_t seed) {
    Random random(seed);
    check_many_choices(random, static_cast<int>(seed % 2));
  });
}

// So many of the items, each of which can be had in two ways: few cores tell little of it, so the
// number of the cost has its turn. The ways cost where they are false when the first model is to
// cost as much as can be.
void check_counting(Random& random, int solver) {
  const std::uint32_t items = 12 + random.below(6), wanted = 4 + random.below(items - 4);
  const bool inverted = random.chance(50);
  CnfFormula formula(CnfParams{.solver = solver});
  Lits chosen;
  std::vector<WeightedLit> cost;
  for (std::uint32_t i = 0; i < items; ++i) {
    const Lit one = Lit(formula.new_var(false), inverted), other(formula.new_var(false), inverted);
    chosen.push_back(formula.make_gate(Gate(GateOr, {one, other}), PermanentGroup));
    for (const Lit way : {one, other}) cost.push_back({way, 1});
  }
  IntegerCircuit circuit(formula);
  formula.add_unit(circuit.threshold(chosen, wanted - 1, PermanentGroup), PermanentGroup);

  const std::uint64_t bound = random.chance(30) ? no_limit : wanted + random.below(2 * items);
  std::uint64_t last = bound;
  const auto found = find_least_cost(formula, cost, bound, formula.group(2), [&] {
    EXPECT_LT(model_cost(formula, cost), last);
    last = model_cost(formula, cost);
  });
  EXPECT_EQ(found, wanted < bound ? std::optional<std::uint64_t>(wanted) : std::nullopt);
  EXPECT_EQ(last, std::min<std::uint64_t>(wanted, bound));
}

TEST(CoreGuided, CountsWhereCoresAreHard) {
  support::for_each_seed(10, [&](std::uint64_t seed) {
    Random random(seed);
    check_counting(random, static_cast<int>(seed % 2));
  });
}

TEST(CoreGuided, EndsAtTheMinimum) {
  support::for_each_seed(1000, [&](std::uint64_t seed) {
    Random random(seed);
    check_core_guided(random, static_cast<int>(seed % 2));
  });
}

}  // namespace
}  // namespace vorel::sat
