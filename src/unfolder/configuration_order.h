// unfolder/configuration_order.h - adequate orders, and the test whether an event is a cut-off.
// Here:      size and state of a local configuration, comparing two of equal final state.
// Not here:  the table of final states (unfolder/final_states.h).
#pragma once

#include <compare>
#include <cstdint>
#include <span>
#include <vector>

#include "unfolder/branching_process.h"
#include "unfolder/local_histories.h"
#include "unfolder/past_difference.h"
#include "unfolder/unfold_options.h"

namespace vorel::unfolder {

// Scratch of one worker.
class ConfigurationOrder {
 public:
  ConfigurationOrder(const BranchingProcess& process, const UnfoldOptions& options);

  // What is found in histories need not be walked for; null for none.
  void use(const LocalHistories* histories) { histories_ = histories; }

  // Fills in size, depth, dummies and state of a new event from its transition and preset.
  void measure(UnfoldedEvent& event);
  // Of the event measured last: who produces what it consumes, each event once, in any order.
  std::span<const EventId> causes() const { return causes_; }

  // What the order says of the local configuration of the new event e and that of f.
  struct Comparison {
    bool equal_states = false;
    int order = 0;  // of e against f: -1, 0 (equal or incomparable), +1; after the rules on dummies
  };
  Comparison compare(EventId e, EventId f);

  // Against the empty configuration, whose state is the initial one: equal states, and whether the
  // rule on dummies lets e be a cut-off.
  Comparison compare_to_empty(EventId e);

  // Of any two configurations, each the past of some events.
  Comparison compare(std::span<const EventId> e, std::span<const EventId> f);

  std::uint64_t comparisons() const { return comparisons_; }

 private:
  // Collects the events that only one of the two pasts has.
  void find_difference(std::span<const EventId> e, std::span<const EventId> f);
  bool differences_cancel();
  int by_order();
  int by_transitions();
  int by_levels();
  int by_counts(std::span<const EventId> e_part, std::span<const EventId> f_part);
  int respecting_dummies(EventId e, EventId f, int order) const;

  const BranchingProcess& process_;
  const FlatNet& net_;
  const UnfoldOptions options_;
  PastDifference difference_;
  const LocalHistories* histories_ = nullptr;
  std::vector<std::uint32_t> scratch_;  // of histories_
  std::vector<EventId> causes_;
  std::vector<EventId> e_only_, f_only_;
  std::vector<std::int32_t> balance_;   // by place, signal or transition; all 0 between uses
  std::vector<std::uint32_t> touched_;  // entries of balance_ that may not be 0
  std::uint64_t comparisons_ = 0;
};

}  // namespace vorel::unfolder
