// net/causal_arrays.h - an array of numbers for each event of a prefix, made from those of its
// causes.
// Here:      carrying arrays along the causal order, and giving up those that nobody needs any
//            more.
// Not here:  what the numbers count, and how arrays share what they agree in
//            (base/shared_arrays.h).
//
// Arrays hold what is known of the past of an event: most of it is known of its causes, too, so an
// event costs the logarithm of the length of the arrays for each number that it changes, and as
// much for each number in which its causes differ. An array is given up when all that follows its
// event has been visited: memory is that of the events on the way.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/indexed_by.h"
#include "base/shared_arrays.h"
#include "net/process.h"

namespace vorel::net {

template <class N>
class CausalArrays {
 public:
  using Event = EventOf<N>;

  // `length`: the numbers of each array, all 0 at the start. Events not in `order` are not visited.
  CausalArrays(const PrefixOf<N>& prefix, const std::vector<Event*>& order, std::uint32_t length)
      : shared_{length}, last_use_(prefix.events.size()), arrays_(prefix.events.size()) {
    std::uint32_t position = 0;
    for (const Event* event : order) {
      for (const auto* condition : event->preset) {
        if (!condition->is_initial()) last_use_[*condition->pre_event] = position;
      }
      ++position;
    }
  }

  // The next event of the order. Its array is that of its causes: where these have different
  // numbers, both not 0, combine(position, first, second) says which of both it is. The array of a
  // cause may be left aside if precedes(cause, another one), which asks for numbers of both: it
  // saves looking for all that has changed in between.
  template <class Combine, class Precedes>
  void visit(const Event& event, const Combine& combine, const Precedes& precedes) {
    if (!is_at_hand_) shared_.forget_since(own_);
    if (shared_.node_count() > node_limit_) give_up_old();
    own_ = shared_.node_count();
    const Event* last = nullptr;
    for (const auto* condition : event.preset) {
      if (condition->is_initial() || condition->pre_event == last) continue;
      const Event& cause = *condition->pre_event;
      if (last == nullptr) {
        merging_.push_back(arrays_[*(last = &cause)]);
      } else if (precedes(*last, cause)) {
        merging_.front() = arrays_[*(last = &cause)];
      } else if (!precedes(cause, *last)) {
        merging_.push_back(arrays_[cause]);
      }
    }
    array_ = &arrays_[event];
    *array_ = shared_.merge(merging_, own_, combine);
    is_at_hand_ = last_use_[event] > visited_++;
    if (is_at_hand_) at_hand_.push_back(&event);
  }

  // Of an event that another one to be visited follows.
  std::uint32_t at(const Event& event, std::uint32_t position) const {
    return shared_.at(arrays_[event], position);
  }
  // The array of the last visited event.
  std::uint32_t at(std::uint32_t position) const { return shared_.at(*array_, position); }
  void set(std::uint32_t position, std::uint32_t number) {
    shared_.set(*array_, position, number, own_);
  }

 private:
  using Array = base::SharedArrays::Array;
  static constexpr std::size_t least_node_limit = std::size_t{1} << 14;  // 1 MiB

  void give_up_old() {
    std::erase_if(at_hand_, [this](const Event* event) { return last_use_[*event] < visited_; });
    const base::SharedArrays old = std::exchange(shared_, base::SharedArrays(shared_.length()));
    base::SharedArrayMover mover(old, shared_);
    for (const Event* event : at_hand_) arrays_[*event] = mover.move(arrays_[*event]);
    node_limit_ =
        std::max({least_node_limit, 2 * std::size_t{shared_.node_count()}, 4 * at_hand_.size()});
  }

  base::SharedArrays shared_;
  base::IndexedBy<Event, std::uint32_t> last_use_;  // position of the last consumer, or 0
  base::IndexedBy<Event, Array> arrays_;
  std::vector<const Event*> at_hand_;  // visited, and not visited to the last consumer
  std::uint32_t visited_ = 0;          // events
  std::size_t node_limit_ = least_node_limit;
  std::vector<Array> merging_;  // scratch

  Array* array_ = nullptr;  // of the last visited event
  std::uint32_t own_ = 0;   // its nodes begin here
  bool is_at_hand_ = true;  // it is
};

}  // namespace vorel::net
