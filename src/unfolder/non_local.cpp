#include "unfolder/non_local.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <set>

namespace vorel::unfolder {

bool NonLocalSearch::find(EventId event, std::vector<EventId>& correspondents) {
  event_ = event;
  places_ = final_marking(event);
  std::ranges::stable_sort(places_, {},
                           [this](PlaceId p) { return process_.conditions_of(p).size(); });
  chosen_.clear();
  past_.start(no_event);
  if (!choose(0)) return false;
  correspondents = configuration_;
  return true;
}

std::vector<PlaceId> NonLocalSearch::final_marking(EventId event) {
  const FlatNet& net = process_.net();
  std::vector<std::int32_t> tokens(net.place_count);
  for (const PlaceId p : net.marked) ++tokens[p];
  std::set<EventId> seen{event};
  std::vector<EventId> walk{event};
  while (!walk.empty()) {
    const UnfoldedEvent& past = process_.event(walk.back());
    walk.pop_back();
    for (const PlaceId p : net.preset[past.transition]) --tokens[p];
    for (const PlaceId p : net.postset[past.transition]) ++tokens[p];
    for (const ConditionId c : past.preset()) {
      const EventId producer = process_.producer(c);
      if (producer != no_event && seen.insert(producer).second) walk.push_back(producer);
    }
  }
  std::vector<PlaceId> marked;
  for (PlaceId p = 0; p < net.place_count; ++p) {
    if (tokens[p] != 0) marked.push_back(p);
  }
  return marked;
}

bool NonLocalSearch::choose(std::size_t next) {
  if (next == places_.size()) return accept();
  for (const ConditionId c : process_.conditions_of(places_[next])) {
    if (must_stop_()) return false;
    if (!past_.fits(c)) continue;
    past_.push(c);
    chosen_.push_back(c);
    const bool found = choose(next + 1);
    chosen_.pop_back();
    past_.pop();
    if (found) return true;
  }
  return false;
}

// The cut belongs to the configuration of all causes of its conditions.
bool NonLocalSearch::accept() {
  assert(chosen_.size() == places_.size() && "one condition for each marked place");
  std::set<EventId> past;
  std::vector<ConditionId> walk = chosen_;
  while (!walk.empty()) {
    const EventId producer = process_.producer(walk.back());
    walk.pop_back();
    if (producer == no_event || !past.insert(producer).second) continue;
    const auto preset = process_.event(producer).preset();
    walk.insert(walk.end(), preset.begin(), preset.end());
  }
  configuration_.assign(past.begin(), past.end());
  const auto comparison = order_.compare(std::array{event_}, configuration_);
  return comparison.equal_states && comparison.order > 0;
}

}  // namespace vorel::unfolder
