// unfolder/flat_net.h - a net as arrays of numbers, the form in which the unfolder reads it.
// Here:      presets, postsets, consumers, what firing does to the state.
// Not here:  names (they stay in the net).
// A state is a marking and, for an STG, the parity of each signal's edges; two states are equal if
// both are.
#pragma once

#include <cassert>
#include <cstdint>
#include <span>
#include <vector>

#include "net/net.h"

namespace vorel::unfolder {

using PlaceId = std::uint32_t;
using TransitionId = std::uint32_t;

// Lists of numbers, one per owner, in one array.
class NumberLists {
 public:
  NumberLists() : first_{0} {}
  void append_list(std::span<const std::uint32_t> list) {
    items_.insert(items_.end(), list.begin(), list.end());
    first_.push_back(static_cast<std::uint32_t>(items_.size()));
  }
  std::span<const std::uint32_t> operator[](std::uint32_t owner) const {
    assert(owner + 1 < first_.size());
    return std::span(items_).subspan(first_[owner], first_[owner + 1] - first_[owner]);
  }

 private:
  std::vector<std::uint32_t> items_, first_;
};

// Fingerprint of a state. The token part is a sum over the firings, the parity part an
// exclusive or; equal states have equal fingerprints, not the other way round.
struct StateHash {
  std::uint64_t tokens = 0, parity = 0;

  void add(const StateHash& firing) {
    tokens += firing.tokens;
    parity ^= firing.parity;
  }
  std::uint64_t value() const {
    return (tokens ^ (parity * 0x9E3779B97F4A7C15u)) * 0xD6E8FEB86659FD93u;
  }
  bool operator==(const StateHash&) const = default;
};

struct FlatNet {
  std::uint32_t place_count = 0, transition_count = 0, signal_count = 0;
  NumberLists preset, postset;         // by transition, places in order
  NumberLists consumers;               // by place, transitions in order
  std::vector<PlaceId> marked;         // initially, in order
  std::vector<std::uint32_t> signal;   // by transition; no_index for a dummy and in a plain net
  std::vector<std::uint8_t> is_dummy;  // by transition
  std::vector<StateHash> firing_hash;  // by transition: what firing adds to the fingerprint
};

// N is Net or Stg; places and transitions must be numbered.
template <class N>
FlatNet flatten(const N& net);

}  // namespace vorel::unfolder
