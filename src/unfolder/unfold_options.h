// unfolder/unfold_options.h - what the unfolder is asked to do, and what it counted.
#pragma once

#include <cstdint>

namespace vorel::unfolder {

// The adequate orders, by the number that the option `order` holds. Each refines inclusion and is
// preserved by finite extensions; the last one is total on the local configurations of a safe net.
enum class AdequateOrder : std::uint8_t {
  inclusion = 0,
  size = 1,    // number of events [McM-1993]
  parikh = 2,  // then the sorted list of transitions
  foata = 3,   // then the Foata normal form [ERV-2002]
};

struct UnfoldOptions {
  std::uint32_t number_of_threads = 1;
  AdequateOrder order = AdequateOrder::foata;
  bool no_cutoffs = false;                // leave cut-off events out of the prefix
  bool dummy_cutoffs = false;             // let dummies be cut-offs like any other event
  bool non_local_correspondents = false;  // any configuration may be a correspondent
  std::uint32_t conc_rel_size = 40000;    // conditions the concurrency relation holds; 0: none
  std::uint64_t conc_rel_memory = std::uint64_t{1} << 30;  // and the bytes it may take
  std::uint32_t history_nodes = 4u << 20;                  // of 64 bytes, without the relation
  std::uint64_t max_events = 0;                            // give up beyond; 0: no bound
  double max_seconds = 0;                                  // give up after; 0: no bound
  double seconds_before = 0;     // of max_seconds, spent before the unfolding began
  bool keep_incomplete = false;  // at a bound, end with the events found so far, without an error
};

struct UnfoldStats {
  std::uint64_t conditions = 0, events = 0, cutoffs = 0;
  std::uint64_t batches = 0, groups = 0, largest_batch = 0, largest_group_count = 0;
  std::uint64_t queue_size = 0, largest_queue_size = 0;
  std::uint64_t comparisons = 0;  // of configurations with the same final state
  bool relation_dropped = false;
  double seconds = 0;
};

}  // namespace vorel::unfolder
