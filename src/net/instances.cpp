#include "net/instances.h"

namespace vorel::net {

template <Process P>
auto Instances<P>::conditions_of(base::Id<Place> place) const -> std::span<const Condition* const> {
  if (conditions_.empty()) {
    conditions_ = base::Grouping(process_.places.size(), process_.conditions,
                                 [](const Condition& c) { return c.place->index; });
  }
  return conditions_[place.value];
}

template <Process P>
auto Instances<P>::events_of(base::Id<Transition> transition) const
    -> std::span<const Event* const> {
  if (events_.empty()) {
    events_ = base::Grouping(process_.transitions.size(), process_.events,
                             [](const Event& e) { return e.transition->index; });
  }
  return events_[transition.value];
}

template <Process P>
auto Instances<P>::transitions_of(SignalId signal) const -> std::span<const Transition* const>
requires P::NetType::has_signals {
  if (transitions_.empty()) {
    transitions_ = base::Grouping(process_.signals.size(), process_.transitions,
                                  [](const Transition& t) { return t.signal->index; });
  }
  return transitions_[signal.value];
}

template <Process P>
auto Instances<P>::events_of(SignalId signal) const -> std::span<const Event* const>
requires P::NetType::has_signals {
  if (edges_.empty()) {
    edges_ = base::Grouping(process_.signals.size(), process_.events,
                            [](const Event& e) { return e.transition->signal->index; });
  }
  return edges_[signal.value];
}

#define INSTANTIATE(P) template class Instances<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::net
