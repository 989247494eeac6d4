#include "reachlang/predicate_encoding.h"

#include <cassert>
#include <iostream>
#include <string>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "reachlang/expansion.h"
#include "sat/integer_circuit.h"

namespace vorel::reachlang {
namespace {

// The literals of the atoms.
template <net::Process P>
class AtomEncoder {
 public:
  explicit AtomEncoder(configuration::StateLiterals<P>& state)
      : process_{state.vars().process()}, state_{state} {}

  sat::Lit literal_of(ReachOp op, const ReachNodeRef& node, sat::Polarity polarity) {
    if (op == ReachOp::state) return state_of(node, polarity);
    if (op == ReachOp::enabled) return enabledness_of(node, polarity);
    assert(op == ReachOp::next_state && node.kind == BaseType::signal);
    if constexpr (P::NetType::has_signals) return state_.next_value({node.index});
    return sat::LitUninit;
  }

 private:
  sat::Lit state_of(const ReachNodeRef& node, sat::Polarity polarity) {
    switch (node.kind) {
      case BaseType::condition:
        return state_.vars().marked_lit(*process_.conditions[node.index], polarity);
      case BaseType::event:
        return state_.vars().event_lit(*process_.events[node.index]);
      case BaseType::place:
        return state_.marked(*process_.places[node.index], polarity);
      default:
        assert(node.kind == BaseType::signal);
        if constexpr (P::NetType::has_signals) return state_.code({node.index});
        return sat::LitUninit;
    }
  }

  sat::Lit enabledness_of(const ReachNodeRef& node, sat::Polarity polarity) {
    if (node.kind == BaseType::event) return state_.enabled(*process_.events[node.index], polarity);
    if (node.kind == BaseType::transition) {
      return state_.enabled(*process_.transitions[node.index], polarity);
    }
    assert(node.kind == BaseType::signal);
    if constexpr (P::NetType::has_signals) return state_.excited({node.index}, polarity);
    return sat::LitUninit;
  }

  const P& process_;
  configuration::StateLiterals<P>& state_;
};

// A node gets its literal after its operands, and only the half of its definition that what uses it
// asks for; both passes are loops, so that no depth of nesting matters.
template <net::Process P>
class PredicateEncoder {
 public:
  PredicateEncoder(const ReachExpr& expr, configuration::StateLiterals<P>& state)
      : expr_{expr},
        formula_{state.vars().formula()},
        group_{state.vars().group()},
        atoms_{state},
        uses_(expr.size(), 0),
        literals_(expr.size()) {}

  // The literal is defined in the direction that makes it a constraint when asserted.
  sat::Lit run(ReachNodeId root) {
    uses_[root] = used_positively;
    for (ReachNodeId id = root + 1; id-- > 0;) hand_down(id);
    for (ReachNodeId id = 0; id <= root; ++id) {
      if (uses_[id] != 0) literals_[id] = lit_of(expr_.node(id), polarity_of(uses_[id]));
    }
    return literals_[root];
  }

 private:
  enum Use : std::uint8_t { used_positively = 1, used_negatively = 2, used_both_ways = 3 };

  static sat::Polarity polarity_of(std::uint8_t uses) {
    if (uses == used_both_ways) return 0;
    return uses == used_positively ? +1 : -1;
  }

  static std::uint8_t swapped(std::uint8_t uses) {
    return static_cast<std::uint8_t>((uses & used_positively) << 1 | (uses & used_negatively) >> 1);
  }

  // The operands are used as the node is, in the way of its operator.
  void hand_down(ReachNodeId id) {
    const std::uint8_t uses = uses_[id];
    if (uses == 0) return;
    const ReachNode& node = expr_.node(id);
    const auto operands = expr_.operands(node);
    switch (node.op) {
      case ReachOp::not_:
        uses_[operands[0]] |= swapped(uses);
        return;
      case ReachOp::and_:
      case ReachOp::or_:
        for (const ReachNodeId operand : operands) uses_[operand] |= uses;
        return;
      case ReachOp::choice:
        uses_[operands[0]] |= used_both_ways;
        uses_[operands[1]] |= uses;
        uses_[operands[2]] |= uses;
        return;
      case ReachOp::xor_:
      case ReachOp::threshold_list:
        for (const ReachNodeId operand : operands) uses_[operand] |= used_both_ways;
        return;
      default:
        return;  // the operand of an atom is no formula
    }
  }

  sat::Lit lit_of(const ReachNode& node, sat::Polarity polarity) {
    const auto operands = expr_.operands(node);
    switch (node.op) {
      case ReachOp::constant:
        // The number of a threshold has no literal.
        return node.type.is_boolean() ? sat::constant_lit(expr_.value(node).boolean())
                                      : sat::LitUninit;
      case ReachOp::not_:
        return ~literals_[operands[0]];
      case ReachOp::and_:
        return gate(sat::GateAnd, operands, polarity);
      case ReachOp::or_:
        return gate(sat::GateOr, operands, polarity);
      case ReachOp::xor_:
        return gate(sat::GateXor, operands, polarity);
      case ReachOp::choice: {
        // if a then c else b
        const sat::Lit inputs[] = {literals_[operands[0]], literals_[operands[2]],
                                   literals_[operands[1]]};
        return formula_.make_gate({sat::GateMux, inputs}, group_, polarity);
      }
      case ReachOp::threshold_list:
        return threshold(node, polarity);
      default:
        return atoms_.literal_of(node.op, expr_.value(expr_.operand(node, 0)).node(), polarity);
    }
  }

  sat::Lit gate(sat::GateType type, std::span<const ReachNodeId> operands, sat::Polarity polarity) {
    return formula_.make_gate({type, literals_of(operands)}, group_, polarity);
  }

  // At least k of them is more than k - 1.
  sat::Lit threshold(const ReachNode& node, sat::Polarity polarity) {
    const std::int64_t least = expr_.value(expr_.operand(node, 0)).number();
    assert(least >= 1 && "smaller ones are always true");
    return sat::IntegerCircuit(formula_).threshold(literals_of(expr_.operands(node).subspan(1)),
                                                   static_cast<std::uint64_t>(least - 1), group_,
                                                   polarity);
  }

  sat::Lits literals_of(std::span<const ReachNodeId> nodes) const {
    sat::Lits lits;
    lits.reserve(nodes.size());
    for (const ReachNodeId node : nodes) lits.push_back(literals_[node]);
    return lits;
  }

  const ReachExpr& expr_;
  sat::CnfFormula& formula_;
  const sat::ClauseGroup group_;
  AtomEncoder<P> atoms_;
  std::vector<std::uint8_t> uses_;  // by node
  sat::Lits literals_;              // by node
};

void show(std::string_view title, const ReachExpr& expr, const ReachNode& node) {
  if (base::verbosity() >= 3) std::cerr << title << to_string(expr, node) << std::flush;
}

}  // namespace

template <net::Process P>
std::optional<NormalForm> encode_predicate(const ReachExpr& property,
                                           configuration::StateLiterals<P>& state) {
  show("\n Predicate before normalisation: ", property, property.root());
  configuration::ConfigurationVars<P>& vars = state.vars();
  std::string fault;
  auto normal = normalise(property, vars.process(), fault);
  if (!normal) {
    base::print_error("failed to expand reachability expression:\n" + fault);
    return {};
  }
  const ReachExpr& expr = normal->formula.expr();
  show("\n Predicate after normalisation: ", expr, expr.node(normal->root));
  if (base::verbosity() >= 3) std::cerr << '\n';
  if (normal->formula.is_constant(normal->root)) {
    base::notes_stream() << "\n Trivial case\n";
    if (!normal->formula.is_true(normal->root)) vars.formula().add_clause({}, vars.group());
  } else {
    PredicateEncoder<P> encoder(expr, state);
    vars.formula().add_unit(encoder.run(normal->root), vars.group());
  }
  return normal;
}

#define INSTANTIATE(P)                                                     \
  template std::optional<NormalForm> encode_predicate<P>(const ReachExpr&, \
                                                         configuration::StateLiterals<P>&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
