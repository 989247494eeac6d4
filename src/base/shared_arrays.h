// base/shared_arrays.h - many arrays of numbers, all of one length, that have most in common.
// Here:      trees that share the parts in which arrays agree; what two arrays differ in.
// Not here:  what the numbers mean, and which array belongs to whom.
//
// An array is a tree of nodes with 16 children each, whose leaves hold the numbers; a number that
// is 0, or a part that holds nothing else, takes no memory. An array never changes once others may
// share it: a copy with one more number has new nodes on the way to it alone [DSST-1989]. Arrays
// are merged and compared in the time of where they differ: parts that are the same node are passed
// over. Parts that differ in many numbers, of which one has the right one everywhere, tend to meet
// again when more is added elsewhere: some of these meetings are remembered. Nodes are never
// given back one by one; whoever runs out of memory copies what is needed to a new object by
// SharedArrayMover, and drops the old one.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vorel::base {

class SharedArrays {
 public:
  using Array = std::uint32_t;  // the number of the root
  static constexpr Array zeros = 0;
  static constexpr std::uint32_t fan_out = 16;

  // `length`: the numbers in each array.
  explicit SharedArrays(std::uint32_t length) : length_{length} {
    while (std::uint64_t{top_span_} * fan_out < length) top_span_ *= fan_out;
    new_node({});
  }

  std::uint32_t length() const { return length_; }
  // 64 bytes each.
  std::uint32_t node_count() const { return node_count_; }

  std::uint32_t at(Array array, std::uint32_t position) const {
    assert(position < length_);
    std::uint32_t found = array;
    for (std::uint32_t span = top_span_; found != 0; span /= fan_out) {
      found = node(found)[position / span];
      position %= span;
      if (span == 1) break;
    }
    return found;
  }

  // `own`: the node count before anything of this array was made that no other array shares; these
  // nodes are changed, all others copied. The present node count is always right.
  void set(Array& array, std::uint32_t position, std::uint32_t value, std::uint32_t own) {
    assert(position < length_);
    set_below(array, top_span_, position, value, own);
  }

  // Forgets the arrays that have been made since there were so many nodes, which takes no time.
  void forget_since(std::uint32_t own) {
    assert(own > zeros && own <= node_count_);
    node_count_ = own;
  }

  // One array of several, which are taken away. Of numbers that differ, neither of them 0, the
  // first and the second go to combine(position, first, second), which is one of both, and always
  // the same one for these two in this order: it may not be asked again. `own`: as for set(), from
  // now on as well; what is forgotten later begins there or behind it.
  template <class Combine>
  Array merge(std::vector<Array>& arrays, std::uint32_t own, const Combine& combine) {
    const Array merged = merge_below(arrays, 0, top_span_, 0, own, combine);
    assert(arrays.empty());
    return merged;
  }

  // Calls accept(position, in_a, in_b) for the numbers below `end` that differ, neither of them 0,
  // until it is false, which is then the result.
  template <class Accept>
  bool agree(Array a, Array b, std::uint32_t end, const Accept& accept) const {
    assert(end <= length_);
    return a == b || a == 0 || b == 0 || agree_below(a, b, top_span_, 0, end, accept);
  }

  // Calls visit(number, largest) for each number of `array` that is not the largest of the arrays
  // in `others` and itself. `others` is taken away.
  template <class Visit>
  void visit_larger(Array array, std::vector<Array>& others, const Visit& visit) const {
    visit_larger_below(array, top_span_, 0, others, visit);
  }

 private:
  friend class SharedArrayMover;

  // A leaf holds numbers, the others hold nodes; 0: nothing below.
  using Node = std::array<std::uint32_t, fan_out>;
  static constexpr std::uint32_t chunk_size = 4096;

  // Two nodes that were merged, in this order, into one of them.
  struct Meeting {
    std::uint32_t a = 0, b = 0, larger = 0;
  };
  static constexpr std::size_t meeting_count = std::size_t{1} << 14;  // 192 kB

  // Where the meeting of the two is remembered, if no other one has taken its place.
  Meeting& meeting_of(std::uint32_t a, std::uint32_t b) {
    if (meetings_.empty()) meetings_.resize(meeting_count);
    const std::uint64_t hash = (std::uint64_t{a} << 32 | b) * 0x9e3779b97f4a7c15u;
    return meetings_[hash >> (64 - std::bit_width(meeting_count - 1))];
  }

  Node& node(std::uint32_t id) { return chunks_[id / chunk_size][id % chunk_size]; }
  const Node& node(std::uint32_t id) const { return chunks_[id / chunk_size][id % chunk_size]; }

  // The content may be that of a node: nodes stay where they are.
  std::uint32_t new_node(const Node& content) {
    if (node_count_ / chunk_size == chunks_.size()) {
      chunks_.push_back(std::make_unique_for_overwrite<Node[]>(chunk_size));
    }
    node(node_count_) = content;
    return node_count_++;
  }

  // `span`: the numbers below each child of the node.
  void set_below(std::uint32_t& id, std::uint32_t span, std::uint32_t position, std::uint32_t value,
                 std::uint32_t own) {
    if (id < own || id == 0) id = new_node(node(id));
    const std::uint32_t child = position / span;
    assert(child < fan_out);
    if (span == 1) {
      node(id)[child] = value;
      return;
    }
    std::uint32_t below = node(id)[child];
    set_below(below, span / fan_out, position % span, value, own);
    node(id)[child] = below;
  }

  // Leaves each of those from `begin` on once, and zeros out; many are sorted, a few stay in order.
  static void keep_different(std::vector<std::uint32_t>& merging, std::size_t begin) {
    constexpr std::ptrdiff_t few = 8;
    const auto first = merging.begin() + static_cast<std::ptrdiff_t>(begin);
    auto last = std::remove(first, merging.end(), 0u);
    if (last - first > few) {
      std::sort(first, last);
      last = std::unique(first, last);
    } else {
      auto kept = first;
      for (auto it = first; it != last; ++it) {
        if (std::find(first, kept, *it) == kept) *kept++ = *it;
      }
      last = kept;
    }
    merging.erase(last, merging.end());
  }

  // Makes one node of those in `merging` from `begin` on, which it takes away.
  template <class Combine>
  std::uint32_t merge_below(std::vector<std::uint32_t>& merging, std::size_t begin,
                            std::uint32_t span, std::uint32_t first, std::uint32_t own,
                            const Combine& combine);
  template <class Combine>
  std::uint32_t merge_two(std::uint32_t a, std::uint32_t b, std::uint32_t span, std::uint32_t first,
                          std::uint32_t own, const Combine& combine);
  template <class Accept>
  bool agree_below(std::uint32_t a, std::uint32_t b, std::uint32_t span, std::uint32_t first,
                   std::uint32_t end, const Accept& accept) const;
  template <class Visit>
  void visit_larger_below(std::uint32_t id, std::uint32_t span, std::size_t begin,
                          std::vector<std::uint32_t>& others, const Visit& visit) const;

  std::uint32_t length_ = 0;
  std::uint32_t top_span_ = 1;  // numbers below each child of a root
  std::vector<std::unique_ptr<Node[]>> chunks_;
  std::uint32_t node_count_ = 0;   // the first is none
  std::vector<Meeting> meetings_;  // of nodes that never change; empty before the first
};

// Copies arrays to another object of the same length; what they share is copied once.
class SharedArrayMover {
 public:
  // Both outlive the mover.
  SharedArrayMover(const SharedArrays& from, SharedArrays& to)
      : from_{from}, to_{to}, moved_(from.node_count()) {
    assert(from.length() == to.length());
  }

  SharedArrays::Array move(SharedArrays::Array array) { return move_below(array, from_.top_span_); }

 private:
  std::uint32_t move_below(std::uint32_t id, std::uint32_t span) {
    if (id == 0 || moved_[id] != 0) return moved_[id];
    SharedArrays::Node copy = from_.node(id);
    if (span > 1) {
      for (std::uint32_t& child : copy) child = move_below(child, span / SharedArrays::fan_out);
    }
    return moved_[id] = to_.new_node(copy);
  }

  const SharedArrays& from_;
  SharedArrays& to_;
  std::vector<std::uint32_t> moved_;  // by node; 0: not yet
};

template <class Combine>
std::uint32_t SharedArrays::merge_below(std::vector<std::uint32_t>& merging, std::size_t begin,
                                        std::uint32_t span, std::uint32_t first, std::uint32_t own,
                                        const Combine& combine) {
  keep_different(merging, begin);
  const std::size_t end = merging.size();
  std::uint32_t result = 0;
  if (end == begin + 1) {
    result = merging[begin];
  } else if (end == begin + 2) {
    result = merge_two(merging[begin], merging[begin + 1], span, first, own, combine);
  } else if (end > begin) {
    Node merged{};
    for (std::uint32_t k = 0; k < fan_out; ++k) {
      if (span > 1) {
        for (std::size_t i = begin; i < end; ++i) merging.push_back(node(merging[i])[k]);
        merged[k] = merge_below(merging, end, span / fan_out, first + k * span, own, combine);
        continue;
      }
      for (std::size_t i = begin; i < end; ++i) {
        const std::uint32_t value = node(merging[i])[k];
        if (value == merged[k] || value == 0) continue;
        merged[k] = merged[k] == 0 ? value : combine(first + k, merged[k], value);
      }
    }
    const auto same = std::find_if(merging.begin() + static_cast<std::ptrdiff_t>(begin),
                                   merging.begin() + static_cast<std::ptrdiff_t>(end),
                                   [&](std::uint32_t id) { return node(id) == merged; });
    result = same != merging.begin() + static_cast<std::ptrdiff_t>(end) ? *same : new_node(merged);
  }
  merging.resize(begin);
  return result;
}

template <class Combine>
std::uint32_t SharedArrays::merge_two(std::uint32_t a, std::uint32_t b, std::uint32_t span,
                                      std::uint32_t first, std::uint32_t own,
                                      const Combine& combine) {
  assert(a != b && a != 0 && b != 0);
  Meeting& met = meeting_of(a, b);
  if (met.a == a && met.b == b) return met.larger;
  const Node& in_a = node(a);
  const Node& in_b = node(b);
  Node merged;
  bool is_a = true, is_b = true;
  for (std::uint32_t k = 0; k < fan_out; ++k) {
    if (in_a[k] == in_b[k] || in_b[k] == 0) {
      merged[k] = in_a[k];
    } else if (in_a[k] == 0) {
      merged[k] = in_b[k];
    } else if (span > 1) {
      merged[k] = merge_two(in_a[k], in_b[k], span / fan_out, first + k * span, own, combine);
    } else {
      merged[k] = combine(first + k, in_a[k], in_b[k]);
    }
    is_a = is_a && merged[k] == in_a[k];
    is_b = is_b && merged[k] == in_b[k];
  }
  if (!is_a && !is_b) return new_node(merged);
  const std::uint32_t larger = is_a ? a : b;
  if (a < own && b < own) met = {a, b, larger};
  return larger;
}

template <class Accept>
bool SharedArrays::agree_below(std::uint32_t a, std::uint32_t b, std::uint32_t span,
                               std::uint32_t first, std::uint32_t end, const Accept& accept) const {
  if (first >= end) return true;
  const Node& in_a = node(a);
  const Node& in_b = node(b);
  const std::uint32_t children = std::min(fan_out, (end - first + span - 1) / span);
  for (std::uint32_t k = 0; k < children; ++k) {
    if (in_a[k] == in_b[k] || in_a[k] == 0 || in_b[k] == 0) continue;
    const std::uint32_t position = first + k * span;
    if (!(span > 1 ? agree_below(in_a[k], in_b[k], span / fan_out, position, end, accept)
                   : accept(position, in_a[k], in_b[k]))) {
      return false;
    }
  }
  return true;
}

template <class Visit>
void SharedArrays::visit_larger_below(std::uint32_t id, std::uint32_t span, std::size_t begin,
                                      std::vector<std::uint32_t>& others,
                                      const Visit& visit) const {
  const auto first = others.begin() + static_cast<std::ptrdiff_t>(begin);
  others.erase(
      std::remove_if(first, others.end(), [id](std::uint32_t o) { return o == 0 || o == id; }),
      others.end());
  const std::size_t end = others.size();
  for (std::uint32_t k = 0; k < fan_out && begin < end; ++k) {
    const std::uint32_t own = node(id)[k];
    if (span > 1) {
      for (std::size_t i = begin; i < end; ++i) others.push_back(node(others[i])[k]);
      visit_larger_below(own, span / fan_out, end, others, visit);
      continue;
    }
    std::uint32_t largest = own;
    for (std::size_t i = begin; i < end; ++i) largest = std::max(largest, node(others[i])[k]);
    if (largest != own) visit(own, largest);
  }
  others.resize(begin);
}

}  // namespace vorel::base
