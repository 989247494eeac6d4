#include "bdd/bdd_structure.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "bdd/bdd_manager.h"
#include "oracle/truth_tables.h"
#include "sat/bdd_definition.h"
#include "support/seeds.h"

namespace vorel::bdd {
namespace {

using namespace oracle;

Bdd product_of(const std::vector<BddLiteral>& literals) {
  Bdd product(true);
  for (const BddLiteral literal : literals) {
    const Bdd variable = bdd_variable(literal.variable);
    product &= literal.negated ? ~variable : variable;
  }
  return product;
}

TEST(BddStructure, AProductYieldsItsLiteralsSorted) {
  support::for_each_seed(300, [&](std::uint64_t seed) {
    Random random(seed);
    std::vector<BddLiteral> literals;
    for (std::uint32_t v = 0; v < table_variables; ++v)
      if (random.chance(40)) literals.push_back({v, random.chance(50)});
    const Bdd product = product_of(literals);
    ASSERT_EQ(literals_of_cube(product), literals);
    if (literals.size() >= 2) {
      ASSERT_EQ(literals_of_cube(~product), std::nullopt);
    }

    const Bdd f = random_function(random).bdd;
    if (const auto found = literals_of_cube(f)) {
      ASSERT_EQ(product_of(*found), f);
    }
  });
  EXPECT_EQ(literals_of_cube(Bdd(true)), std::vector<BddLiteral>{});
  EXPECT_EQ(literals_of_cube(Bdd(false)), std::nullopt);
}

TEST(BddStructure, NodesStandInTheOrderOfVariablesAboveTheConstant) {
  const BddManager& manager = BddManager::instance();
  support::for_each_seed(100, [&](std::uint64_t seed) {
    Random random(seed);
    const Bdd f = random_function(random).bdd;
    const std::vector<Bdd> nodes = nodes_of(f);
    ASSERT_EQ(nodes.size(), node_count(f));
    ASSERT_TRUE(nodes.back().is_true());
    ASSERT_EQ(nodes.front().node_id(), f.node_id());
    for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
      ASSERT_FALSE(nodes[i].is_complement() || nodes[i].is_constant());
      if (i > 0) {
        ASSERT_LE(manager.level(nodes[i - 1].variable()), manager.level(nodes[i].variable()));
      }
      for (const Bdd& child : {nodes[i].then_child(), nodes[i].else_child()}) {
        const auto place = std::ranges::find(nodes, child.node_id(), &Bdd::node_id);
        ASSERT_GT(place - nodes.begin(), static_cast<std::ptrdiff_t>(i));
      }
    }
  });
}

TEST(BddStructure, ClausesOfADiagramFollowTheFunction) {
  static_assert(sat::BddEdge<Bdd>);
  support::for_each_seed(10, [&](std::uint64_t seed) {
    Random random(seed);
    sat::CnfFormula formula{sat::CnfParams{}};
    sat::Lits variables;
    for (std::uint32_t v = 0; v < table_variables; ++v)
      variables.push_back(sat::Lit(formula.new_var(false), v % 3 == 0));
    const Function f = random_function(random, 0x3D, 5);
    const sat::Lit output = sat::define_bdd(formula, f.bdd, variables, sat::PermanentGroup);
    ASSERT_LE(formula.solver().num_vars(), table_variables + node_count(f.bdd)) << "none twice";
    for (int sample = 0; sample < 40; ++sample) {
      const std::uint32_t a = random.below(table_size);
      sat::Lits units = {output ^ f.table[a]};  // the wrong value
      for (std::uint32_t v = 0; v < table_variables; ++v)
        units.push_back(variables[v] ^ (((a >> v) & 1u) == 0));
      for (const bool right : {false, true}) {
        if (right) units.front() = ~units.front();
        const sat::ClauseGroup question = formula.new_group();
        formula.add_units(units, false, question);
        ASSERT_EQ(formula.solve(), right);
        formula.remove_group(question);
      }
    }
  });
}

}  // namespace
}  // namespace vorel::bdd
