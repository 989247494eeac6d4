#include "reach/deadlock_walk.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vorel::reach {

template <net::Process P>
DeadlockWalk<P>::DeadlockWalk(const P& process, const net::Instances<P>& instances)
    : process_{process},
      instances_{instances},
      latest_(process.places.size()),
      marked_(process.places.size()),
      missing_(process.events.size()),
      position_(process.events.size(), absent) {}

template <net::Process P>
void DeadlockWalk<P>::start() {
  run_.clear();
  std::ranges::fill(latest_, 0);
  std::fill(marked_.begin(), marked_.end(), false);
  for (const auto& event : process_.events) {
    assert(!event->preset.empty() && "an event consumes something");
    missing_[*event] = static_cast<std::uint32_t>(event->preset.size());
  }
  for (const Event* event : enabled_) position_[*event] = absent;
  enabled_.clear();
  enabled_cut_offs_ = 0;
  steps_ += process_.events.size();
  for (const auto& condition : process_.conditions) {
    if (condition->is_initial()) enter(*condition);
  }
}

template <net::Process P>
void DeadlockWalk<P>::enter(const Condition& condition) {
  latest_[*condition.place] = condition.occurrence_depth;
  marked_[*condition.place] = true;
  steps_ += condition.postset.size();
  for (const Event* event : condition.postset) {
    if (--missing_[*event] != 0) continue;
    if (event->is_cut_off()) {
      ++enabled_cut_offs_;
    } else {
      position_[*event] = static_cast<std::uint32_t>(enabled_.size());
      enabled_.push_back(event);
    }
  }
}

template <net::Process P>
void DeadlockWalk<P>::leave(const Condition& condition) {
  marked_[*condition.place] = false;
  steps_ += condition.postset.size();
  for (const Event* event : condition.postset) {
    if (missing_[*event]++ != 0) continue;
    if (event->is_cut_off()) {
      --enabled_cut_offs_;
      continue;
    }
    const std::uint32_t hole = std::exchange(position_[*event], absent);
    const Event* last = enabled_.back();
    enabled_.pop_back();
    if (last == event) continue;
    enabled_[hole] = last;
    position_[*last] = hole;
  }
}

// What it produces comes next at its place.
template <net::Process P>
bool DeadlockWalk<P>::fits(const Event& event) const {
  return std::ranges::all_of(event.postset, [this](const Condition* condition) {
    return condition->occurrence_depth == latest_[*condition->place] + 1;
  });
}

// Null if none is left.
template <net::Process P>
const typename P::Event* DeadlockWalk<P>::next_event() {
  const auto count = static_cast<std::uint32_t>(enabled_.size());
  if (count == 0) return nullptr;
  const auto first = static_cast<std::uint32_t>(random_() % count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const Event* event = enabled_[(first + i) % count];
    steps_ += event->postset.size();
    if (fits(*event)) return event;
  }
  return nullptr;
}

template <net::Process P>
void DeadlockWalk<P>::fire(const Event& event) {
  run_.push_back(&event);
  for (const Condition* condition : event.preset) leave(*condition);
  for (const Condition* condition : event.postset) enter(*condition);
}

// Transitions without events are out of question.
template <net::Process P>
bool DeadlockWalk<P>::is_dead() const {
  if (!enabled_.empty() || enabled_cut_offs_ > 0) return false;
  return std::ranges::none_of(process_.transitions, [this](const auto& transition) {
    return !instances_.events_of(base::id_of(*transition)).empty() &&
           std::ranges::all_of(transition->preset,
                               [this](const auto* place) { return marked_[*place]; });
  });
}

template <net::Process P>
auto DeadlockWalk<P>::find(std::uint64_t most_steps) -> Run {
  steps_ = 0;
  while (steps_ < most_steps) {
    start();
    while (const Event* event = next_event()) fire(*event);
    if (is_dead()) return std::move(run_);
  }
  return {};
}

#define INSTANTIATE(P) template class DeadlockWalk<P>;
VOREL_FOR_EACH_MERGED_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reach
