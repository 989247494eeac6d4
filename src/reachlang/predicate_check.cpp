#include "reachlang/predicate_check.h"

#include <algorithm>
#include <cassert>
#include <vector>

#include "base/messages.h"

namespace vorel::reachlang {
namespace {

template <net::Process P>
bool state_of(const ReachNodeRef& node, const configuration::FinalState<P>& state) {
  switch (node.kind) {
    case BaseType::condition:
      return state.is_marked(*state.process().conditions[node.index]);
    case BaseType::event:
      return state.has_fired(*state.process().events[node.index]);
    case BaseType::place:
      return state.is_marked(*state.process().places[node.index]);
    default:
      if constexpr (P::NetType::has_signals) return state.value({node.index});
      return false;
  }
}

template <net::Process P>
bool is_enabled(const ReachNodeRef& node, const configuration::FinalState<P>& state) {
  if (node.kind == BaseType::event) return state.is_enabled(*state.process().events[node.index]);
  if (node.kind == BaseType::transition) {
    return state.is_enabled(*state.process().transitions[node.index]);
  }
  if constexpr (P::NetType::has_signals) return state.is_excited({node.index});
  return false;
}

// The values of the nodes up to the root, operands first.
template <class ValueOfAtom>
bool value_of(const ReachExpr& expr, ReachNodeId root, ValueOfAtom value_of_atom) {
  std::vector<bool> values(root + std::size_t{1});
  const auto is_true = [&values](ReachNodeId node) { return values[node]; };
  for (ReachNodeId id = 0; id <= root; ++id) {
    const ReachNode& node = expr.node(id);
    const auto operands = expr.operands(node);
    switch (node.op) {
      case ReachOp::constant:
        values[id] = node.type.is_boolean() && expr.value(node).boolean();
        break;
      case ReachOp::not_:
        values[id] = !values[operands[0]];
        break;
      case ReachOp::and_:
        values[id] = std::ranges::all_of(operands, is_true);
        break;
      case ReachOp::or_:
        values[id] = std::ranges::any_of(operands, is_true);
        break;
      case ReachOp::xor_:
        values[id] = std::ranges::count_if(operands, is_true) % 2 != 0;
        break;
      case ReachOp::choice:
        values[id] = values[operands[values[operands[0]] ? 1 : 2]];
        break;
      case ReachOp::threshold_list:
        values[id] = std::ranges::count_if(operands.subspan(1), is_true) >=
                     expr.value(expr.operand(node, 0)).number();
        break;
      default:
        values[id] = value_of_atom(node.op, expr.value(expr.operand(node, 0)).node());
    }
  }
  return values[root];
}

template <net::Process P>
bool holds_in(const FormulaBuilder& formula, ReachNodeId root,
              const configuration::FinalState<P>& state) {
  const auto value_of_atom = [&state](ReachOp op, const ReachNodeRef& node) {
    if (op == ReachOp::state) return state_of(node, state);
    if (op == ReachOp::enabled) return is_enabled(node, state);
    return state_of(node, state) != is_enabled(node, state);
  };
  return value_of(formula.expr(), root, value_of_atom);
}

}  // namespace

template <net::Process P>
bool holds_in(const NormalForm& property, const configuration::FinalState<P>& state) {
  return holds_in(property.formula, property.root, state);
}

template <net::Process P>
std::vector<BoundVariable> chosen_elements(const ReachExpr& property,
                                           const configuration::FinalState<P>& state) {
  return choose_elements<P>(property, state.process(),
                            [&state](const FormulaBuilder& formula, ReachNodeId root) {
                              return holds_in(formula, root, state);
                            });
}

template <net::Process P>
bool check_predicate(const NormalForm& property, const configuration::FinalState<P>& state) {
  const bool holds = holds_in(property, state);
  if (!holds) base::print_error("predicate check failed");
  return holds;
}

#define INSTANTIATE(P)                                                                         \
  template bool holds_in<P>(const NormalForm&, const configuration::FinalState<P>&);           \
  template std::vector<BoundVariable> chosen_elements<P>(const ReachExpr&,                     \
                                                         const configuration::FinalState<P>&); \
  template bool check_predicate<P>(const NormalForm&, const configuration::FinalState<P>&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
