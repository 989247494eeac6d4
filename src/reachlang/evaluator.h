// reachlang/evaluator.h - the value of constant expressions, and the environment of variables.
// Here:      arithmetic, texts, sets, comparisons, quantifiers and gather over constants.
// Not here:  operators that look at the process (reachlang/node_operators.h), expressions that
//            depend on the state (reachlang/expansion.h).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "reachlang/node_operators.h"
#include "reachlang/reach_expr.h"

namespace vorel::reachlang {

// What a variable stands for: a value, or, for one that depends on the state, a node of the normal
// form.
struct Binding {
  ReachValue value;  // of a node of the normal form: why there is none, or a fail without text
  ReachNodeId formula = 0;
};

// The bindings in the order of their numbers; the built-in sets are the first.
using Environment = std::vector<Binding>;

template <net::Process P>
class Evaluator {
 public:
  // Keeps references to both.
  Evaluator(const ReachExpr& expr, const P& process);

  // The value of a node that does not depend on the state; a fail if it has none.
  ReachValue evaluate(const ReachNode& node);
  ReachValue evaluate(ReachNodeId id) { return evaluate(expr_.node(id)); }

  // Calls `body` for each choice of elements for the variables of a binding operator for which its
  // condition holds, with these bound, until it returns false. The fail of a domain or of the
  // condition ends the walk and is returned.
  using Body = std::function<bool()>;
  std::optional<ReachValue> for_each_binding(const ReachNode& node, const Body& body);

  Environment& environment() { return environment_; }

 private:
  enum class Flow : std::uint8_t { on, stopped };

  Flow bind_from(const ReachNode& node, std::size_t variable, const Body& body,
                 std::optional<ReachValue>& fault);
  const ReachValue& value_of(std::uint32_t binding);
  ReachValue evaluate_prefix(const ReachNode& node);
  ReachValue evaluate_connective(const ReachNode& node);
  ReachValue evaluate_run(const ReachNode& node);
  ReachValue evaluate_join(const ReachNode& node, ReachValue first);
  ReachValue evaluate_pair(const ReachNode& node);
  ReachValue evaluate_substring(const ReachNode& node);
  ReachValue evaluate_set(const ReachNode& node);
  ReachValue evaluate_threshold_list(const ReachNode& node);
  ReachValue evaluate_quantifier(const ReachNode& node);
  ReachValue evaluate_gather(const ReachNode& node);
  ReachValue evaluate_let(const ReachNode& node);

  const ReachExpr& expr_;
  NodeOperators<P> operators_;
  Environment environment_;
};

}  // namespace vorel::reachlang
