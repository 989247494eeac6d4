// reachlang/formula_builder.h - the normal form of a property: connectives over atoms.
// Here:      building it with constants folded and equal parts shared.
// Not here:  what it is built from (reachlang/expansion.h), its clauses
//            (reachlang/predicate_encoding.h).
//
// The result is an expression of constants, the atoms $, @ and ' of one node, and the operators ~,
// &, |, ^, ?: and threshold over lists. It is a graph: equal parts are one node, and all that is
// below a node has lower numbers.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "reachlang/reach_expr.h"

namespace vorel::reachlang {

class FormulaBuilder {
 public:
  FormulaBuilder();

  ReachNodeId constant(bool value) const { return value ? true_node : false_node; }
  bool is_constant(ReachNodeId node) const { return node <= true_node; }
  bool is_true(ReachNodeId node) const { return node == true_node; }
  bool is_false(ReachNodeId node) const { return node == false_node; }

  // `op` is state, enabled or next_state.
  ReachNodeId atom(ReachOp op, const ReachNodeRef& node);
  ReachNodeId negation(ReachNodeId operand);
  ReachNodeId parity(std::vector<ReachNodeId> operands);
  ReachNodeId choice(ReachNodeId chooser, ReachNodeId then, ReachNodeId otherwise);
  // True when at least `least` of the operands are.
  ReachNodeId at_least(std::int64_t least, std::vector<ReachNodeId> operands);

  const ReachExpr& expr() const { return expr_; }

  // A conjunction or disjunction whose operands come one by one.
  class Junction {
   public:
    // `op` is and_ or or_.
    Junction(FormulaBuilder& builder, ReachOp op)
        : builder_{builder}, op_{op}, stamp_{++builder.stamp_} {}
    // False when the value is known whatever else comes. Repeated operands are kept once, so that
    // no more memory is used than there are different ones.
    bool add(ReachNodeId operand);
    ReachNodeId result();

   private:
    FormulaBuilder& builder_;
    ReachOp op_;
    std::uint32_t stamp_;
    bool is_decided_ = false;
    std::vector<ReachNodeId> operands_;
  };

 private:
  static constexpr ReachNodeId false_node = 0, true_node = 1;

  // The node of the operator over these operands, an old one if there is one.
  ReachNodeId shared(ReachOp op, std::span<const ReachNodeId> operands);
  ReachNodeId number(std::int64_t value);

  ReachExpr expr_;
  std::unordered_map<std::uint64_t, ReachNodeId> atoms_;
  std::unordered_map<std::int64_t, ReachNodeId> numbers_;
  std::unordered_multimap<std::uint64_t, ReachNodeId> nodes_;  // by the hash of the operands
  std::vector<std::uint32_t> seen_;  // by node, the stamp of the last junction that held it
  std::uint32_t stamp_ = 0;
};

}  // namespace vorel::reachlang
