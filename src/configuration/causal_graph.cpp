#include "configuration/causal_graph.h"

#include <algorithm>
#include <tuple>

#include "base/indexed_by.h"

namespace vorel::configuration {
namespace {

// Arcs in linear time; a turn without consumers or without producers is left out.
template <net::Process P>
class ArcCollector {
 public:
  explicit ArcCollector(const P& process)
      : process_{process}, consumes_(process.events.size()), produces_(process.events.size()) {}

  void run() {
    for (const auto& event : process_.events) {
      if (event->is_cut_off()) continue;
      for (const auto* condition : event->preset) add(node_of(*condition), event->index);
      for (const auto* condition : event->postset) add(event->index, node_of(*condition));
    }
    const auto conditions = conditions_by_depth(process_);
    for (std::size_t i = 1; i < conditions.size(); ++i) {
      const auto &earlier = *conditions[i - 1], &later = *conditions[i];
      if (earlier.place == later.place) add_turn(earlier, later);
    }
  }

  std::uint32_t node_count() const { return first_turn() + turns_; }
  std::span<const Arc> arcs() const { return arcs_; }

 private:
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  std::uint32_t event_count() const { return static_cast<std::uint32_t>(process_.events.size()); }
  std::uint32_t node_of(const Condition& condition) const {
    return event_count() + condition.index;
  }
  std::uint32_t first_turn() const {
    return event_count() + static_cast<std::uint32_t>(process_.conditions.size());
  }
  void add(std::uint32_t from, std::uint32_t to) { arcs_.push_back({from, to}); }

  void add_turn(const Condition& earlier, const Condition& later) {
    consumes_.clear();
    produces_.clear();
    for (const Event* event : earlier.postset) consumes_.insert(*event);
    for (const Event* event : later.preset) produces_.insert(*event);
    const auto leaves = [this](const Event* event) {
      return !event->is_cut_off() && !produces_.contains(*event);
    };
    const auto enters = [this](const Event* event) {
      return !event->is_cut_off() && !consumes_.contains(*event);
    };
    if (std::ranges::none_of(earlier.postset, leaves) || std::ranges::none_of(later.preset, enters))
      return;
    const std::uint32_t turn = first_turn() + turns_++;
    for (const Event* event : earlier.postset) {
      if (leaves(event)) add(event->index, turn);
    }
    for (const Event* event : later.preset) {
      if (enters(event)) add(turn, event->index);
    }
  }

  const P& process_;
  std::vector<Arc> arcs_;
  std::uint32_t turns_ = 0;
  base::MarkSet<Event> consumes_, produces_;  // of the turn in hand
};

std::vector<Arc> reversed(std::span<const Arc> arcs) {
  std::vector<Arc> result;
  result.reserve(arcs.size());
  for (const Arc& arc : arcs) result.push_back({arc.to, arc.from});
  return result;
}

}  // namespace

template <net::Process P>
std::vector<const typename P::Condition*> conditions_by_depth(const P& process) {
  std::vector<const typename P::Condition*> conditions;
  conditions.reserve(process.conditions.size());
  for (const auto& condition : process.conditions) conditions.push_back(condition.get());
  std::ranges::stable_sort(conditions, {}, [](const auto* condition) {
    return std::tuple(condition->place->index, condition->occurrence_depth);
  });
  return conditions;
}

template <net::Process P>
CausalGraph CausalGraph::of(const P& process) {
  ArcCollector<P> collector(process);
  collector.run();
  const auto arcs = collector.arcs();
  return {static_cast<std::uint32_t>(process.events.size()), Digraph(collector.node_count(), arcs),
          Digraph(collector.node_count(), reversed(arcs))};
}

#define INSTANTIATE(P)                                                        \
  template std::vector<const P::Condition*> conditions_by_depth<P>(const P&); \
  template CausalGraph CausalGraph::of<P>(const P&);
VOREL_FOR_EACH_MERGED_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
