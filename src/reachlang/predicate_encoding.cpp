#include "reachlang/predicate_encoding.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <string>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "reachlang/exclusive_parts.h"
#include "reachlang/expansion.h"
#include "sat/integer_circuit.h"

namespace vorel::reachlang {
namespace {

// From so many parts on, a disjunction is searched part by part.
constexpr std::size_t long_disjunction = 64;
constexpr std::size_t most_levels = 4;  // of alternatives within alternatives

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

  // An atom that is true has one of these true, too; none if it is no disjunction.
  sat::Lits parts_of(ReachOp op, const ReachNodeRef& node) {
    if (op == ReachOp::state && node.kind == BaseType::place)
      return state_.marked_conditions(*process_.places[node.index], +1);
    if constexpr (!P::is_merged) {
      if (op == ReachOp::enabled && node.kind == BaseType::transition)
        return state_.enabled_events(*process_.transitions[node.index], +1);
    }
    return {};
  }
  std::size_t part_count(ReachOp op, const ReachNodeRef& node) const {
    if (op == ReachOp::state && node.kind == BaseType::place)
      return state_.instances().conditions_of(base::Id<Place>{node.index}).size();
    if (op == ReachOp::enabled && node.kind == BaseType::transition && !P::is_merged)
      return state_.instances().events_of(base::Id<Transition>{node.index}).size();
    return 0;
  }

 private:
  using Place = typename P::NetType::Place;
  using Transition = typename P::NetType::Transition;

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
        exclusive_{expr, state.vars().process(), state.enabledness()},
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

  // Of the root, after run(). Short disjunctions are left to the solver.
  std::vector<sat::Alternative> alternatives(ReachNodeId root) {
    std::vector<sat::Alternative> result;
    const ReachNodeId longest = longest_choice(root);
    if (choice_count(longest) >= long_disjunction) add_alternatives(longest, 0, result);
    return result;
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
      case ReachOp::threshold_list:  // a part that is true never makes it false
        for (const ReachNodeId operand : operands) uses_[operand] |= uses;
        return;
      case ReachOp::choice:
        uses_[operands[0]] |= used_both_ways;
        uses_[operands[1]] |= uses;
        uses_[operands[2]] |= uses;
        return;
      case ReachOp::xor_:
        for (const ReachNodeId operand : operands) uses_[operand] |= used_both_ways;
        return;
      default:
        return;  // the operand of an atom is no formula
    }
  }

  // The number of literals of which a node that is true has one; 0 if that is known of none.
  std::size_t choice_count(ReachNodeId id) const {
    const ReachNode& node = expr_.node(id);
    if (node.op == ReachOp::or_) return node.operand_count;
    return is_atom(node) ? atoms_.part_count(node.op, atom_node(node)) : 0;
  }

  // The node itself, or the part of a conjunction, that leaves most to choose from.
  ReachNodeId longest_choice(ReachNodeId id) const {
    const ReachNode& node = expr_.node(id);
    if (node.op != ReachOp::and_) return id;
    return *std::ranges::max_element(expr_.operands(node), {},
                                     [this](ReachNodeId part) { return choice_count(part); });
  }

  void add_alternatives(ReachNodeId id, std::size_t depth, std::vector<sat::Alternative>& result) {
    const ReachNode& node = expr_.node(id);
    if (is_atom(node)) {
      for (const sat::Lit lit : atoms_.parts_of(node.op, atom_node(node)))
        result.push_back({lit, {}});
      return;
    }
    for (const ReachNodeId operand : expr_.operands(node)) {
      result.push_back({literals_[operand], {}});
      const ReachNodeId inner = longest_choice(operand);
      const std::size_t count = choice_count(inner);
      if (count < 2 || count > room_below_ || depth >= most_levels) continue;
      room_below_ -= count;
      add_alternatives(inner, depth + 1, result.back().below);
    }
  }

  static bool is_atom(const ReachNode& node) {
    return node.op == ReachOp::state || node.op == ReachOp::enabled ||
           node.op == ReachOp::next_state;
  }

  const ReachNodeRef& atom_node(const ReachNode& atom) const {
    return expr_.value(expr_.operand(atom, 0)).node();
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
        return atoms_.literal_of(node.op, atom_node(node), polarity);
    }
  }

  sat::Lit gate(sat::GateType type, std::span<const ReachNodeId> operands, sat::Polarity polarity) {
    return formula_.make_gate({type, literals_of(operands)}, group_, polarity);
  }

  // At least k of them is more than k - 1. Of parts that exclude each other one at most counts.
  sat::Lit threshold(const ReachNode& node, sat::Polarity polarity) {
    const std::int64_t least = expr_.value(expr_.operand(node, 0)).number();
    assert(least >= 1 && "smaller ones are always true");
    sat::Lits counted;
    for (const auto& part : exclusive_.divide(expr_.operands(node).subspan(1)))
      counted.push_back(gate(sat::GateOr, part, polarity));
    return sat::IntegerCircuit(formula_).threshold(counted, static_cast<std::uint64_t>(least - 1),
                                                   group_, polarity);
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
  ExclusiveParts<P> exclusive_;
  std::vector<std::uint8_t> uses_;    // by node
  sat::Lits literals_;                // by node
  std::size_t room_below_ = 200'000;  // for alternatives that are parts of others
};

void show(std::string_view title, const ReachExpr& expr, const ReachNode& node) {
  if (base::verbosity() >= 3) std::cerr << title << to_string(expr, node) << std::flush;
}

}  // namespace

template <net::Process P>
std::optional<EncodedPredicate> encode_predicate(const ReachExpr& property,
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
  std::vector<sat::Alternative> alternatives;
  if (normal->formula.is_constant(normal->root)) {
    base::notes_stream() << "\n Trivial case\n";
    if (!normal->formula.is_true(normal->root)) vars.formula().add_clause({}, vars.group());
  } else {
    PredicateEncoder<P> encoder(expr, state);
    vars.formula().add_unit(encoder.run(normal->root), vars.group());
    alternatives = encoder.alternatives(normal->root);
  }
  return EncodedPredicate{std::move(*normal), std::move(alternatives)};
}

#define INSTANTIATE(P)                                                           \
  template std::optional<EncodedPredicate> encode_predicate<P>(const ReachExpr&, \
                                                               configuration::StateLiterals<P>&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
