// reachlang/node_operators.h - the operators that look at the process.
// Here:      nodes by number, name or pattern; neighbours, instances and attributes of nodes.
// Not here:  arithmetic, sets, binding operators (reachlang/evaluator.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reachlang/builtin_sets.h"
#include "reachlang/process_index.h"
#include "reachlang/reach_expr.h"

namespace vorel::reachlang {

template <net::Process P>
class NodeOperators {
 public:
  explicit NodeOperators(const P& process) : process_{process}, index_{process} {}

  // For the operators with one operand, but fail, string, len, card, unary minus, negation and the
  // atoms. The operand has the right type. A fail if there is no result; `position` is where the
  // operator stands.
  ReachValue apply(ReachOp op, const ReachValue& operand, const TextPosition& position);

  // On a net without signals, the sets of signals are fails that say so.
  ReachValue builtin_set(BuiltinSet set);

  // The node, with its name.
  ReachNodeRef node(BaseType kind, std::uint32_t index) const;

 private:
  using Indices = std::vector<std::uint32_t>;
  static constexpr bool has_signals = P::NetType::has_signals;

  ReachValue node_at(ReachOp op, const ReachValue& operand, const TextPosition& position);
  bool find(BaseType kind, const std::string& name, std::uint32_t& index);
  bool find_transition(const std::string& name, std::uint32_t& index);
  ReachValue matching(ReachOp op, const ReachValue& operand);
  bool matches(BaseType kind, std::uint32_t index, const class NamePattern& pattern) const;
  ReachValue related(ReachOp op, const ReachValue& operand);
  void append_related(ReachOp op, const ReachNodeRef& node, Indices& result);
  void append_neighbours(ReachOp op, const ReachNodeRef& node, Indices& result) const;
  void append_instances(const ReachNodeRef& node, Indices& result);
  ReachValue causes(const ReachValue& operand);
  ReachValue past_of(const ReachValue& operand);
  ReachValue is_initial(const ReachValue& operand) const;
  ReachValue attribute(ReachOp op, const ReachValue& operand) const;

  std::uint32_t count(BaseType kind) const;
  ReachValue set_of(BaseType kind, Indices indices) const;
  ReachValue set_of_range(BaseType kind, std::uint32_t first, std::uint32_t last) const;

  const P& process_;
  ProcessIndex<P> index_;
};

}  // namespace vorel::reachlang
