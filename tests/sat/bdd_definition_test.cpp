#include "sat/bdd_definition.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "sat/sat_testing.h"

namespace vorel {
namespace {

// A package of ordered BDDs with complement edges, built from truth tables of four variables.
struct TinyNode {
  std::size_t variable;
  int then_edge, else_edge;  // node number times 2, plus 1 if complemented; node 0 is true
};
constexpr std::size_t tiny_variables = 4;

struct TinyBdd {
  std::vector<TinyNode> nodes = {{tiny_variables, 0, 0}};
  std::map<std::tuple<std::size_t, int, int>, int> unique;

  // Bit i of the table is the value for the assignment i.
  int build(std::uint32_t table, std::size_t variable = 0) {
    if (table == 0xFFFF) return 0;
    if (table == 0) return 1;
    const std::uint32_t mask = masks[variable], distance = 1u << variable;
    const std::uint32_t high = table & mask, low = table & ~mask;
    const int then_edge = build(high | (high >> distance), variable + 1);
    const int else_edge = build(low | ((low << distance) & 0xFFFF), variable + 1);
    if (then_edge == else_edge) return then_edge;
    // The then edge of a node is never complemented: that makes the form canonical.
    const int complement = then_edge & 1;
    const auto key = std::tuple(variable, then_edge ^ complement, else_edge ^ complement);
    const auto [place, is_new] = unique.try_emplace(key, static_cast<int>(nodes.size()));
    if (is_new) nodes.push_back({variable, std::get<1>(key), std::get<2>(key)});
    return 2 * place->second + complement;
  }
  static constexpr std::uint32_t masks[] = {0xAAAA, 0xCCCC, 0xF0F0, 0xFF00};
};

struct TinyEdge {
  const TinyBdd* bdd;
  int edge;
  const TinyNode& node() const { return bdd->nodes[static_cast<std::size_t>(edge / 2)]; }
  bool is_constant() const { return edge / 2 == 0; }
  bool is_complement() const { return edge % 2 == 1; }
  std::size_t variable() const { return node().variable; }
  TinyEdge then_child() const { return {bdd, node().then_edge}; }
  TinyEdge else_child() const { return {bdd, node().else_edge}; }
  std::uintptr_t node_id() const { return static_cast<std::uintptr_t>(edge / 2); }
};

TEST(BddDefinition, LiteralFollowsTheFunction) {
  Random random(31);
  for (int round = 0; round < 100; ++round) {
    FormulaOf f(tiny_variables);
    TinyBdd bdd;
    const std::uint32_t table = round == 0 ? 0 : round == 1 ? 0xFFFF : random.below(0x10000);
    const TinyEdge root{&bdd, bdd.build(table)};
    const Lits variables = fixing(tiny_variables, 0x9);  // complements as well
    const Lit lit = define_bdd(f.formula, root, variables, PermanentGroup);
    for (Assignment a = 0; a < f.assignment_count(); ++a) {
      const std::uint32_t row = a ^ 0x6;
      const bool value = ((table >> row) & 1u) != 0;
      ASSERT_TRUE(f.possible(a, lit ^ !value)) << table;
      ASSERT_FALSE(f.possible(a, lit ^ value)) << table;
    }
  }
}

TEST(BddDefinition, SharedNodesAreDefinedOnce) {
  FormulaOf f(tiny_variables);
  TinyBdd bdd;
  const std::uint32_t parity = 0x6996;
  const TinyEdge root{&bdd, bdd.build(parity)};
  define_bdd(f.formula, root, fixing(tiny_variables, 0xF), PermanentGroup);
  EXPECT_EQ(bdd.nodes.size(), 5u);
  EXPECT_EQ(f.formula.solver().num_vars(), 7u);  // the lowest node is a variable itself
}

}  // namespace
}  // namespace vorel
