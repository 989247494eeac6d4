#include "net/concurrent_edges.h"

#include <algorithm>
#include <bitset>
#include <cassert>
#include <ranges>
#include <span>
#include <utility>

#include "base/indexed_by.h"

namespace vorel::net {
namespace {

using Event = StgPrefix::Event;
using Condition = StgPrefix::Condition;
using Family = std::span<Event* const>;  // causes first

bool is_signed(const Event& event) { return event.transition->sign != Sign::toggle; }

// The families that may have concurrent edges.
class FamilySearch {
 public:
  FamilySearch(const StgPrefix& prefix, const std::vector<Event*>& order,
               const EdgeHistory& history)
      : prefix_{prefix},
        order_{order},
        history_{history},
        signs_(prefix.signals.size()),
        first_(prefix.events.size() + prefix.signals.size()),
        size_(first_.size()),
        has_several_transitions_(first_.size()) {}

  // Valid as long as the search.
  std::vector<Family> run() {
    for (const auto& transition : prefix_.transitions)
      signs_[*transition->signal] |= transition->sign == Sign::toggle ? toggles : sign;
    bool is_any = false;
    for_each_edge([&](Event& event, std::size_t family) {
      ++size_[family];
      if (first_[family] == nullptr) first_[family] = event.transition;
      if (first_[family] != event.transition) has_several_transitions_[family] = is_any = true;
    });
    return is_any ? collect() : std::vector<Family>{};
  }

 private:
  static constexpr std::uint8_t sign = 1, toggles = 2;

  // A family has the number of the edge before, or one for its signal.
  template <class Visit>
  void for_each_edge(const Visit& visit) const {
    for (Event* event : order_) {
      const Signal& signal = *event->transition->signal;
      const std::uint8_t signs = signs_[signal];
      if (signal.is_dummy() || signs == toggles) continue;
      const std::uint32_t before = signs == sign ? history_.edge_before(*event) : base::no_index;
      visit(*event, before != base::no_index ? before : prefix_.events.size() + signal.index);
    }
  }

  std::vector<Family> collect() {
    std::vector<std::size_t> end(size_.size());
    std::size_t total = 0;
    for (std::size_t family = 0; family < size_.size(); ++family) {
      end[family] = total;
      if (has_several_transitions_[family]) total += size_[family];
    }
    edges_.resize(total);
    for_each_edge([&](Event& event, std::size_t family) {
      if (has_several_transitions_[family]) edges_[end[family]++] = &event;
    });
    std::vector<Family> families;
    for (std::size_t i = 0; i < size_.size(); ++i) {
      if (!has_several_transitions_[i]) continue;
      assert(end[i] >= size_[i]);
      const Family family = std::span(edges_).subspan(end[i] - size_[i], size_[i]);
      if (!competes_for_a_place(family)) families.push_back(family);
    }
    return families;
  }

  static bool competes_for_a_place(Family family) {
    const auto& places = family.front()->transition->preset;
    return std::ranges::any_of(places, [family](const StgPlace* place) {
      return std::ranges::all_of(family, [place](const Event* event) {
        const auto& preset = event->transition->preset;
        return std::ranges::find(preset, place) != preset.end();
      });
    });
  }

  const StgPrefix& prefix_;
  const std::vector<Event*>& order_;
  const EdgeHistory& history_;
  base::IndexedBy<Signal, std::uint8_t> signs_;  // of its transitions
  // By family.
  std::vector<const StgTransition*> first_;
  std::vector<std::uint32_t> size_;
  std::vector<bool> has_several_transitions_;
  std::vector<Event*> edges_;  // of one family after the other
};

// `width`: the edges of a batch, whose sets are that many bits.
template <std::size_t width>
class CoEdgeSearch {
 public:
  CoEdgeSearch(const StgPrefix& prefix, const std::vector<Event*>& order)
      : order_{order},
        position_(prefix.events.size()),
        slot_(prefix.events.size(), base::no_index),
        is_shared_(prefix.conditions.size()) {
    for (std::uint32_t i = 0; i < order.size(); ++i) position_[*order[i]] = i;
  }

  std::optional<EdgeHistory::Disorder> run(std::span<const Family> families) {
    for (const Family family : families) {
      const bool is_large = family.size() > width;
      if ((is_large || edges_.size() + family.size() > width) && search_batch()) return found_;
      if (is_large && search_large(family)) return found_;
      if (!is_large) add_to_batch(family);
    }
    search_batch();
    return found_;
  }

 private:
  using Row = std::bitset<width>;  // of edges of the batch

  // An edge, and the edges of the batch that it is compared with; none comes before it.
  struct Comparison {
    Event* edge;
    std::size_t begin, end;
  };

  void add_to_batch(Family family) {
    const std::size_t end = edges_.size() + family.size();
    assert(end <= width);
    for (Event* edge : family) {
      const std::size_t bit = edges_.size();
      edges_.push_back(edge);
      comparisons_.push_back({edge, bit + 1, end});
      if (bit + 1 < end) is_followed_by_kin_.set(bit);
    }
  }

  // Part by part, each compared with itself and with all before it.
  bool search_large(Family edges) {
    has_whole_families_ = false;
    for (std::size_t start = 0; start < edges.size() && !found_; start += width) {
      add_to_batch(edges.subspan(start, std::min(width, edges.size() - start)));
      for (Event* edge : edges.first(start)) comparisons_.push_back({edge, 0, edges_.size()});
      search_batch();
    }
    has_whole_families_ = true;
    return found_.has_value();
  }

  bool search_batch() {
    for (std::size_t bit = 0; bit < edges_.size(); ++bit)
      following_[slot_of(*edges_[bit])].set(bit);
    for (const Comparison& comparison : comparisons_) slot_of(*comparison.edge);
    walk_back();
    for (const std::uint32_t position : std::views::reverse(walked_))
      find_rivals(*order_[position]);
    for (const Comparison& comparison : comparisons_)
      if (!found_) compare(comparison);
    clear();
    return found_.has_value();
  }

  void clear() {
    for (const Event* event : visited_) slot_[*event] = base::no_index;
    visited_.clear();
    following_.clear();
    rivals_.clear();
    walked_.clear();
    is_shared_.clear();
    edges_.clear();
    comparisons_.clear();
    is_followed_by_kin_.reset();
  }

  // Causes last: what follows an event is known when it is its turn.
  void walk_back() {
    while (!open_.empty()) {
      std::ranges::pop_heap(open_);
      const std::uint32_t position = open_.back();
      open_.pop_back();
      const Row following = following_[slot_[*order_[position]]];
      if (has_whole_families_ && !divides_a_family(following)) continue;
      walked_.push_back(position);
      for (const Condition* condition : order_[position]->preset)
        if (!condition->is_initial()) following_[slot_of(*condition->pre_event)] |= following;
    }
  }

  bool divides_a_family(const Row& edges) const {
    return ((edges ^ (edges >> 1)) & is_followed_by_kin_).any();
  }

  std::uint32_t slot_of(Event& event) {
    std::uint32_t& slot = slot_[event];
    if (slot != base::no_index) return slot;
    slot = static_cast<std::uint32_t>(visited_.size());
    visited_.push_back(&event);
    following_.emplace_back();
    rivals_.emplace_back();
    open_.push_back(position_[event]);
    std::ranges::push_heap(open_);
    return slot;
  }

  void find_rivals(const Event& event) {
    for (const Condition* condition : event.preset)
      if (condition->postset.size() == 1 || is_shared_.insert(*condition)) share_rivals(*condition);
  }

  // Each consumer has the rivals of the producer, and the other consumers with all that follows.
  void share_rivals(const Condition& condition) {
    const Row inherited = condition.is_initial() ? Row{} : rivals_[slot_[*condition.pre_event]];
    Row consuming;
    for (const Event* consumer : condition.postset)
      if (slot_[*consumer] != base::no_index) consuming |= following_[slot_[*consumer]];
    for (const Event* consumer : condition.postset) {
      const std::uint32_t slot = slot_[*consumer];
      if (slot != base::no_index) rivals_[slot] |= inherited | (consuming & ~following_[slot]);
    }
  }

  void compare(const Comparison& comparison) {
    const std::uint32_t slot = slot_[*comparison.edge];
    const Row related = rivals_[slot] | following_[slot];
    for (std::size_t bit = comparison.begin; bit < comparison.end; ++bit) {
      if (related.test(bit)) continue;
      if (!is_signed(*comparison.edge) && !is_signed(*edges_[bit])) continue;
      assert(comparison.edge->transition->signal == edges_[bit]->transition->signal);
      found_.emplace(comparison.edge, edges_[bit]);
      return;
    }
  }

  const std::vector<Event*>& order_;
  base::IndexedBy<Event, std::uint32_t> position_;  // in the order

  std::vector<Event*> edges_;  // by bit; those of a family are neighbours, causes first
  std::vector<Comparison> comparisons_;
  Row is_followed_by_kin_;          // the next bit is an edge of the same family
  bool has_whole_families_ = true;  // all that is compared has a bit

  base::IndexedBy<Event, std::uint32_t> slot_;  // of a visited event
  std::vector<Event*> visited_;                 // by slot
  std::vector<Row> following_;                  // by slot: the event itself, edges that follow it
  std::vector<Row> rivals_;                     // by slot: edges in conflict with the event
  std::vector<std::uint32_t> open_;             // heap of positions
  std::vector<std::uint32_t> walked_;           // positions of the events with their causes visited
  base::MarkSet<Condition> is_shared_;
  std::optional<EdgeHistory::Disorder> found_;
};

}  // namespace

std::optional<EdgeHistory::Disorder> find_concurrent_edges(const StgPrefix& prefix,
                                                           const std::vector<Event*>& order,
                                                           const EdgeHistory& history) {
  constexpr std::size_t few = 64;  // narrow sets are faster for the many small families
  FamilySearch search(prefix, order, history);
  std::vector<Family> families = search.run();
  const auto large = std::ranges::stable_partition(
      families, [](const Family family) { return family.size() <= few; });
  const std::span<const Family> small(families.begin(), large.begin());
  std::optional<EdgeHistory::Disorder> found;
  if (!small.empty()) found = CoEdgeSearch<few>(prefix, order).run(small);
  if (!large.empty() && !found) found = CoEdgeSearch<512>(prefix, order).run(large);
  return found;
}

}  // namespace vorel::net
