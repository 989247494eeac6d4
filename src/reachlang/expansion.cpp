// One pass over the part of the tree that depends on the state, operands first; what does not is
// handed to the evaluator. Quantifiers are unrolled: their variables are bound to one element after
// the other, and the body is expanded under each binding. The builder folds constants as they come,
// which ends a quantifier early and lets a constant condition discard a branch before it is looked
// at. It also makes equal parts one node, whether written by definitions of let or by repetition.
#include "reachlang/expansion.h"

#include <cassert>
#include <vector>

#include "reachlang/evaluator.h"

namespace vorel::reachlang {
namespace {

template <net::Process P>
class Expansion {
 public:
  Expansion(const ReachExpr& expr, const P& process, FormulaBuilder& builder)
      : expr_{expr}, process_{process}, builder_{builder}, evaluator_{expr, process} {}

  using MaybeNode = std::optional<ReachNodeId>;  // empty: fail() says why

  MaybeNode expand(const ReachNode& node) {
    if (!node.is_dynamic) return constant(evaluator_.evaluate(node));
    switch (node.op) {
      case ReachOp::variable:
        return variable(node);
      case ReachOp::state:
      case ReachOp::enabled:
      case ReachOp::next_state:
        return atom(node);
      case ReachOp::not_:
        return negation(node);
      case ReachOp::and_:
      case ReachOp::or_:
        return junction(node);
      case ReachOp::implies:
        return implication(node);
      case ReachOp::iff:
      case ReachOp::xor_:
        return parity(node);
      case ReachOp::choice:
        return choice(node);
      case ReachOp::threshold_list:
        return threshold_list(node);
      case ReachOp::forall:
      case ReachOp::exists:
        return quantified_junction(node);
      case ReachOp::xorsum:
      case ReachOp::threshold:
        return quantified_count(node);
      default:
        assert(node.op == ReachOp::let && "only these can depend on the state");
        return let(node);
    }
  }

  const ReachFail& fail() const { return fail_; }

  void choose_elements(const ReachNode& node, const FormulaHolds& holds,
                       std::vector<BoundVariable>& chosen) {
    if (!node.is_dynamic) return;
    if (node.op == ReachOp::and_)
      for (const ReachNodeId part : expr_.operands(node))
        choose_elements(expr_.node(part), holds, chosen);
    if (node.op != ReachOp::let && node.op != ReachOp::exists) return;
    const ReachNode& inner = expr_.operand(node, node.operand_count - 1u);
    if (node.op == ReachOp::let) {
      with_definitions(node, [&] {
        choose_elements(inner, holds, chosen);
        return MaybeNode();
      });
      return;
    }
    evaluator_.for_each_binding(node, [&] {
      const MaybeNode next = expand(inner);
      if (!next || !holds(builder_, *next)) return next.has_value();
      const Environment& environment = evaluator_.environment();
      const std::size_t count = expr_.declared_count(node);
      for (std::size_t i = 0; i < count; ++i)
        chosen.push_back({expr_.name(node, i), environment[environment.size() - count + i].value});
      choose_elements(inner, holds, chosen);
      return false;
    });
  }

 private:
  MaybeNode constant(const ReachValue& value) {
    if (value.is_fail()) return refuse(value.fail());
    return builder_.constant(value.boolean());
  }

  MaybeNode refuse(const ReachFail& fail) {
    fail_ = fail;
    return {};
  }

  MaybeNode refuse(std::string message) {
    return refuse(ReachFail{std::make_shared<const std::string>(std::move(message))});
  }

  // An operand of something that depends on the state: no place for the operator fail.
  MaybeNode operand(const ReachNode& node, std::size_t i) {
    const MaybeNode result = expand(expr_.operand(node, i));
    if (!result && fail_.is_written) {
      return refuse("Non-static fail: fail " + quoted(*fail_.message));
    }
    return result;
  }

  MaybeNode body(const ReachNode& node) { return operand(node, node.operand_count - 1u); }

  MaybeNode atom(const ReachNode& node) {
    const ReachValue target = evaluator_.evaluate(expr_.operand(node, 0));
    if (target.is_fail()) return refuse(target.fail());
    if (node.detail > 1) {
      return refuse("There is only one configuration: " + to_string(expr_, node));
    }
    if constexpr (P::NetType::has_signals) {
      const ReachNodeRef& signal = target.node();
      if (signal.kind == BaseType::signal && process_.signals[signal.index]->is_dummy()) {
        return refuse_dummy(node.op, *signal.name);
      }
    }
    return builder_.atom(node.op, target.node());
  }

  MaybeNode refuse_dummy(ReachOp op, const std::string& signal) {
    if (op == ReachOp::state) {
      return refuse("Cannot refer to the state of a dummy signal in $\"" + signal + '"');
    }
    if (op == ReachOp::enabled) {
      return refuse("Cannot refer to the enabledness status of a dummy signal in @\"" + signal +
                    '"');
    }
    return refuse("Cannot compute the next-state function for a dummy signal in \"" + signal +
                  "\"'");
  }

  MaybeNode variable(const ReachNode& node) {
    const Binding& binding = evaluator_.environment()[node.detail];
    if (binding.value.fail().message != nullptr) return refuse(binding.value.fail());
    return binding.formula;
  }

  MaybeNode negation(const ReachNode& node) {
    const MaybeNode inner = operand(node, 0);
    if (!inner) return {};
    return builder_.negation(*inner);
  }

  // From left to right, and no further than the value needs.
  MaybeNode junction(const ReachNode& node) {
    FormulaBuilder::Junction result(builder_, node.op);
    for (std::size_t i = 0; i < node.operand_count; ++i) {
      const MaybeNode next = operand(node, i);
      if (!next) return {};
      if (!result.add(*next)) break;
    }
    return result.result();
  }

  // a -> b -> c is ~a | ~b | c.
  MaybeNode implication(const ReachNode& node) {
    FormulaBuilder::Junction result(builder_, ReachOp::or_);
    for (std::size_t i = 0; i < node.operand_count; ++i) {
      const MaybeNode next = operand(node, i);
      if (!next) return {};
      const bool is_condition = i + 1 < node.operand_count;
      if (!result.add(is_condition ? builder_.negation(*next) : *next)) break;
    }
    return result.result();
  }

  // Operands from the given one on.
  bool append_operands(const ReachNode& node, std::size_t first, std::vector<ReachNodeId>& result) {
    for (std::size_t i = first; i < node.operand_count; ++i) {
      const MaybeNode next = operand(node, i);
      if (!next) return false;
      result.push_back(*next);
    }
    return true;
  }

  MaybeNode parity(const ReachNode& node) {
    std::vector<ReachNodeId> operands;
    if (!append_operands(node, 0, operands)) return {};
    const ReachNodeId result = builder_.parity(std::move(operands));
    return node.op == ReachOp::iff && inverts_parity(node) ? builder_.negation(result) : result;
  }

  // A constant condition discards a branch before it is looked at.
  MaybeNode choice(const ReachNode& node) {
    const MaybeNode chooser = operand(node, 0);
    if (!chooser) return {};
    if (builder_.is_constant(*chooser)) {
      return expand(expr_.operand(node, builder_.is_true(*chooser) ? 1 : 2));
    }
    const MaybeNode then = operand(node, 1);
    if (!then) return {};
    const MaybeNode otherwise = operand(node, 2);
    if (!otherwise) return {};
    return builder_.choice(*chooser, *then, *otherwise);
  }

  MaybeNode threshold_list(const ReachNode& node) {
    const ReachValue least = evaluator_.evaluate(expr_.operand(node, 0));
    if (least.is_fail()) return refuse(least.fail());
    std::vector<ReachNodeId> operands;
    if (!append_operands(node, 1, operands)) return {};
    return builder_.at_least(least.number(), std::move(operands));
  }

  MaybeNode quantified_junction(const ReachNode& node) {
    const ReachOp op = node.op == ReachOp::forall ? ReachOp::and_ : ReachOp::or_;
    FormulaBuilder::Junction result(builder_, op);
    MaybeNode next = builder_.constant(true);
    const auto fault = evaluator_.for_each_binding(node, [&] {
      next = body(node);
      return next && result.add(*next);
    });
    if (fault) return refuse(fault->fail());
    if (!next) return {};
    return result.result();
  }

  MaybeNode quantified_count(const ReachNode& node) {
    const bool is_threshold = node.op == ReachOp::threshold;
    ReachValue least(std::int64_t{1});
    if (is_threshold) least = evaluator_.evaluate(expr_.operand(node, 0));
    if (least.is_fail()) return refuse(least.fail());
    std::vector<ReachNodeId> operands;
    MaybeNode next = builder_.constant(true);
    const auto fault = evaluator_.for_each_binding(node, [&] {
      next = body(node);
      // A constant that changes nothing is not kept.
      if (next && !builder_.is_false(*next)) operands.push_back(*next);
      return next.has_value();
    });
    if (fault) return refuse(fault->fail());
    if (!next) return {};
    return is_threshold ? builder_.at_least(least.number(), std::move(operands))
                        : builder_.parity(std::move(operands));
  }

  // A definition that depends on the state is expanded once, and shared by all that name it. What
  // keeps it from having a formula is told where it is named: expanding it only there would nest as
  // deeply as definitions speak of each other.
  MaybeNode let(const ReachNode& node) {
    return with_definitions(node,
                            [&] { return expand(expr_.operand(node, node.operand_count - 1u)); });
  }

  // What `body` gives where the definitions have a value.
  template <class Body>
  MaybeNode with_definitions(const ReachNode& node, Body body) {
    Environment& environment = evaluator_.environment();
    const std::size_t outer = environment.size();
    MaybeNode result = builder_.constant(true);
    for (std::size_t i = 0; i + 1 < node.operand_count && result; ++i) {
      const ReachNode& definition = expr_.operand(node, i);
      Binding binding;
      if (definition.is_dynamic) {
        const MaybeNode formula = expand(definition);
        if (formula) {
          binding.formula = *formula;
        } else {
          binding.value = ReachValue(fail_);
        }
      } else {
        binding.value = evaluator_.evaluate(definition);
        if (binding.value.is_fail()) result = refuse(binding.value.fail());
      }
      environment.push_back(std::move(binding));
    }
    if (result) result = body();
    environment.resize(outer);
    return result;
  }

  const ReachExpr& expr_;
  const P& process_;
  FormulaBuilder& builder_;
  Evaluator<P> evaluator_;
  ReachFail fail_;
};

}  // namespace

template <net::Process P>
std::optional<NormalForm> normalise(const ReachExpr& property, const P& process,
                                    std::string& fault) {
  NormalForm result;
  Expansion<P> expansion(property, process, result.formula);
  const auto root = expansion.expand(property.root());
  if (!root) {
    fault = *expansion.fail().message;
    return {};
  }
  result.root = *root;
  return result;
}

template <net::Process P>
std::vector<BoundVariable> choose_elements(const ReachExpr& property, const P& process,
                                           const FormulaHolds& holds) {
  FormulaBuilder builder;
  std::vector<BoundVariable> chosen;
  Expansion<P>(property, process, builder).choose_elements(property.root(), holds, chosen);
  return chosen;
}

#define INSTANTIATE(P)                                                                       \
  template std::optional<NormalForm> normalise<P>(const ReachExpr&, const P&, std::string&); \
  template std::vector<BoundVariable> choose_elements<P>(const ReachExpr&, const P&,         \
                                                         const FormulaHolds&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
