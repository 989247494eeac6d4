#include "bdd/bdd_structure.h"

#include <algorithm>
#include <unordered_set>

#include "bdd/bdd_manager.h"
#include "bdd/cudd_interface.h"

namespace vorel::bdd {
namespace {

// The nodes in the order of a walk in depth. Not by a generator of CUDD, which sorts by address.
std::vector<DdNode*> walk(DdNode* root) {
  std::vector<DdNode*> nodes, stack = {Cudd_Regular(root)};
  std::unordered_set<DdNode*> seen;
  while (!stack.empty()) {
    DdNode* const node = stack.back();
    stack.pop_back();
    if (!seen.insert(node).second) continue;
    nodes.push_back(node);
    if (Cudd_IsConstant(node) != 0) continue;
    stack.push_back(Cudd_Regular(Cudd_E(node)));
    stack.push_back(Cudd_T(node));
  }
  return nodes;
}

}  // namespace

std::optional<std::vector<BddLiteral>> literals_of_cube(const Bdd& f) {
  assert(!f.is_null());
  DdNode* const no = Cudd_ReadLogicZero(BddManager::instance().cudd());
  if (f.node() == no) return std::nullopt;
  std::vector<BddLiteral> literals;
  DdNode* edge = f.node();
  while (Cudd_IsConstant(edge) == 0) {
    const int complement = Cudd_IsComplement(edge);
    DdNode* const then_edge = Cudd_NotCond(Cudd_T(edge), complement);
    DdNode* const else_edge = Cudd_NotCond(Cudd_E(edge), complement);
    if (then_edge != no && else_edge != no) return std::nullopt;
    const bool negated = then_edge == no;
    literals.push_back({static_cast<std::uint32_t>(Cudd_NodeReadIndex(edge)), negated});
    edge = negated ? else_edge : then_edge;
  }
  std::ranges::sort(literals);
  return literals;
}

bool is_literal(const Bdd& f) {
  assert(!f.is_null());
  return Cudd_IsConstant(f.node()) == 0 && Cudd_IsConstant(Cudd_T(f.node())) != 0 &&
         Cudd_IsConstant(Cudd_E(f.node())) != 0;
}

std::vector<Bdd> nodes_of(const Bdd& f) {
  assert(!f.is_null());
  std::vector<DdNode*> nodes = walk(f.node());
  const auto level = [](DdNode* node) {
    return Cudd_IsConstant(node) != 0
               ? BddManager::last_variable + 1
               : BddManager::instance().level(static_cast<std::uint32_t>(Cudd_NodeReadIndex(node)));
  };
  std::ranges::stable_sort(nodes, {}, level);
  std::vector<Bdd> handles;
  handles.reserve(nodes.size());
  for (DdNode* const node : nodes) handles.push_back(Bdd::from_result(node));
  return handles;
}

std::size_t node_count(const Bdd& f) {
  assert(!f.is_null());
  return static_cast<std::size_t>(Cudd_DagSize(f.node()));
}

}  // namespace vorel::bdd
