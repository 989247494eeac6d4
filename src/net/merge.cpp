#include "net/merge.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <vector>

#include "base/hashing.h"
#include "base/sort_unique.h"
#include "net/check.h"
#include "net/clone_net.h"
#include "net/occurrence_depth.h"

namespace vorel::net {
namespace {

using Numbers = std::vector<std::uint32_t>;

// Sequences of numbers, each once. An open-addressing table over one array that has them all.
class SequenceTable {
 public:
  SequenceTable() : slots_(smallest_slot_count, base::no_index) {}

  std::uint32_t size() const { return static_cast<std::uint32_t>(hashes_.size()); }
  std::span<const std::uint32_t> operator[](std::uint32_t number) const {
    return std::span(items_).subspan(first_[number], first_[number + 1] - first_[number]);
  }

  // The number of the sequence, which is size() before the call if it is new.
  std::uint32_t insert(std::span<const std::uint32_t> sequence) {
    if (2 * hashes_.size() >= slots_.size()) grow();
    const std::uint64_t hash = hash_of(sequence);
    std::uint32_t& slot = slots_[slot_of(sequence, hash)];
    if (slot == base::no_index) {
      slot = size();
      hashes_.push_back(hash);
      items_.insert(items_.end(), sequence.begin(), sequence.end());
      first_.push_back(items_.size());
    }
    return slot;
  }

 private:
  static constexpr std::size_t smallest_slot_count = 64;

  static std::uint64_t hash_of(std::span<const std::uint32_t> sequence) {
    std::uint64_t hash = sequence.size();
    for (const std::uint32_t item : sequence) {
      hash = base::combine_hash(hash, item);
    }
    return hash;
  }

  // Where the sequence is, or the free slot where it belongs.
  std::size_t slot_of(std::span<const std::uint32_t> sequence, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = hash & mask;
    while (slots_[slot] != base::no_index) {
      const std::uint32_t number = slots_[slot];
      if (hashes_[number] == hash && std::ranges::equal((*this)[number], sequence)) break;
      slot = (slot + 1) & mask;
    }
    return slot;
  }

  void grow() {
    slots_.assign(2 * slots_.size(), base::no_index);
    const std::size_t mask = slots_.size() - 1;
    for (std::uint32_t number = 0; number < size(); ++number) {
      std::size_t slot = hashes_[number] & mask;
      while (slots_[slot] != base::no_index) slot = (slot + 1) & mask;
      slots_[slot] = number;
    }
  }

  std::vector<std::uint32_t> slots_;   // numbers; a power of two, at most half full
  std::vector<std::uint64_t> hashes_;  // by number
  std::vector<std::uint32_t> items_;
  std::vector<std::size_t> first_ = {0};  // by number: where its items begin; then the end
};

template <class N>
class Merger {
 public:
  explicit Merger(const PrefixOf<N>& prefix)
      : prefix_{prefix}, depths_{prefix}, first_of_place_(prefix.places.size() + 1) {
    static_cast<N&>(merged_) = clone_net<N>(prefix);
  }

  MergedProcessOf<N> run() {
    add_conditions();
    mark_initial_conditions();
    for (const auto& event : prefix_.events) classify(*event);
    add_events();
    check(merged_);
    return std::move(merged_);
  }

 private:
  // A place has an mp-condition at each depth up to the largest one.
  void add_conditions() {
    const auto note = [this](const ConditionOf<N>& condition, std::uint32_t depth) {
      std::uint32_t& largest = first_of_place_[condition.place->index + 1];
      largest = std::max(largest, depth);
    };
    for (const auto& condition : prefix_.conditions) note(*condition, depths_[*condition]);
    for (const auto& event : prefix_.events) depths_.visit_postset(*event, note);
    for (const auto& place : merged_.places) {
      const std::uint32_t largest = first_of_place_[place->index + 1];
      for (std::uint32_t depth = 1; depth <= largest; ++depth) {
        auto& condition = base::append_new(merged_.conditions);
        condition.place = place.get();
        condition.occurrence_depth = static_cast<std::int32_t>(depth);
      }
      first_of_place_[place->index + 1] = static_cast<std::uint32_t>(merged_.conditions.size());
    }
  }

  std::uint32_t merged_number(const ConditionOf<N>& condition, std::uint32_t depth) const {
    const std::uint32_t number = first_of_place_[condition.place->index] + depth - 1;
    assert(number < first_of_place_[condition.place->index + 1]);
    return number;
  }

  void mark_initial_conditions() {
    for (const auto& condition : prefix_.conditions) {
      if (!condition->is_initial()) continue;
      ++merged_.conditions[merged_number(*condition, 1)]->initial_marking;
    }
  }

  // The key of an event: its transition, the size of its merged preset, and then both sets.
  void classify(const EventOf<N>& event) {
    preset_.clear();
    postset_.clear();
    for (const auto* condition : event.preset) {
      preset_.push_back(merged_number(*condition, depths_[*condition]));
    }
    depths_.visit_postset(event, [this](const ConditionOf<N>& condition, std::uint32_t depth) {
      postset_.push_back(merged_number(condition, depth));
    });
    base::sort_unique(preset_);
    base::sort_unique(postset_);
    key_.assign({event.transition->index, static_cast<std::uint32_t>(preset_.size())});
    key_.insert(key_.end(), preset_.begin(), preset_.end());
    key_.insert(key_.end(), postset_.begin(), postset_.end());
    const std::uint32_t number = keys_.insert(key_);
    if (number == is_cut_off_.size()) is_cut_off_.push_back(true);
    if (!event.is_cut_off()) is_cut_off_[number] = false;
  }

  void add_events() {
    assert(is_cut_off_.size() == keys_.size());
    merged_.events.reserve(keys_.size());
    for (std::uint32_t number = 0; number < keys_.size(); ++number) {
      const std::span<const std::uint32_t> key = keys_[number];
      const auto preset = key.subspan(2, key[1]), postset = key.subspan(2 + key[1]);
      auto& event = base::append_new(merged_.events);
      event.transition = merged_.transitions[key[0]].get();
      event.cut_off = is_cut_off_[number];
      event.preset.reserve(static_cast<std::uint32_t>(preset.size()));
      event.postset.reserve(static_cast<std::uint32_t>(postset.size()));
      for (const std::uint32_t c : preset) add_link(*merged_.conditions[c], event);
      for (const std::uint32_t c : postset) add_link(event, *merged_.conditions[c]);
    }
  }

  const PrefixOf<N>& prefix_;
  const OccurrenceDepths<N> depths_;
  MergedProcessOf<N> merged_;
  Numbers first_of_place_;  // by place: its first mp-condition; then the end
  SequenceTable keys_;      // by mp-event
  std::vector<bool> is_cut_off_;
  Numbers preset_, postset_, key_;  // of the event in hand
};

}  // namespace

template <class N>
MergedProcessOf<N> merge(const PrefixOf<N>& prefix) {
  return Merger<N>(prefix).run();
}

template NetMergedProcess merge<Net>(const NetPrefix&);
template StgMergedProcess merge<Stg>(const StgPrefix&);

}  // namespace vorel::net
