#include "reachlang/predicate_check.h"

#include <algorithm>
#include <cassert>
#include <vector>

#include "base/indexed_by.h"
#include "base/messages.h"
#include "configuration/decoding.h"
#include "reachlang/process_index.h"

namespace vorel::reachlang {
namespace {

template <net::Process P>
class FinalStateView {
 public:
  using Event = typename P::Event;
  using Condition = typename P::Condition;

  FinalStateView(const P& process, std::span<const Event* const> events, bool via_dummies)
      : process_{process},
        index_{process},
        via_dummies_{via_dummies},
        has_fired_(process.events.size()),
        is_marked_(process.conditions.size()) {
    for (const Event* event : events) has_fired_[*event] = true;
    for (const Condition* condition : configuration::final_cut<P>(process, events))
      is_marked_[*condition] = true;
  }

  bool value_of(ReachOp op, const ReachNodeRef& node) {
    if (op == ReachOp::state) return state_of(node);
    if (op == ReachOp::enabled) return is_enabled(node);
    return state_of(node) != is_enabled(node);
  }

 private:
  bool state_of(const ReachNodeRef& node) {
    switch (node.kind) {
      case BaseType::condition:
        return is_marked_.at(node.index);
      case BaseType::event:
        return has_fired_.at(node.index);
      case BaseType::place:
        return std::ranges::any_of(index_.conditions_of(node.index),
                                   [this](std::uint32_t i) { return is_marked_.at(i); });
      default:
        return signal_value(node.index);
    }
  }

  bool signal_value(std::uint32_t signal) {
    bool value = false;
    if constexpr (P::NetType::has_signals) {
      value = process_.signals[signal]->initial_value == 1;
      for (const auto& event : process_.events) {
        const bool is_edge = event->transition->signal->index == signal;
        if (is_edge && has_fired_[*event]) value = !value;
      }
    }
    return value;
  }

  bool is_enabled(const ReachNodeRef& node) {
    if (node.kind == BaseType::event) return can_fire(*process_.events[node.index]);
    if (node.kind == BaseType::transition) return is_transition_enabled(node.index);
    if constexpr (P::NetType::has_signals) {
      return std::ranges::any_of(index_.transitions_of(node.index),
                                 [this](std::uint32_t i) { return is_transition_enabled(i); });
    }
    return false;
  }

  bool is_transition_enabled(std::uint32_t transition) {
    if constexpr (P::is_merged) {
      return std::ranges::all_of(process_.transitions[transition]->preset,
                                 [this](const auto* place) {
                                   return state_of({BaseType::place, place->index});
                                 });
    }
    return std::ranges::any_of(index_.events_of(transition),
                               [this](std::uint32_t i) { return can_fire(*process_.events[i]); });
  }

  bool can_fire(const Event& event) const {
    if (via_dummies_) return can_fire_after_dummies(event);
    return std::ranges::all_of(event.preset,
                               [this](const auto* condition) { return is_marked_[*condition]; });
  }

  // What the event still waits for must be dummies, and all that they and it consume must be in the
  // cut or be produced by them. In a prefix nothing else is needed: causes of one event are never
  // in conflict.
  bool can_fire_after_dummies(const Event& target) const {
    if (has_fired_[target]) return false;
    base::MarkSet<Event> is_awaited(process_.events.size());
    std::vector<const Event*> awaited{&target};
    is_awaited.insert(target);
    for (std::size_t i = 0; i < awaited.size(); ++i) {
      for (const auto* condition : awaited[i]->preset) {
        if (is_marked_[*condition]) continue;
        const auto producers = condition->producers();
        const bool is_lost = producers.empty() || has_fired_[*producers.front()];
        if (is_lost || !is_dummy(*producers.front())) return false;
        if (is_awaited.insert(*producers.front())) awaited.push_back(producers.front());
      }
    }
    return true;
  }

  static bool is_dummy(const Event& event) {
    if constexpr (P::NetType::has_signals) return event.transition->signal->is_dummy();
    return false;
  }

  const P& process_;
  ProcessIndex<P> index_;
  const bool via_dummies_;
  base::IndexedBy<Event, bool> has_fired_;
  base::IndexedBy<Condition, bool> is_marked_;
};

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

}  // namespace

template <net::Process P>
bool holds_after(const NormalForm& property, const P& process,
                 std::span<const typename P::Event* const> events, bool via_dummies) {
  FinalStateView<P> state(process, events, via_dummies);
  const auto value_of_atom = [&state](ReachOp op, const ReachNodeRef& node) {
    return state.value_of(op, node);
  };
  return value_of(property.formula.expr(), property.root, value_of_atom);
}

template <net::Process P>
bool check_predicate(const NormalForm& property, const P& process,
                     std::span<const typename P::Event* const> events, bool via_dummies) {
  const bool holds = holds_after(property, process, events, via_dummies);
  if (!holds) base::print_error("predicate check failed");
  return holds;
}

#define INSTANTIATE(P)                                                                            \
  template bool holds_after<P>(const NormalForm&, const P&, std::span<const P::Event* const>,     \
                               bool);                                                             \
  template bool check_predicate<P>(const NormalForm&, const P&, std::span<const P::Event* const>, \
                                   bool);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
