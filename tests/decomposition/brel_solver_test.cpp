#include "decomposition/brel_solver.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "bdd/cover_bdd.h"
#include "decomposition/easy_cost.h"
#include "oracle/table_relation.h"
#include "support/caught_messages.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;
using oracle::SmallFunction;

double literal_sum(const std::vector<Bdd>& functions) {
  std::size_t sum = 0;
  for (const Bdd& f : functions) sum += literal_count(f);
  return static_cast<double>(sum);
}

// What is searched as a table has the same solutions as a diagram has.
void expect_same_with_diagrams(const BrelRelation& relation, BrelOptions options,
                               const BrelCallbacks& callbacks, const BrelResult& by_table) {
  options.most_table_variables = 0;
  const BrelResult result = BrelSolver(relation, options, callbacks).solve();
  EXPECT_EQ(result.explored, by_table.explored);
  EXPECT_EQ(result.found, by_table.found);
  ASSERT_EQ(result.solutions.size(), by_table.solutions.size());
  for (std::size_t i = 0; i < result.solutions.size(); ++i)
    EXPECT_EQ(result.solutions[i].functions, by_table.solutions[i].functions);
}

// Outputs are variables 0 and up, inputs those behind them.
struct Case {
  Case(oracle::Random& random, std::uint32_t inputs, std::uint32_t outputs)
      : table{random_relation(random, inputs, outputs)} {
    std::vector<Bdd> variables;
    for (std::uint32_t i = 0; i < outputs + inputs; ++i) variables.push_back(bdd::bdd_variable(i));
    whole.outputs.assign(variables.begin(), variables.begin() + outputs);
    whole.inputs.assign(variables.begin() + outputs, variables.end());
    whole.relation = oracle::bdd_of_values(variables, [&](std::uint32_t a) {
      return ((table.allowed[a >> outputs] >> (a & ((1u << outputs) - 1))) & 1u) != 0;
    });
  }

  // The cost of the best solution, after all have been checked.
  double solve(const BrelOptions& options) const {
    std::set<std::vector<SmallFunction>> handed_on;
    double least = 1e9;
    const auto check = [&](const std::vector<Bdd>& functions) {
      const auto values = oracle::values_of(functions, table.outputs, table.inputs);
      EXPECT_TRUE(table.contains(values));
      EXPECT_TRUE(handed_on.insert(values).second) << "the same twice";
      least = std::min(least, literal_sum(functions));
      return literal_sum(functions);
    };
    const BrelResult result = BrelSolver(whole, options, {literal_sum, check}).solve();
    const auto& stored = result.solutions;
    EXPECT_EQ(stored.size(), std::min<std::size_t>(handed_on.size(), options.stored_solutions));
    EXPECT_EQ(stored.empty(), !table.is_total());
    EXPECT_LE(result.explored, options.max_explored);
    EXPECT_TRUE(std::ranges::is_sorted(stored, {}, &BrelSolution::cost));
    for (const auto& [functions, cost] : stored) EXPECT_EQ(cost, literal_sum(functions));
    EXPECT_TRUE(stored.empty() || stored.front().cost == least);
    expect_same_with_diagrams(whole, options, {literal_sum, literal_sum}, result);
    return least;
  }

  oracle::TableRelation table;
  BrelRelation whole;
};

TEST(BrelSolver, EverySolutionIsInsideAndTheBestCostsLittleMoreThanTheLeast) {
  int small = 0, partial = 0, far = 0;
  double found = 0, least = 0;
  for (auto [seed, end] = support::seeds(200); seed != end; ++seed) {
    oracle::Random random(seed);
    const bool is_small = random.chance(70);
    const Case c(random, random.between(1, is_small ? 3 : 6), random.between(1, is_small ? 3 : 4));
    BrelOptions options;
    options.breadth_first = random.chance(60);
    options.store_all = random.chance(80);
    options.use_cache = random.chance(30);
    options.max_explored = is_small ? 1000 : random.between(1, 60);
    options.stored_solutions = random.between(1, 20);
    const double best = c.solve(options);
    ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
    if (!c.table.is_total()) ++partial;
    if (!is_small || !c.table.is_total()) continue;
    const double exact = oracle::least_cost(c.table, [&](SmallFunction f) {
      return literal_sum({oracle::bdd_of_function(f, c.whole.inputs)});
    });
    ASSERT_GE(best, exact) << "seed " << seed;
    ++small;
    if (best > 1.1 * exact) ++far;
    found += best;
    least += exact;
  }
  EXPECT_LE(found, 1.01 * least);
  EXPECT_LE(far, 1 + small / 100);
  EXPECT_GT(least, 0);
  EXPECT_GT(partial, 0);
}

TEST(BrelSolver, TablesOfManyWordsAreSearchedLikeDiagrams) {
  for (auto [seed, end] = support::seeds(5); seed != end; ++seed) {
    oracle::Random random(seed);
    const std::uint32_t outputs = random.between(2, 3);
    BrelRelation relation = Case(random, 6, outputs).whole;
    for (std::uint32_t i = 6, count = random.between(7, 8); i < count; ++i) {
      relation.inputs.push_back(bdd::bdd_variable(outputs + i));
      relation.relation =
          ite(relation.inputs.back(), relation.relation, Case(random, 6, outputs).whole.relation);
    }
    BrelOptions options;
    options.max_explored = 20;
    const BrelResult by_table = BrelSolver(relation, options, {easy_cost, easy_cost}).solve();
    expect_same_with_diagrams(relation, options, {easy_cost, easy_cost}, by_table);
    ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
  }
}

TEST(BrelSolver, TellsItsStepsAndTotals) {
  const Bdd y = bdd::bdd_variable(0), z = bdd::bdd_variable(1), x = bdd::bdd_variable(2);
  BrelOptions options;
  options.trace = options.verbose = true;
  const support::CaughtMessages messages;
  brel_solve(~(y ^ x) & (z ^ x), {x}, {y, z}, options, {literal_sum, literal_sum});
  const std::string functions = "\t output:0 -> v2\n\t output:1 -> v2'\n";
  const std::string no_seconds =
      std::regex_replace(messages.text(), std::regex("[0-9.]+ sec"), "? sec");
  EXPECT_EQ(no_seconds, "\nSolution cost 2.000000:\n" + functions +
                            "\nImcomp Solution cost 2.000000:\n" + functions +
                            " cached BRs: 0\nmaxdepth 0.000000 nsols: 1.000000 Final Time:? "
                            "sec\nUsed options:\n\tMaximum number of explored BR: 32\n\tNumber "
                            "of stored solutions: 5\n\tMaximum cpu time allowed: no limit\n"
                            "\tNumber of explored BR: 1 ms\nUsed CPU time: ? sec\n");
}

}  // namespace
}  // namespace vorel::decomposition
