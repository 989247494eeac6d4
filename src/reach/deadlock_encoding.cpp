#include "reach/deadlock_encoding.h"

#include <algorithm>
#include <cassert>

namespace vorel {
namespace {

template <class Consumer>
class Domination {
 public:
  Domination(const OwnedList<Consumer>& consumers, std::size_t resource_count)
      : consumers_{consumers},
        dominated_(consumers.size()),
        compared_(consumers.size()),
        wanted_(resource_count),
        found_(resource_count) {}

  IndexedBy<Consumer, bool> run() && {
    for (const auto& consumer : consumers_) {
      // What a dominated one dominates, its own dominator does too.
      if (!dominated_[*consumer] && !consumer->preset.empty()) visit(*consumer);
    }
    return std::move(dominated_);
  }

 private:
  // Whoever needs all that this consumer needs is among the consumers of each of its resources: it
  // is enough to look at the resource with the fewest.
  void visit(const Consumer& consumer) {
    compared_.clear();
    wanted_.clear();
    std::uint32_t size = 0;  // of the preset, without repetitions
    for (const auto* resource : consumer.preset) size += wanted_.insert(*resource) ? 1 : 0;
    const auto* rarest = *std::ranges::min_element(
        consumer.preset, {}, [](const auto* resource) { return resource->postset.size(); });
    for (const Consumer* other : rarest->postset) {
      if (other == &consumer || dominated_[*other] || !compared_.insert(*other)) continue;
      const auto [common, other_size] = compare(*other);
      if (common < size) continue;
      dominated_[*other] = other_size > size || other->index > consumer.index;
    }
  }

  // How many resources of the visited consumer the other one needs too, and how many in all.
  std::pair<std::uint32_t, std::uint32_t> compare(const Consumer& other) {
    found_.clear();
    std::uint32_t common = 0, all = 0;
    for (const auto* resource : other.preset) {
      if (!found_.insert(*resource)) continue;
      ++all;
      if (wanted_.contains(*resource)) ++common;
    }
    return {common, all};
  }

  using Resource = std::remove_pointer_t<decltype(std::declval<Consumer&>().preset.front())>;

  const OwnedList<Consumer>& consumers_;
  IndexedBy<Consumer, bool> dominated_;
  MarkSet<Consumer> compared_;
  MarkSet<Resource> wanted_, found_;
};

// The complements of the literals of the preset's producers; false if one of them is a cut-off, so
// that no configuration holds them all.
template <Process P>
bool append_unfired_producers(ConfigurationVars<P>& vars, const typename P::Event& event,
                              Lits& clause) {
  for (const auto* condition : event.preset) {
    for (const auto* producer : condition->producers()) {
      if (producer->is_cut_off()) return false;
      clause.push_back(~event_lit(vars, *producer));
    }
  }
  return true;
}

// An event whose preset nobody else consumes fires once its producers have fired, or the final
// state would enable it; a cut-off in this position forbids its causal past.
template <Process P>
void encode_progress(const P& process, ConfigurationVars<P>& vars, ClauseGroup group) {
  Lits clause;
  for (const auto& event : process.events) {
    const bool is_sole_consumer = std::ranges::all_of(
        event->preset, [](const auto* condition) { return condition->postset.size() == 1; });
    clause.clear();
    if (!is_sole_consumer || !append_unfired_producers(vars, *event, clause)) continue;
    if (!event->is_cut_off()) clause.push_back(event_lit(vars, *event));
    vars.formula.add_clause(clause, group);
  }
}

// The conditions of each place, as one flat list; those that only cut-offs produce are left out, as
// they are in no final cut.
template <Process P>
class PlaceInstances {
 public:
  explicit PlaceInstances(const P& process) : first_(process.places.size() + 1) {
    for (const auto& condition : process.conditions) {
      if (can_be_marked(*condition)) ++first_[condition->place->index + 1];
    }
    for (std::size_t i = 1; i < first_.size(); ++i) first_[i] += first_[i - 1];
    conditions_.resize(first_.back());
    std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
    for (const auto& condition : process.conditions) {
      if (can_be_marked(*condition)) {
        conditions_[next[condition->place->index]++] = condition.get();
      }
    }
  }

  std::span<const typename P::Condition* const> of(const typename P::NetType::Place& place) const {
    const std::uint32_t first = first_[place.index], last = first_[place.index + 1];
    return std::span(conditions_).subspan(first, last - first);
  }

 private:
  static bool can_be_marked(const typename P::Condition& condition) {
    const auto producers = condition.producers();
    return producers.empty() ||
           !std::ranges::all_of(producers, [](const auto* event) { return event->is_cut_off(); });
  }

  std::vector<std::uint32_t> first_;  // by place number, one more at the end
  std::vector<const typename P::Condition*> conditions_;
};

template <Process P>
IndexedBy<typename P::NetType::Transition, bool> transitions_with_events(const P& process) {
  IndexedBy<typename P::NetType::Transition, bool> occurs(process.transitions.size());
  for (const auto& event : process.events) occurs[*event->transition] = true;
  return occurs;
}

}  // namespace

template <class Consumer>
IndexedBy<Consumer, bool> dominated_consumers(const OwnedList<Consumer>& consumers,
                                              std::size_t resource_count) {
  return Domination<Consumer>(consumers, resource_count).run();
}

template <Process P>
void encode_deadlock_with_cutoffs(const P& process, ConfigurationVars<P>& vars, ClauseGroup group) {
  const auto dominated = dominated_consumers(process.events, process.conditions.size());
  Lits clause;
  for (const auto& event : process.events) {
    clause.clear();
    if (dominated[*event] || !append_unfired_producers(vars, *event, clause)) continue;
    for (const auto* condition : event->preset) {
      for (const auto* consumer : condition->postset) {
        if (!consumer->is_cut_off()) clause.push_back(event_lit(vars, *consumer));
      }
    }
    vars.formula.add_clause(clause, group);
  }
}

template <Process P>
void encode_deadlock_ignoring_cutoffs(const P& process, ConfigurationVars<P>& vars,
                                      ClauseGroup group) {
  const auto dominated = dominated_consumers(process.transitions, process.places.size());
  const auto occurs = transitions_with_events(process);
  const PlaceInstances<P> instances(process);
  Lits clause;
  for (const auto& transition : process.transitions) {
    if (dominated[*transition] || !occurs[*transition]) continue;
    clause.clear();
    for (const auto* place : transition->preset) {
      clause.push_back(~place_lit(vars, *place, instances.of(*place), group));
    }
    vars.formula.add_clause(clause, group);
  }
  encode_progress(process, vars, group);
}

#define INSTANTIATE(P)                                                                         \
  template void encode_deadlock_with_cutoffs<P>(const P&, ConfigurationVars<P>&, ClauseGroup); \
  template void encode_deadlock_ignoring_cutoffs<P>(const P&, ConfigurationVars<P>&, ClauseGroup);
VOREL_FOR_EACH_PREFIX(INSTANTIATE)
#undef INSTANTIATE

template IndexedBy<Transition, bool> dominated_consumers(const OwnedList<Transition>&, std::size_t);
template IndexedBy<StgTransition, bool> dominated_consumers(const OwnedList<StgTransition>&,
                                                            std::size_t);
template IndexedBy<EventOf<Net>, bool> dominated_consumers(const OwnedList<EventOf<Net>>&,
                                                           std::size_t);
template IndexedBy<EventOf<Stg>, bool> dominated_consumers(const OwnedList<EventOf<Stg>>&,
                                                           std::size_t);

}  // namespace vorel
