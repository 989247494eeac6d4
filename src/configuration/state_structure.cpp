#include "configuration/state_structure.h"

#include <algorithm>
#include <cassert>

#include "base/sort_unique.h"
#include "net/causality.h"
#include "net/edge_history.h"

namespace vorel::configuration {
namespace {

constexpr std::size_t max_listed = 32;

// Its rivals are not listed: it has many, and is not produced by a dummy that may still fire.
bool is_contested(const net::StgPrefix::Condition& condition) {
  return condition.postset.size() > max_listed &&
         (condition.is_initial() || !net::is_dummy(*condition.pre_event));
}

}  // namespace

template <net::Process P>
auto StateStructure<P>::edges_before() const
    -> const base::IndexedBy<Event, std::uint32_t>& requires std::is_same_v<P, net::StgPrefix> {
  if (edges_before_.size() == process_.events.size()) return edges_before_;
  edges_before_ = base::IndexedBy<Event, std::uint32_t>(process_.events.size());
  const auto order = net::topological_order(process_);
  assert(order.size() == process_.events.size() && "a prefix has no causal cycle");
  const net::EdgeHistory history(process_, order);
  for (const Event* event : order) {
    if (!net::is_dummy(*event)) edges_before_[*event] = history.edges_before(*event);
  }
  return edges_before_;
}

template <net::Process P>
bool StateStructure<P>::has_ordered_edges(
    net::SignalId signal) const requires P::NetType::has_signals {
  return std::ranges::none_of(instances_.transitions_of(signal), [](const auto* transition) {
    return transition->sign == net::Sign::toggle;
  });
}

template <net::Process P>
bool StateStructure<P>::has_only_ordered_edges() const requires std::is_same_v<P, net::StgPrefix> {
  std::vector<std::uint32_t> numbers;
  for (const net::SignalId signal : process_.visible_signals()) {
    numbers.clear();
    for (const Event* event : instances_.events_of(signal)) {
      numbers.push_back(edges_before()[*event]);
    }
    std::ranges::sort(numbers);
    if (std::ranges::adjacent_find(numbers) != numbers.end()) return false;
  }
  return true;
}

// Walks backwards from the event through the dummies that it may wait for. The dummies are left
// free: those that are not in the configuration can fire too.
template <net::Process P>
auto StateStructure<P>::firing_condition(const Event& event) const
    -> FiringCondition requires std::is_same_v<P, net::StgPrefix> {
  assert(process_.events[event.index].get() == &event);
  FiringCondition result;
  result.excluded.push_back(&event);
  std::vector<const Event*> waited_for{&event};
  for (std::size_t i = 0; i < waited_for.size(); ++i) {
    const Event& current = *waited_for[i];
    for (const auto* condition : current.preset) {
      if (&current == &event && is_contested(*condition)) {
        result.marked.push_back(condition);
        continue;
      }
      for (const Event* rival : condition->postset) {
        if (rival != &current) result.excluded.push_back(rival);
      }
      if (condition->is_initial()) continue;
      const Event& producer = *condition->pre_event;
      if (producer.is_cut_off() || !net::is_dummy(producer)) {
        result.needed.push_back(&producer);
      } else if (std::ranges::find(waited_for, &producer) == waited_for.end()) {
        waited_for.push_back(&producer);
      }
    }
  }
  base::sort_unique(result.needed, &Event::index);
  base::sort_unique(result.excluded, &Event::index);
  assert(!result.excluded.empty() && "the event itself is one");
  return result;
}

#define INSTANTIATE(P) template class StateStructure<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
