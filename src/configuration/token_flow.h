// configuration/token_flow.h - what the transitions of a process do to the marking of its net.
// Here:      their arcs as numbers of places, the initial marking, traps that stay marked.
// Not here:  linear invariants (configuration/place_invariants.h), configurations.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "configuration/digraph.h"
#include "net/process.h"

namespace vorel::configuration {

// Only transitions with an event that is no cut-off: no other one fires in a configuration.
class TokenFlow {
 public:
  using Places = std::vector<std::uint32_t>;  // numbers, ascending
  struct Change {
    Places consumed, produced;
  };

  template <net::Process P>
  static TokenFlow of(const P& process);

  std::uint32_t place_count() const { return static_cast<std::uint32_t>(initial_.size()); }
  std::span<const Change> changes() const { return changes_; }
  bool is_initial(std::uint32_t place) const { return initial_[place]; }

  // Some of the places that are not marked, of which one is marked after every configuration: a
  // trap, to which every change that takes a token from it gives one back, and which has a token at
  // the start [Mur-1989]. Empty when there is none. Reads each arc once; then it tries to leave out
  // half of the places, a quarter and so on, at the same price, as long as the steps last, which
  // become fewer.
  Places marked_trap_outside(const std::vector<bool>& marked, std::uint64_t& steps) const;

 private:
  TokenFlow(std::vector<Change> changes, std::vector<bool> initial);
  void shrink_to_trap(std::vector<bool>& places) const;
  bool has_initial(const std::vector<bool>& places) const;
  bool leave_out(std::span<const std::uint32_t> some, std::vector<bool>& trap) const;
  Places members(const std::vector<bool>& places) const;

  std::vector<Change> changes_;
  std::vector<bool> initial_;  // by place
  Digraph producers_;          // from a place to the numbers of the changes that produce on it
  std::uint64_t arcs_ = 0;
};

}  // namespace vorel::configuration
