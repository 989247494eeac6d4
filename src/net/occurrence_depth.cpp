#include "net/occurrence_depth.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <limits>
#include <span>

#include "net/causality.h"

namespace vorel::net {
namespace {

// The number of conditions of each place of a block on the paths to an event, at most.
template <class Count>
struct alignas(64) CountRow {
  static constexpr std::uint32_t lanes = 64 / sizeof(Count);
  std::array<Count, lanes> counts{};

  void join(const CountRow& other) {
    for (std::uint32_t lane = 0; lane < lanes; ++lane) {
      counts[lane] = std::max(counts[lane], other.counts[lane]);
    }
  }
};

// What counting needs to know of a prefix, in flat arrays. Places are numbered anew: `place` is
// no_index for one that is not carried.
struct CountingTask {
  // An event consumes a condition of the place from the producer, which is 0 for initial ones.
  struct Link {
    std::uint32_t producer, place;
  };
  struct Produced {
    std::uint32_t event, place, slot;  // position of the event in the causal order
  };

  std::vector<Link> links;                // by event, in causal order
  std::vector<std::uint32_t> first_link;  // by position of the event, one entry more at the end
  std::vector<std::uint32_t> inner;       // positions of the possible producers 1, 2, ...
  std::vector<Produced> produced;         // by place
  std::uint32_t place_count = 0;
};

class DepthCounter {
 public:
  DepthCounter(const CountingTask& task, std::vector<std::uint32_t>& depth)
      : task_{task}, depth_{depth} {}

  // One byte is enough for nearly all places; those where it is not are counted again.
  void run() {
    constexpr std::uint32_t step = CountRow<std::uint8_t>::lanes;
    constexpr std::uint32_t wide_step = CountRow<std::uint32_t>::lanes;
    for (std::uint32_t first = 0; first < task_.place_count; first += step) {
      if (count_block(narrow_rows_, first)) continue;
      const std::uint32_t end = std::min(first + step, task_.place_count);
      for (std::uint32_t wide = first; wide < end; wide += wide_step) {
        [[maybe_unused]] const bool counted = count_block(wide_rows_, wide);
        assert(counted);
      }
    }
  }

 private:
  using Link = CountingTask::Link;
  template <class Count>
  using Rows = std::vector<CountRow<Count>>;

  std::span<const Link> links_of(std::uint32_t event) const {
    const std::uint32_t first = task_.first_link[event];
    return std::span(task_.links).subspan(first, task_.first_link[event + 1] - first);
  }

  // Counts for the places from `first` on, as many as a row has lanes. False if a count does not
  // fit in.
  template <class Count>
  bool count_block(Rows<Count>& rows, std::uint32_t first) {
    rows.resize(task_.inner.size() + 1);
    std::uint32_t producer = 1;
    for (const std::uint32_t event : task_.inner) {
      if (!fill_row(rows, producer++, links_of(event), first)) return false;
    }
    set_depths(rows, first);
    return true;
  }

  template <class Count>
  static bool fill_row(Rows<Count>& rows, std::uint32_t producer, std::span<const Link> links,
                       std::uint32_t first) {
    CountRow<Count> row;
    std::uint32_t joined = 0;
    for (const Link& link : links) {
      assert(link.producer < producer && "producers come first");
      if (link.producer != joined) row.join(rows[link.producer]);
      joined = link.producer;
    }
    for (const Link& link : links) {
      const std::uint32_t lane = link.place - first;
      if (lane >= CountRow<Count>::lanes) continue;
      const Count before = rows[link.producer].counts[lane];
      if (before == std::numeric_limits<Count>::max()) return false;
      row.counts[lane] = std::max(row.counts[lane], static_cast<Count>(before + 1));
    }
    rows[producer] = row;
    return true;
  }

  template <class Count>
  void set_depths(const Rows<Count>& rows, std::uint32_t first) {
    const auto place = &CountingTask::Produced::place;
    const auto begin = std::ranges::lower_bound(task_.produced, first, {}, place);
    const std::uint32_t end = first + CountRow<Count>::lanes;
    for (auto it = begin; it != task_.produced.end() && it->place < end; ++it) {
      std::uint32_t most = 0;
      for (const Link& link : links_of(it->event)) {
        const std::uint32_t before = rows[link.producer].counts[it->place - first];
        most = std::max(most, before + (link.place == it->place ? 1u : 0u));
      }
      depth_[it->slot] = most + 1;
    }
  }

  const CountingTask& task_;
  std::vector<std::uint32_t>& depth_;
  Rows<std::uint8_t> narrow_rows_;  // by producer; the first one stays zero
  Rows<std::uint32_t> wide_rows_;
};

// Numbers the places that may have a condition at a depth above 1: one has a second condition, and
// some condition is consumed.
template <class N>
class PlaceNumbers {
 public:
  explicit PlaceNumbers(const PrefixOf<N>& prefix)
      : number_(prefix.places.size(), base::no_index), uses_(prefix.places.size()) {
    for (const auto& condition : prefix.conditions) {
      if (condition->is_initial()) note(*condition);
    }
    for (const auto& event : prefix.events) {
      for (const auto* condition : event->postset) note(*condition);
    }
    for (const auto& place : prefix.places) {
      const Uses& uses = uses_[*place];
      if (uses.conditions > 1 && uses.is_consumed) number_[*place] = count_++;
    }
  }

  std::uint32_t count() const { return count_; }
  std::uint32_t operator[](const typename N::Place& place) const { return number_[place]; }

 private:
  struct Uses {
    std::uint32_t conditions = 0;
    bool is_consumed = false;
  };
  void note(const ConditionOf<N>& condition) {
    Uses& uses = uses_[*condition.place];
    ++uses.conditions;
    uses.is_consumed = uses.is_consumed || !condition.postset.empty();
  }

  base::IndexedBy<typename N::Place, std::uint32_t> number_;
  base::IndexedBy<typename N::Place, Uses> uses_;
  std::uint32_t count_ = 0;
};

template <class N>
bool has_successor(const EventOf<N>& event) {
  return std::ranges::any_of(event.postset, [](const auto* c) { return !c->postset.empty(); });
}

// Brings what is produced into the order of the places, by counting.
void sort_by_place(CountingTask& task) {
  std::vector<std::uint32_t> next(task.place_count + 1);
  for (const auto& produced : task.produced) ++next[produced.place + 1];
  for (std::uint32_t place = 0; place < task.place_count; ++place) next[place + 1] += next[place];
  std::vector<CountingTask::Produced> sorted(task.produced.size());
  for (const auto& produced : task.produced) sorted[next[produced.place]++] = produced;
  task.produced = std::move(sorted);
}

// `visit_slots(event, visit)` visits what an event produces.
template <class N, class VisitSlots>
CountingTask counting_task(const PrefixOf<N>& prefix, VisitSlots visit_slots) {
  const auto order = topological_order(prefix);
  assert(order.size() == prefix.events.size() && "a prefix has no causal cycles");
  const PlaceNumbers<N> places(prefix);
  base::IndexedBy<EventOf<N>, std::uint32_t> producer(prefix.events.size());
  CountingTask task;
  task.place_count = places.count();
  task.first_link.reserve(order.size() + 1);
  for (std::uint32_t position = 0; position < order.size(); ++position) {
    const EventOf<N>& event = *order[position];
    task.first_link.push_back(static_cast<std::uint32_t>(task.links.size()));
    for (const auto* condition : event.preset) {
      const std::uint32_t from = condition->is_initial() ? 0 : producer[*condition->pre_event];
      task.links.push_back({from, places[*condition->place]});
    }
    if (has_successor(event)) {
      task.inner.push_back(position);
      producer[event] = static_cast<std::uint32_t>(task.inner.size());
    }
    visit_slots(event, [&](const ConditionOf<N>& condition, std::uint32_t slot) {
      const std::uint32_t place = places[*condition.place];
      if (place != base::no_index) task.produced.push_back({position, place, slot});
    });
  }
  task.first_link.push_back(static_cast<std::uint32_t>(task.links.size()));
  sort_by_place(task);
  return task;
}

}  // namespace

template <class N>
OccurrenceDepths<N>::OccurrenceDepths(const PrefixOf<N>& prefix)
    : first_left_out_(prefix.events.size()) {
  number_slots(prefix);
  const CountingTask task =
      counting_task(prefix, [this](const Event& event, auto visit) { visit_slots(event, visit); });
  DepthCounter(task, depth_).run();
}

template <class N>
void OccurrenceDepths<N>::number_slots(const PrefixOf<N>& prefix) {
  auto slot = static_cast<std::uint32_t>(prefix.conditions.size());
  for (const auto& event : prefix.events) {
    first_left_out_[*event] = slot;
    for (const Condition* condition : event->postset)
      slot += condition->index == base::no_index ? 1 : 0;
  }
  depth_.assign(slot, 1);
}

template class OccurrenceDepths<Net>;
template class OccurrenceDepths<Stg>;

}  // namespace vorel::net
