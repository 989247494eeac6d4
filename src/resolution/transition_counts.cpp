#include "resolution/transition_counts.h"

#include <algorithm>
#include <map>
#include <utility>

namespace vorel::resolution {

using Event = net::StgPrefix::Event;
using Counts = std::vector<std::int32_t>;

class TransitionCounts::Maker {
 public:
  Maker(const net::Instances<net::StgPrefix>& instances, TransitionCounts& made)
      : prefix_{instances.process()},
        made_{made},
        before_(prefix_.events.size()),
        own_(prefix_.events.size()) {
    for (const auto& transition : prefix_.transitions)
      for (const Event* event : instances.events_of(base::id_of(*transition)))
        if (event->is_cut_off()) cut_offs_.push_back(event);
  }

  void run() {
    count_own();
    for (const auto& transition : prefix_.transitions) {
      count(*transition);
      made_.leads_[*transition] = leads_of(*transition);
      const auto next = static_cast<std::uint32_t>(classes_.size());
      made_.class_at_cut_offs_[*transition] =
          classes_.try_emplace(gains_of(*transition), next).first->second;
    }
  }

 private:
  // In a safe net the events of one transition in a configuration are a chain: there are as many
  // before an event as before that one of its causes which has most, and as many in a union of
  // configurations as in that one of them which has most.
  std::int32_t up_to(const Event& event, const net::StgTransition& transition) const {
    return before_[event] + (event.transition == &transition ? 1 : 0);
  }

  void count(const net::StgTransition& transition) {
    for (const auto& event : prefix_.events) {
      std::int32_t& here = before_[*event] = 0;
      for (const auto* condition : event->preset) {
        if (condition->is_initial()) continue;
        assert(condition->pre_event->index < event->index && "events are numbered causally");
        here = std::max(here, up_to(*condition->pre_event, transition));
      }
    }
  }

  // How many events of its own transition come before each event.
  void count_own() {
    for (const auto& transition : prefix_.transitions) {
      count(*transition);
      for (const auto& event : prefix_.events)
        if (event->transition == transition.get()) own_[*event] = before_[*event];
    }
  }

  Counts leads_of([[maybe_unused]] const net::StgTransition& transition) const {
    constexpr std::int32_t none = varying - 1;
    Counts leads(prefix_.transitions.size(), none);
    for (const auto& event : prefix_.events) {
      const std::int32_t here = before_[*event] - own_[*event];
      std::int32_t& lead = leads[event->transition->index];
      if (lead == none) lead = here;
      if (lead != here) lead = varying;
    }
    std::ranges::replace(leads, none, varying);
    assert(leads[transition.index] == 0 || leads[transition.index] == varying);
    return leads;
  }

  // How many more there are at each cut-off than at its correspondents.
  Counts gains_of(const net::StgTransition& transition) const {
    Counts gains;
    gains.reserve(cut_offs_.size());
    for (const Event* cut_off : cut_offs_) {
      std::int32_t there = 0;
      for (const Event* event : cut_off->cut_off.correspondents())
        there = std::max(there, up_to(*event, transition));
      gains.push_back(up_to(*cut_off, transition) - there);
    }
    return gains;
  }

  const net::StgPrefix& prefix_;
  TransitionCounts& made_;
  base::IndexedBy<Event, std::int32_t> before_;  // of the transition under work
  base::IndexedBy<Event, std::int32_t> own_;
  std::vector<const Event*> cut_offs_;
  std::map<Counts, std::uint32_t> classes_;
};

TransitionCounts::TransitionCounts(const net::Instances<net::StgPrefix>& instances)
    : leads_(instances.process().transitions.size()),
      class_at_cut_offs_(instances.process().transitions.size()) {
  Maker(instances, *this).run();
}

}  // namespace vorel::resolution
