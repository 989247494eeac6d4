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

void TriggerFinder::collect_candidates(std::span<const Event* const> causes) {
  seen_.clear();
  candidates_.clear();
  open_.clear();
  const auto visit = [this](const Event& event) {
    if (seen_.insert(event)) (net::is_dummy(event) ? open_ : candidates_).push_back(&event);
  };
  for (const Event* cause : causes) visit(*cause);
  while (!open_.empty()) {
    const Event& current = *open_.back();
    open_.pop_back();
    for_each_producer(current, visit);
  }
}

// As far back as there are candidates.
void TriggerFinder::mark_past_of_candidates() {
  std::uint32_t lowest = base::no_index;
  for (const Event* candidate : candidates_) lowest = std::min(lowest, height_[*candidate]);
  seen_.clear();
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

std::vector<const Event*> TriggerFinder::triggers_after(std::span<const Event* const> causes) {
  collect_candidates(causes);
  if (candidates_.size() > 1) {
    mark_past_of_candidates();
    std::erase_if(candidates_,
                  [this](const Event* candidate) { return seen_.contains(*candidate); });
  }
  assert(std::ranges::none_of(candidates_, [](const Event* e) { return net::is_dummy(*e); }));
  std::ranges::sort(candidates_, {}, &Event::index);
  return candidates_;
}

std::vector<const Event*> TriggerFinder::triggers_of(const Event& event) {
  causes_.clear();
  for_each_producer(event, [this](const Event& producer) { causes_.push_back(&producer); });
  return triggers_after(causes_);
}

}  // namespace vorel::configuration
