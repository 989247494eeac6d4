#include "configuration/triggers.h"

#include <algorithm>
#include <cassert>

#include "net/causality.h"

namespace vorel::configuration {
namespace {

using Event = net::StgPrefix::Event;

template <class Function>
void for_each_producer(const Event& event, Function function) {
  for (const auto* condition : event.preset) {
    if (!condition->is_initial()) function(*condition->pre_event);
  }
}

}  // namespace

TriggerFinder::TriggerFinder(const net::StgPrefix& prefix)
    : height_(prefix.events.size()), seen_(prefix.events.size()) {
  for (const Event* event : net::topological_order(prefix)) {
    for_each_producer(*event, [&](const Event& producer) {
      height_[*event] = std::max(height_[*event], height_[producer] + 1);
    });
  }
}

void TriggerFinder::collect_candidates(const Event& event) {
  seen_.clear();
  candidates_.clear();
  open_.assign({&event});
  while (!open_.empty()) {
    const Event& current = *open_.back();
    open_.pop_back();
    for_each_producer(current, [this](const Event& producer) {
      if (!seen_.insert(producer)) return;
      (net::is_dummy(producer) ? open_ : candidates_).push_back(&producer);
    });
  }
}

// As far back as there are candidates.
void TriggerFinder::mark_past_of_candidates() {
  seen_.clear();
  std::uint32_t lowest = height_[*candidates_.front()];
  for (const Event* candidate : candidates_) lowest = std::min(lowest, height_[*candidate]);
  const auto visit = [this, lowest](const Event& producer) {
    if (height_[producer] >= lowest && seen_.insert(producer)) open_.push_back(&producer);
  };
  for (const Event* candidate : candidates_) for_each_producer(*candidate, visit);
  while (!open_.empty()) {
    const Event& current = *open_.back();
    open_.pop_back();
    for_each_producer(current, visit);
  }
}

std::vector<const Event*> TriggerFinder::triggers_of(const Event& event) {
  collect_candidates(event);
  if (candidates_.size() > 1) {
    mark_past_of_candidates();
    std::erase_if(candidates_,
                  [this](const Event* candidate) { return seen_.contains(*candidate); });
  }
  assert(std::ranges::none_of(candidates_, [](const Event* e) { return net::is_dummy(*e); }));
  std::ranges::sort(candidates_, {}, &Event::index);
  return candidates_;
}

}  // namespace vorel::configuration
