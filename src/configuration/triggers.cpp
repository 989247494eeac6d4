#include "configuration/triggers.h"

#include <algorithm>
#include <cassert>

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

void TriggerFinder::mark_past_of_candidates() {
  seen_.clear();
  const auto visit = [this](const Event& producer) {
    if (seen_.insert(producer)) open_.push_back(&producer);
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
