// reachlang/reach_expr.h - the typed tree of a property.
// Here:      nodes and operators, building and printing a tree.
// Not here:  its grammar (reachlang/parser.h) and types (reachlang/type_rules.h), its value
//            (reachlang/evaluator.h).
//
// A tree is one flat array of nodes, operands before what uses them. A node may be the operand of
// several others: a normalised property shares what is equal. What is parsed is never nested deeper
// than max_reach_depth, so that recursion over it is safe; what is made of it can be.
#pragma once

#include <cassert>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "reachlang/reach_type.h"
#include "reachlang/reach_value.h"
#include "reachlang/text_position.h"

namespace vorel::reachlang {

enum class ReachOp : std::uint8_t {
  constant,
  variable,
  // One operand.
  fail,
  state,
  enabled,
  next_state,
  condition,
  event,
  place,
  transition,
  signal,
  places,
  transitions,
  signals,
  number,
  name,
  string,
  length,
  downclose,
  triggers,
  is_init,
  is_cutoff,
  is_input,
  is_output,
  is_internal,
  is_dummy,
  is_local,
  is_plus,
  is_minus,
  not_,
  negative,
  pre,
  post,
  conditions_of,
  events_of,
  places_of,
  transitions_of,
  signals_of,
  cardinality,
  // Two operands or more, which stand for a run of the operator.
  implies,
  iff,
  and_,
  or_,
  xor_,
  plus,
  minus,
  times,
  divided,
  modulo,
  without,
  // Two operands.
  equal,
  not_equal,
  less,
  at_most,
  greater,
  at_least,
  in,
  // A text and its indices.
  substring,
  substring_from,
  substring_to,
  choice,          // condition, then, else
  set,             // the elements
  threshold_list,  // the threshold, then the operands
  // The domains, the condition if the node has one, the body.
  forall,
  exists,
  xorsum,
  gather,
  threshold,  // the threshold before the domain
  let,        // the definitions, the body
};
inline constexpr std::size_t reach_op_count = static_cast<std::size_t>(ReachOp::let) + 1;

// How a prefix, binary or binding operator is written; empty for those with a form of their own.
std::string_view spelling_of(ReachOp op);

// How tightly an operator holds its operands.
enum OperatorLevel : std::uint8_t {
  choice_level,
  iff_level,
  implies_level,
  or_level,
  xor_level,
  and_level,
  comparison_level,
  in_level,
  sum_level,
  product_level,
  prefix_level,
  postfix_level,
};
OperatorLevel level_of(ReachOp op);
// Of what stands beside an operator that does not group to this side.
constexpr OperatorLevel tighter(OperatorLevel level) {
  return static_cast<OperatorLevel>(level + 1);
}

// Sanitizers make the frames of functions many times larger.
#ifdef VOREL_SANITIZED
inline constexpr std::uint32_t max_reach_depth = 250;
#else
inline constexpr std::uint32_t max_reach_depth = 1000;
#endif

using ReachNodeId = std::uint32_t;  // position in the tree's array

struct ReachNode {
  ReachOp op = ReachOp::constant;
  bool is_dynamic = false;     // depends on the state
  bool has_condition = false;  // of a binding operator: s.t. is there
  ReachType type = {};
  std::uint32_t first_operand = 0;
  std::uint32_t operand_count = 0;
  // constant: position of its value; variable: the number of its binding in the environment;
  // state, enabled, next_state: how often the character is repeated.
  std::uint32_t detail = 0;
  std::uint32_t first_name = 0;  // variable: its name; binding operators: those they declare
  TextPosition position = {};    // of an operator with one operand, in the text
};

// Each <-> of a run is the complement of a ^.
inline bool inverts_parity(const ReachNode& run) {
  assert(run.op == ReachOp::iff);
  return run.operand_count % 2 == 0;
}

class ReachExpr {
 public:
  const ReachNode& node(ReachNodeId id) const { return nodes_[id]; }
  std::span<const ReachNodeId> operands(const ReachNode& node) const {
    return std::span(operands_).subspan(node.first_operand, node.operand_count);
  }
  const ReachNode& operand(const ReachNode& node, std::size_t i) const {
    return nodes_[operands(node)[i]];
  }
  // The last node that was added.
  const ReachNode& root() const {
    assert(!nodes_.empty());
    return nodes_.back();
  }
  const ReachValue& value(const ReachNode& node) const {
    assert(node.op == ReachOp::constant);
    return values_[node.detail];
  }
  // The variables that a binding operator declares; for i = 0 also the name of a variable.
  const std::string& name(const ReachNode& node, std::size_t i) const {
    return names_[node.first_name + i];
  }
  // How many there are.
  std::size_t declared_count(const ReachNode& node) const {
    const std::size_t others = (node.has_condition ? 2u : 1u) + (node.op == ReachOp::threshold);
    return node.operand_count - others;
  }

  // The operands are in the tree already.
  ReachNodeId add(ReachNode node, std::span<const ReachNodeId> operands);
  ReachNodeId add_constant(ReachValue value, ReachType type);
  // Returns its position, for ReachNode::first_name.
  std::uint32_t add_name(std::string_view name);

  std::size_t size() const { return nodes_.size(); }
  // The length of the longest path down from a node.
  std::uint32_t depth(ReachNodeId id) const { return depths_[id]; }

 private:
  std::vector<ReachNode> nodes_;
  std::vector<ReachNodeId> operands_;
  std::vector<ReachValue> values_;
  std::vector<std::string> names_;
  std::vector<std::uint32_t> depths_;  // by node
};

// The source form of a node. A text of more than a million characters, or one nested deeper than
// max_reach_depth, is cut short with "...".
std::string to_string(const ReachExpr& expr, const ReachNode& node);
// The source form of an operator applied to values.
std::string applied(ReachOp op, std::span<const ReachValue> operands);

}  // namespace vorel::reachlang
