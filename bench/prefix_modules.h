// bench/prefix_modules.h - the pieces that big prefixes are put together from.
// Here:      five small modules, each with its finite complete prefix written out by hand.
// Not here:  rows, stages and groups of modules (bench/prefix_family.h).
//
// A module starts with a token on each of its entry places and ends with one on each of its exit
// places; a run changes each of its signals once. The prefix lists events in the order of their
// size; a condition's number counts the entry places first, then the postsets of the events.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vorel::bench {

struct ModuleTransition {
  char signal;                       // the letter of the signal that it changes
  std::string_view preset, postset;  // names of places, apart by blanks
};

struct ModuleEvent {
  std::uint32_t transition;
  std::string_view preset;          // numbers of conditions
  std::int32_t correspondent = -1;  // the event whose state a cut-off reaches again
};

struct Module {
  std::string_view name;
  std::string_view entry;            // places
  std::string_view exit_conditions;  // numbers; those that no cut-off produces
  std::span<const ModuleTransition> transitions;
  std::span<const ModuleEvent> events;
};

enum class ModuleKind : std::uint32_t { two_orders, join, exclusion, three_orders, two_locks };
inline constexpr std::uint32_t module_kind_count = 5;

// two_orders:   signals a and b change in one of two orders, by choice: 4 events, 1 cut-off.
// join:         a and b change concurrently, then c: 3 events.
// exclusion:    two threads enter a critical section in either order: 8 events, 1 cut-off.
// three_orders: a, b and c change in one of three orders: 9 events, 2 cut-offs.
// two_locks:    two threads take two locks in opposite orders, and may wait for each other for
//               ever: 12 events, 1 cut-off. The only module with a deadlock of its own.
const Module& module_of(ModuleKind kind);

}  // namespace vorel::bench
