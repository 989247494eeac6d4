#include "decomposition/brel_solver.h"

#include <gtest/gtest.h>

#include <set>

#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"
#include "oracle/table_relation.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;
using oracle::SmallFunction, oracle::TableRelation;

// Outputs are variables 0 and up, inputs those behind them.
struct Case {
  explicit Case(TableRelation values) : table{std::move(values)} {
    for (std::uint32_t i = 0; i < table.outputs; ++i) outputs.push_back(bdd::bdd_variable(i));
    for (std::uint32_t i = 0; i < table.inputs; ++i)
      inputs.push_back(bdd::bdd_variable(table.outputs + i));
  }

  SmallFunction values_of(const Bdd& f) const {
    return oracle::values_of(f, table.outputs, table.inputs);
  }
  bool contains(const std::vector<Bdd>& functions) const {
    std::vector<SmallFunction> values;
    for (const Bdd& f : functions) values.push_back(values_of(f));
    return functions.size() == outputs.size() && oracle::is_inside(values, table);
  }
  BrelResult solve(const BrelOptions& options, const BrelCallbacks& callbacks) const {
    return brel_solve(bdd_of_relation(table, inputs, outputs), inputs, outputs, options, callbacks);
  }

  TableRelation table;
  std::vector<Bdd> inputs, outputs;
};

double node_sum(const std::vector<Bdd>& functions) {
  double sum = 0;
  for (const Bdd& f : functions) sum += static_cast<double>(bdd::node_count(f));
  return sum;
}

BrelOptions random_options(oracle::Random& random) {
  BrelOptions options;
  options.breadth_first = random.chance(70);
  options.store_all = random.chance(70);
  options.use_cache = random.chance(30);
  options.max_explored = random.between(1, 60);
  options.stored_solutions = random.between(1, 20);
  return options;
}

TEST(BrelSolver, EverySolutionIsInsideTheRelation) {
  int solved = 0;
  for (auto [seed, end] = support::seeds(150); seed != end; ++seed) {
    oracle::Random random(seed);
    const Case c(random_relation(random, random.between(1, 6), random.between(1, 4)));
    const BrelOptions options = random_options(random);
    std::set<std::vector<SmallFunction>> handed_on;
    double least = 1e9;
    const auto check = [&](const std::vector<Bdd>& functions) {
      std::vector<SmallFunction> values;
      for (const Bdd& f : functions) values.push_back(c.values_of(f));
      EXPECT_TRUE(is_inside(values, c.table)) << seed;
      EXPECT_TRUE(handed_on.insert(values).second) << "once each, seed " << seed;
      least = std::min(least, node_sum(functions));
      return node_sum(functions);
    };
    const BrelResult result = c.solve(options, {node_sum, check});
    ASSERT_EQ(result.solutions.empty(), !c.table.is_total()) << seed;
    ASSERT_EQ(result.found, handed_on.size());
    ASSERT_EQ(result.solutions.size(),
              std::min<std::size_t>(result.found, options.stored_solutions));
    ASSERT_LE(result.explored, options.max_explored);
    ASSERT_TRUE(std::ranges::is_sorted(result.solutions, {}, &BrelSolution::cost));
    for (const BrelSolution& solution : result.solutions) {
      ASSERT_TRUE(c.contains(solution.functions)) << seed;
      ASSERT_EQ(solution.cost, node_sum(solution.functions));
    }
    if (result.solutions.empty()) continue;
    ASSERT_EQ(result.solutions.front().cost, least) << seed;
    ++solved;
  }
  EXPECT_GT(solved, 0);
}

TEST(BrelSolver, TheBestSolutionCostsLittleMoreThanTheLeast) {
  for (const bool breadth_first : {true, false}) {
    int count = 0, far = 0;
    double found = 0, least = 0;
    for (auto [seed, end] = support::seeds(120); seed != end; ++seed) {
      oracle::Random random(seed);
      const Case c(random_relation(random, random.between(2, 3), random.between(1, 3)));
      if (!c.table.is_total()) continue;
      std::vector<double> cost;
      for (SmallFunction f = 0; f < SmallFunction{1} << (1u << c.table.inputs); ++f)
        cost.push_back(
            static_cast<double>(bdd::literal_count(oracle::bdd_of_function(f, c.inputs))));
      const auto sum = [&](const std::vector<Bdd>& functions) {
        double literals = 0;
        for (const Bdd& f : functions) literals += cost[c.values_of(f)];
        return literals;
      };
      BrelOptions options;
      options.breadth_first = breadth_first;
      options.max_explored = 1000;
      const double best = c.solve(options, {sum, sum}).solutions.front().cost;
      const double exact = oracle::LeastCost(c.table, cost).value();
      ASSERT_GE(best, exact) << seed;
      ++count;
      if (best > 1.1 * exact) ++far;
      found += best;
      least += exact;
    }
    // Sums are irredundant, which a few times is not the least.
    EXPECT_LE(found, 1.1 * least);
    EXPECT_LE(far, count / 20 + 1);
    EXPECT_GT(count, 0);
  }
}

}  // namespace
}  // namespace vorel::decomposition
