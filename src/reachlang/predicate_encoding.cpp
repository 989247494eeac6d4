#include "reachlang/predicate_encoding.h"

#include <cassert>
#include <iostream>
#include <string>
#include <vector>

#include "base/messages.h"
#include "base/run_state.h"
#include "configuration/configuration_encoding.h"
#include "reachlang/expansion.h"
#include "reachlang/process_index.h"
#include "sat/integer_circuit.h"

namespace vorel::reachlang {
namespace {

// The literals of the atoms. Each is asked for once for every polarity; the cells of conditions,
// events and transitions are shared by the atoms that speak of them.
template <net::Process P>
class AtomEncoder {
 public:
  AtomEncoder(const P& process, configuration::ConfigurationVars<P>& vars, bool via_dummies,
              sat::ClauseGroup group)
      : process_{process},
        index_{process},
        vars_{vars},
        via_dummies_{via_dummies},
        group_{group},
        enabled_events_(process.events.size()),
        is_visited_(process.events.size()) {}

  sat::Lit literal_of(ReachOp op, const ReachNodeRef& node, sat::Polarity polarity) {
    if (op == ReachOp::state) return state_of(node, polarity);
    if (op == ReachOp::enabled) return enabledness_of(node, polarity);
    assert(op == ReachOp::next_state && node.kind == BaseType::signal);
    const sat::Lit now = state_of(node, sat::default_polarity);
    const sat::Lit changes = enabledness_of(node, sat::default_polarity);
    return vars_.formula.make_gate({sat::GateXor, {now, changes}}, group_, polarity);
  }

 private:
  using Event = typename P::Event;

  sat::Lit state_of(const ReachNodeRef& node, sat::Polarity polarity) {
    switch (node.kind) {
      case BaseType::condition:
        return configuration::marked_lit(vars_, *process_.conditions[node.index], group_, polarity);
      case BaseType::event: {
        const Event& event = *process_.events[node.index];
        return event.is_cut_off() ? sat::LitFalse : configuration::event_lit(vars_, event);
      }
      case BaseType::place:
        return marked_place(node.index, polarity);
      default:
        assert(node.kind == BaseType::signal);
        return signal_value(node.index, polarity);
    }
  }

  sat::Lit marked_place(std::uint32_t place, sat::Polarity polarity) {
    sat::LitCell& cell = vars_.places[*process_.places[place]];
    if (cell.serves(polarity)) return cell.lit;
    sat::Lits marked;
    for (const std::uint32_t condition : index_.conditions_of(place)) {
      marked.push_back(
          configuration::marked_lit(vars_, *process_.conditions[condition], group_, polarity));
    }
    return vars_.formula.define_gate(cell, sat::GateOr, marked, group_, polarity);
  }

  // The initial value, changed by every edge that has happened.
  sat::Lit signal_value(std::uint32_t signal, sat::Polarity polarity) {
    if constexpr (P::NetType::has_signals) {
      sat::Lits edges;
      for (const std::uint32_t transition : index_.transitions_of(signal)) {
        for (const std::uint32_t event : index_.events_of(transition)) {
          const Event& edge = *process_.events[event];
          if (!edge.is_cut_off()) edges.push_back(configuration::event_lit(vars_, edge));
        }
      }
      const bool is_high = process_.signals[signal]->initial_value == 1;
      // The complement has the other half of the definition.
      const sat::Polarity inner = is_high ? -polarity : polarity;
      return vars_.formula.make_gate({sat::GateXor, edges}, group_, inner) ^ is_high;
    }
    return sat::LitUninit;
  }

  sat::Lit enabledness_of(const ReachNodeRef& node, sat::Polarity polarity) {
    if (node.kind == BaseType::event) return enabled_event(*process_.events[node.index], polarity);
    if (node.kind == BaseType::transition) return enabled_transition(node.index, polarity);
    sat::Lits enabled;
    if constexpr (P::NetType::has_signals) {
      for (const std::uint32_t transition : index_.transitions_of(node.index)) {
        enabled.push_back(enabled_transition(transition, polarity));
      }
    }
    return vars_.formula.make_gate({sat::GateOr, enabled}, group_, polarity);
  }

  sat::Lit enabled_transition(std::uint32_t transition, sat::Polarity polarity) {
    sat::LitCell& cell = vars_.transitions[*process_.transitions[transition]];
    if (cell.serves(polarity)) return cell.lit;
    if constexpr (P::is_merged) {
      // A configuration may go on behind a cut-off, where what is enabled has no event.
      sat::Lits marked;
      for (const auto* place : process_.transitions[transition]->preset) {
        marked.push_back(marked_place(place->index, polarity));
      }
      return vars_.formula.define_gate(cell, sat::GateAnd, marked, group_, polarity);
    }
    sat::Lits enabled;
    for (const std::uint32_t event : index_.events_of(transition)) {
      enabled.push_back(enabled_event(*process_.events[event], polarity));
    }
    return vars_.formula.define_gate(cell, sat::GateOr, enabled, group_, polarity);
  }

  sat::Lit enabled_event(const Event& event, sat::Polarity polarity) {
    sat::LitCell& cell = enabled_events_[event];
    if (cell.serves(polarity)) return cell.lit;
    sat::Lits needed;
    if (via_dummies_) {
      append_needs_before_dummies(event, needed);
    } else {
      for (const auto* condition : event.preset) {
        needed.push_back(configuration::marked_lit(vars_, *condition, group_, polarity));
      }
    }
    return vars_.formula.define_gate(cell, sat::GateAnd, needed, group_, polarity);
  }

  // Dummies alone lead to the event if the edges that they and the event wait for have happened,
  // while neither the event nor a rival for any condition on the way has. The dummies themselves
  // may have fired or not.
  void append_needs_before_dummies(const Event& target, sat::Lits& needed) {
    if constexpr (P::NetType::has_signals && !P::is_merged) {
      std::vector<const Event*> stack{&target}, visited{&target};
      is_visited_[target] = true;
      if (!target.is_cut_off()) needed.push_back(~configuration::event_lit(vars_, target));
      while (!stack.empty()) {
        const Event& event = *stack.back();
        stack.pop_back();
        for (const auto* condition : event.preset) {
          const Event* producer = condition->pre_event;
          if (producer != nullptr && !is_visited_[*producer]) {
            is_visited_[*producer] = true;
            visited.push_back(producer);
            if (producer->transition->signal->is_dummy()) {
              stack.push_back(producer);
            } else {
              needed.push_back(configuration::event_lit(vars_, *producer));
            }
          }
          for (const Event* rival : condition->postset) {
            const bool counts = rival != &event && !rival->is_cut_off();
            if (counts) needed.push_back(~configuration::event_lit(vars_, *rival));
          }
        }
      }
      for (const Event* event : visited) is_visited_[*event] = false;
    }
  }

  const P& process_;
  ProcessIndex<P> index_;
  configuration::ConfigurationVars<P>& vars_;
  const bool via_dummies_;
  const sat::ClauseGroup group_;
  base::IndexedBy<Event, sat::LitCell> enabled_events_;
  base::IndexedBy<Event, bool> is_visited_;  // scratch, all false between walks
};

// A node gets its literal after its operands, and only the half of its definition that what uses it
// asks for; both passes are loops, so that no depth of nesting matters.
template <net::Process P>
class PredicateEncoder {
 public:
  PredicateEncoder(const ReachExpr& expr, const P& process,
                   configuration::ConfigurationVars<P>& vars, bool via_dummies,
                   sat::ClauseGroup group)
      : expr_{expr},
        formula_{vars.formula},
        group_{group},
        atoms_{process, vars, via_dummies, group},
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
std::optional<NormalForm> encode_predicate(const ReachExpr& property, const P& process,
                                           configuration::ConfigurationVars<P>& vars,
                                           bool via_dummies, sat::ClauseGroup group) {
  show("\n Predicate before normalisation: ", property, property.root());
  std::string fault;
  auto normal = normalise(property, process, fault);
  if (!normal) {
    base::print_error("failed to expand reachability expression:\n" + fault);
    return {};
  }
  const ReachExpr& expr = normal->formula.expr();
  show("\n Predicate after normalisation: ", expr, expr.node(normal->root));
  if (base::verbosity() >= 3) std::cerr << '\n';
  if (normal->formula.is_constant(normal->root)) {
    std::cout << "\n Trivial case\n";
    if (!normal->formula.is_true(normal->root)) vars.formula.add_clause({}, group);
  } else {
    PredicateEncoder<P> encoder(expr, process, vars, via_dummies, group);
    vars.formula.add_unit(encoder.run(normal->root), group);
  }
  return normal;
}

#define INSTANTIATE(P)                                    \
  template std::optional<NormalForm> encode_predicate<P>( \
      const ReachExpr&, const P&, configuration::ConfigurationVars<P>&, bool, sat::ClauseGroup);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
