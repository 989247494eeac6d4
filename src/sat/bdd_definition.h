// sat/bdd_definition.h - the literal of a function given as a BDD with complement edges.
// Here:      one multiplexer per node, for any BDD package that is wrapped as BddEdge asks.
// Not here:  building BDDs.
#pragma once

#include <cassert>
#include <concepts>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "sat/cnf_formula.h"

namespace vorel::sat {

// An edge of a BDD: the node it leads to and whether the function is complemented. The children
// are the node's own, whatever the complement of the edge. An uncomplemented constant is true.
template <class E>
concept BddEdge = std::copyable<E> && requires(const E& edge) {
  { edge.is_constant() } -> std::same_as<bool>;
  { edge.is_complement() } -> std::same_as<bool>;
  { edge.variable() } -> std::convertible_to<std::size_t>;
  { edge.then_child() } -> std::same_as<E>;
  { edge.else_child() } -> std::same_as<E>;
  { edge.node_id() } -> std::convertible_to<std::uintptr_t>;  // equal for edges to one node
};

template <BddEdge Edge>
class BddDefinition {
 public:
  BddDefinition(CnfFormula& formula, std::span<const Lit> variable_literals, ClauseGroup group)
      : formula_{formula}, variable_literals_{variable_literals}, group_{group} {}

  Lit define(const Edge& root) {
    std::vector<Edge> stack = {root};
    while (!stack.empty()) {
      const Edge edge = stack.back();
      if (is_defined(edge)) {
        stack.pop_back();
        continue;
      }
      const Edge then_child = edge.then_child(), else_child = edge.else_child();
      if (!is_defined(then_child))
        stack.push_back(then_child);
      else if (!is_defined(else_child))
        stack.push_back(else_child);
      else
        define_node(edge, then_child, else_child);
    }
    return literal_of(root);
  }

 private:
  bool is_defined(const Edge& edge) const {
    return edge.is_constant() || nodes_.contains(edge.node_id());
  }

  Lit literal_of(const Edge& edge) const {
    const Lit node = edge.is_constant() ? LitTrue : nodes_.at(edge.node_id());
    return node ^ edge.is_complement();
  }

  void define_node(const Edge& edge, const Edge& then_child, const Edge& else_child) {
    assert(edge.variable() < variable_literals_.size());
    const Lit variable = variable_literals_[edge.variable()];
    const Gate gate(GateMux, {variable, literal_of(else_child), literal_of(then_child)});
    nodes_.emplace(edge.node_id(), formula_.make_gate(gate, group_));
  }

  CnfFormula& formula_;
  std::span<const Lit> variable_literals_;
  ClauseGroup group_;
  std::unordered_map<std::uintptr_t, Lit> nodes_;
};

template <BddEdge Edge>
Lit define_bdd(CnfFormula& formula, const Edge& root, std::span<const Lit> variable_literals,
               ClauseGroup group) {
  return BddDefinition<Edge>(formula, variable_literals, group).define(root);
}

}  // namespace vorel::sat
