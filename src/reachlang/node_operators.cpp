// Every operator is a step between lists of the process, or between tables that the index makes
// when they are first asked for. Of a set, the steps of all elements are put together, then sorted
// once. The past of an event is a search backward over producers; in merged processes a condition
// can have several of them, and all count.
#include "reachlang/node_operators.h"

#include <algorithm>
#include <cassert>

#include "base/sort_unique.h"
#include "net/transition_label.h"
#include "reachlang/name_pattern.h"
#include "reachlang/type_rules.h"

namespace vorel::reachlang {
namespace {

// Of the nodes that an operator leads to from a node of this kind, or from a number or text.
BaseType kind_reached(ReachOp op, BaseType from) { return result_type(op, {from, 0}).base; }
BaseType kind_named_by(ReachOp op) { return kind_reached(op, BaseType::string); }

// The sets of signals, and what asks for signals; all else works on any net.
bool needs_signals(ReachOp op, const ReachValue& operand) {
  switch (op) {
    case ReachOp::signal:
    case ReachOp::signals:
    case ReachOp::signals_of:
    case ReachOp::is_plus:
    case ReachOp::is_minus:
      return true;
    default:
      if (operand.is_set()) {
        return !operand.elements().empty() && needs_signals(op, operand.elements().front());
      }
      return operand.is_node() && operand.node().kind == BaseType::signal;
  }
}

template <class List>
void append_indices(const List& list, std::vector<std::uint32_t>& result) {
  for (const auto* element : list) {
    // A condition behind a cut-off may have been left out of the process.
    if (element->index != base::no_index) result.push_back(element->index);
  }
}

}  // namespace

template <net::Process P>
ReachValue NodeOperators<P>::apply(ReachOp op, const ReachValue& operand,
                                   const TextPosition& position) {
  if (!has_signals && needs_signals(op, operand)) {
    return ReachValue::failure("Valid only in STGs: " + applied(op, std::span(&operand, 1)));
  }
  switch (op) {
    case ReachOp::condition:
    case ReachOp::event:
    case ReachOp::place:
    case ReachOp::transition:
    case ReachOp::signal:
      return node_at(op, operand, position);
    case ReachOp::places:
    case ReachOp::transitions:
    case ReachOp::signals:
      return matching(op, operand);
    case ReachOp::number:
      return ReachValue(std::int64_t{operand.node().index} + 1);
    case ReachOp::name:
      return ReachValue(*operand.node().name);
    case ReachOp::downclose:
      return past_of(operand);
    case ReachOp::triggers:
      return causes(operand);
    case ReachOp::is_init:
      return is_initial(operand);
    case ReachOp::pre:
    case ReachOp::post:
    case ReachOp::conditions_of:
    case ReachOp::events_of:
    case ReachOp::places_of:
    case ReachOp::transitions_of:
    case ReachOp::signals_of:
      return related(op, operand);
    default:
      return attribute(op, operand);
  }
}

template <net::Process P>
ReachValue NodeOperators<P>::builtin_set(BuiltinSet set) {
  const auto all_of = [this](BaseType kind) { return set_of_range(kind, 0, count(kind)); };
  if (set == BuiltinSet::conditions) return all_of(BaseType::condition);
  if (set == BuiltinSet::events) return all_of(BaseType::event);
  if (set == BuiltinSet::places) return all_of(BaseType::place);
  if (set == BuiltinSet::transitions) return all_of(BaseType::transition);
  if (set == BuiltinSet::cutoffs) {
    Indices cut_offs;
    for (const auto& event : process_.events) {
      if (event->is_cut_off()) cut_offs.push_back(event->index);
    }
    return set_of(BaseType::event, std::move(cut_offs));
  }
  if constexpr (has_signals) {
    const auto signals = [this](std::uint32_t first, std::uint32_t last) {
      return set_of_range(BaseType::signal, first, last);
    };
    const std::uint32_t inputs = process_.inputs_end, outputs = process_.outputs_end;
    const std::uint32_t internals = process_.internals_end;
    if (set == BuiltinSet::signals) return signals(0, internals);
    if (set == BuiltinSet::inputs) return signals(0, inputs);
    if (set == BuiltinSet::outputs) return signals(inputs, outputs);
    if (set == BuiltinSet::internal) return signals(outputs, internals);
    if (set == BuiltinSet::dummy) return signals(internals, count(BaseType::signal));
    assert(set == BuiltinSet::local);
    return signals(inputs, internals);
  }
  return ReachValue::failure("Can refer to signals only in STGs: " +
                             std::string(builtin_sets[static_cast<std::size_t>(set)].name));
}

template <net::Process P>
ReachNodeRef NodeOperators<P>::node(BaseType kind, std::uint32_t index) const {
  const std::string* name = nullptr;
  if (kind == BaseType::place) name = &process_.places[index]->name;
  if (kind == BaseType::transition) name = &process_.transitions[index]->name;
  if constexpr (has_signals) {
    if (kind == BaseType::signal) name = &process_.signals[index]->name;
  }
  return {kind, index, name};
}

// Nodes are numbered from 1.
template <net::Process P>
ReachValue NodeOperators<P>::node_at(ReachOp op, const ReachValue& operand,
                                     const TextPosition& position) {
  const BaseType kind = kind_named_by(op);
  std::uint32_t index = 0;
  bool is_there = false;
  if (operand.is_number()) {
    is_there = operand.number() >= 1 && operand.number() <= std::int64_t{count(kind)};
    if (is_there) index = static_cast<std::uint32_t>(operand.number() - 1);
  } else {
    is_there = find(kind, operand.text(), index);
  }
  if (is_there) return ReachValue(node(kind, index));
  return ReachValue::failure("There is no node " + to_string(operand) + located_at(position));
}

template <net::Process P>
bool NodeOperators<P>::find(BaseType kind, const std::string& name, std::uint32_t& index) {
  if (kind == BaseType::transition) return find_transition(name, index);
  std::optional<std::uint32_t> found;
  if (kind == BaseType::place) found = index_.find_place(name);
  if constexpr (has_signals) {
    if (kind == BaseType::signal) found = index_.find_signal(name);
  }
  if (found) index = *found;
  return found.has_value();
}

// Files of the older formats keep the kind of a signal in front of the names of its transitions.
template <net::Process P>
bool NodeOperators<P>::find_transition(const std::string& name, std::uint32_t& index) {
  std::optional<std::uint32_t> found = index_.find_transition(name);
  if (net::without_kind_prefix(name) == name) {
    constexpr net::SignalKind kinds[] = {net::SignalKind::input, net::SignalKind::output,
                                         net::SignalKind::internal, net::SignalKind::dummy};
    for (const net::SignalKind kind : kinds) {
      if (!found) found = index_.find_transition(std::string(net::kind_prefix(kind)) + name);
    }
  }
  if (found) index = *found;
  return found.has_value();
}

template <net::Process P>
ReachValue NodeOperators<P>::matching(ReachOp op, const ReachValue& operand) {
  std::string fault;
  const auto pattern = NamePattern::compile(operand.text(), fault);
  if (!pattern) {
    return ReachValue::failure("Error in a regular expression \"" + operand.text() +
                               "\": " + fault);
  }
  const BaseType kind = kind_named_by(op);
  Indices found;
  for (std::uint32_t i = 0; i < count(kind); ++i) {
    if (matches(kind, i, *pattern)) found.push_back(i);
  }
  return set_of(kind, std::move(found));
}

template <net::Process P>
bool NodeOperators<P>::matches(BaseType kind, std::uint32_t index,
                               const NamePattern& pattern) const {
  const std::string& name = *node(kind, index).name;
  if (pattern.matches(name)) return true;
  if (kind != BaseType::transition) return false;
  const std::string_view bare = net::without_kind_prefix(name);
  return bare.size() < name.size() && pattern.matches(std::string(bare));
}

// Of a set, all that its elements lead to. A step that leads to one node has that node as its
// value.
template <net::Process P>
ReachValue NodeOperators<P>::related(ReachOp op, const ReachValue& operand) {
  Indices result;
  if (operand.is_set()) {
    if (operand.elements().empty()) return ReachValue::set_of({});
    for (const ReachValue& element : operand.elements()) append_related(op, element.node(), result);
    base::sort_unique(result);
    return set_of(kind_reached(op, operand.elements().front().node().kind), std::move(result));
  }
  const BaseType from = operand.node().kind;
  append_related(op, operand.node(), result);
  const bool leads_to_one = op == ReachOp::places_of || op == ReachOp::signals_of ||
                            (op == ReachOp::transitions_of && from == BaseType::event);
  if (leads_to_one) return ReachValue(node(kind_reached(op, from), result.front()));
  base::sort_unique(result);
  return set_of(kind_reached(op, from), std::move(result));
}

template <net::Process P>
void NodeOperators<P>::append_related(ReachOp op, const ReachNodeRef& node, Indices& result) {
  switch (op) {
    case ReachOp::pre:
    case ReachOp::post:
      return append_neighbours(op, node, result);
    case ReachOp::places_of:
      return result.push_back(process_.conditions[node.index]->place->index);
    case ReachOp::transitions_of:
      if (node.kind == BaseType::event) {
        return result.push_back(process_.events[node.index]->transition->index);
      }
      break;
    case ReachOp::signals_of:
      if constexpr (has_signals) {
        const auto* transition = node.kind == BaseType::event
                                     ? process_.events[node.index]->transition
                                     : process_.transitions[node.index].get();
        return result.push_back(transition->signal->index);
      }
      break;
    case ReachOp::conditions_of:
      return append_indices(index_.instances().conditions_of({node.index}), result);
    default:
      assert(op == ReachOp::events_of);
      return append_instances(node, result);
  }
  if constexpr (has_signals) {
    append_indices(index_.instances().transitions_of({node.index}), result);
  }
}

template <net::Process P>
void NodeOperators<P>::append_neighbours(ReachOp op, const ReachNodeRef& node,
                                         Indices& result) const {
  const bool is_pre = op == ReachOp::pre;
  if (node.kind == BaseType::condition) {
    const auto& condition = *process_.conditions[node.index];
    if (is_pre) return append_indices(condition.producers(), result);
    return append_indices(condition.postset, result);
  }
  if (node.kind == BaseType::event) {
    const auto& event = *process_.events[node.index];
    return append_indices(is_pre ? event.preset : event.postset, result);
  }
  if (node.kind == BaseType::place) {
    const auto& place = *process_.places[node.index];
    return append_indices(is_pre ? place.preset : place.postset, result);
  }
  const auto& transition = *process_.transitions[node.index];
  append_indices(is_pre ? transition.preset : transition.postset, result);
}

template <net::Process P>
void NodeOperators<P>::append_instances(const ReachNodeRef& node, Indices& result) {
  if (node.kind == BaseType::transition) {
    return append_indices(
        index_.instances().events_of(base::Id<typename P::NetType::Transition>{node.index}),
        result);
  }
  if constexpr (has_signals) {
    append_indices(index_.instances().events_of(net::SignalId{node.index}), result);
  }
}

template <net::Process P>
ReachValue NodeOperators<P>::causes(const ReachValue& operand) {
  Indices result;
  for (const auto* condition : process_.events[operand.node().index]->preset) {
    append_indices(condition->producers(), result);
  }
  base::sort_unique(result);
  return set_of(BaseType::event, std::move(result));
}

template <net::Process P>
ReachValue NodeOperators<P>::past_of(const ReachValue& operand) {
  std::vector<bool> is_in(process_.events.size());
  Indices past;  // what follows the position of the loop is still to be looked at
  const auto visit = [&](std::uint32_t event) {
    if (!is_in[event]) past.push_back(event);
    is_in[event] = true;
  };
  if (operand.is_set()) {
    for (const ReachValue& element : operand.elements()) visit(element.node().index);
  } else {
    visit(operand.node().index);
  }
  for (std::size_t i = 0; i < past.size(); ++i) {
    for (const auto* condition : process_.events[past[i]]->preset) {
      for (const auto* producer : condition->producers()) visit(producer->index);
    }
  }
  std::ranges::sort(past);
  return set_of(BaseType::event, std::move(past));
}

template <net::Process P>
ReachValue NodeOperators<P>::is_initial(const ReachValue& operand) const {
  const ReachNodeRef& node = operand.node();
  const auto is_minimal = [](const auto* condition) { return condition->producers().empty(); };
  const auto is_marked = [](const auto* place) { return place->initial_marking != 0; };
  if (node.kind == BaseType::condition) {
    return ReachValue(is_minimal(process_.conditions[node.index].get()));
  }
  if (node.kind == BaseType::event) {
    return ReachValue(std::ranges::all_of(process_.events[node.index]->preset, is_minimal));
  }
  if (node.kind == BaseType::place) return ReachValue(is_marked(process_.places[node.index].get()));
  if (node.kind == BaseType::transition) {
    return ReachValue(std::ranges::all_of(process_.transitions[node.index]->preset, is_marked));
  }
  if constexpr (has_signals) {
    const net::Signal& signal = *process_.signals[node.index];
    if (!signal.is_dummy()) return ReachValue(signal.initial_value == 1);
  }
  return ReachValue::failure("Cannot refer to the initial state of a dummy signal: " + *node.name);
}

template <net::Process P>
ReachValue NodeOperators<P>::attribute(ReachOp op, const ReachValue& operand) const {
  const ReachNodeRef& node = operand.node();
  if (op == ReachOp::is_cutoff) return ReachValue(process_.events[node.index]->is_cut_off());
  if constexpr (has_signals) {
    if (op == ReachOp::is_plus || op == ReachOp::is_minus) {
      const auto* transition = node.kind == BaseType::event
                                   ? process_.events[node.index]->transition
                                   : process_.transitions[node.index].get();
      return ReachValue(transition->sign ==
                        (op == ReachOp::is_plus ? net::Sign::plus : net::Sign::minus));
    }
    const net::SignalKind kind = process_.signals[node.index]->kind;
    const bool is_output = kind == net::SignalKind::output,
               is_internal = kind == net::SignalKind::internal;
    if (op == ReachOp::is_input) return ReachValue(kind == net::SignalKind::input);
    if (op == ReachOp::is_output) return ReachValue(is_output);
    if (op == ReachOp::is_internal) return ReachValue(is_internal);
    if (op == ReachOp::is_dummy) return ReachValue(kind == net::SignalKind::dummy);
    assert(op == ReachOp::is_local);
    return ReachValue(is_output || is_internal);
  }
  assert(false && "nets without signals were refused before");
  return {};
}

template <net::Process P>
std::uint32_t NodeOperators<P>::count(BaseType kind) const {
  const auto size_of = [](const auto& list) { return static_cast<std::uint32_t>(list.size()); };
  if (kind == BaseType::condition) return size_of(process_.conditions);
  if (kind == BaseType::event) return size_of(process_.events);
  if (kind == BaseType::place) return size_of(process_.places);
  if (kind == BaseType::transition) return size_of(process_.transitions);
  if constexpr (has_signals) return size_of(process_.signals);
  return 0;
}

template <net::Process P>
ReachValue NodeOperators<P>::set_of(BaseType kind, Indices indices) const {
  ReachElements elements;
  elements.reserve(indices.size());
  for (const std::uint32_t i : indices) elements.emplace_back(node(kind, i));
  return ReachValue::set_of(std::move(elements));
}

template <net::Process P>
ReachValue NodeOperators<P>::set_of_range(BaseType kind, std::uint32_t first,
                                          std::uint32_t last) const {
  ReachElements elements;
  elements.reserve(last - first);
  for (std::uint32_t i = first; i < last; ++i) elements.emplace_back(node(kind, i));
  return ReachValue::set_of(std::move(elements));
}

#define INSTANTIATE(P) template class NodeOperators<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
