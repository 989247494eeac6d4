// base/chains.h - numbers each of which follows one other number, or none.
// Here:      which number lies on the way to another one, and where two ways part.
// Not here:  what the numbers stand for.
//
// Each number knows the one before it and some other one further back, chosen so that any number on
// the way is found in a logarithm of its length [Myers-1983].
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vorel::base {

class Chains {
 public:
  // The numbers are 1 and up; 0 comes before all that follow none. `count` includes it.
  explicit Chains(std::size_t count = 1) : links_(count) {}

  std::size_t size() const { return links_.size(); }
  // Places a number behind another one, which has been placed itself or is 0.
  void place(std::uint32_t number, std::uint32_t before) {
    const std::uint32_t jump = links_[before].jump;
    // Two equal jumps in a row are joined into one of twice the length.
    const bool equal_jumps = depth(before) - depth(jump) == depth(jump) - depth(links_[jump].jump);
    links_[number] = {depth(before) + 1, before, equal_jumps ? links_[jump].jump : before};
  }
  // Places a new highest number.
  void append(std::uint32_t before) {
    links_.emplace_back();
    place(static_cast<std::uint32_t>(links_.size() - 1), before);
  }

  std::uint32_t before(std::uint32_t number) const { return links_[number].before; }
  // 0 has the depth 0.
  std::uint32_t depth(std::uint32_t number) const { return links_[number].depth; }
  std::uint32_t at_depth(std::uint32_t number, std::uint32_t sought) const {
    assert(sought <= depth(number));
    while (depth(number) > sought) {
      const Link& link = links_[number];
      number = depth(link.jump) >= sought ? link.jump : link.before;
    }
    return number;
  }
  // The first is on the way to the second, or both are the same.
  bool is_on_way(std::uint32_t first, std::uint32_t second) const {
    return depth(first) <= depth(second) && at_depth(second, depth(first)) == first;
  }
  // The last number on the ways to both.
  std::uint32_t parting(std::uint32_t a, std::uint32_t b) const {
    if (depth(a) < depth(b)) std::swap(a, b);
    a = at_depth(a, depth(b));
    while (a != b) {
      // Numbers of one depth jump equally far.
      const bool jumps = links_[a].jump != links_[b].jump;
      a = jumps ? links_[a].jump : links_[a].before;
      b = jumps ? links_[b].jump : links_[b].before;
    }
    return a;
  }

 private:
  struct Link {
    std::uint32_t depth = 0, before = 0, jump = 0;
  };
  std::vector<Link> links_;
};

}  // namespace vorel::base
