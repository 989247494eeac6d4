// bench/prefix_group.h - one group of a big prefix: a net with a counter, and its unfolding.
// Here:      the net of a group, and its finite complete prefix written out stage by stage.
// Not here:  many groups side by side (bench/prefix_family.h), files (bench/make_prefix.h).
//
// A group has a row of modules (bench/prefix_modules.h) and a counter with an even number of
// values. In a stage all modules run once, concurrently; when all are done, one transition counts
// and starts the row again. Modules have two sets of places and transitions, one for stages in
// which their signals rise and one for those in which they fall. The counter's value is kept by a
// token and shown by signals in a Gray code, so no two stages have a code in common. After the
// last stage the group starts again from the beginning, or ends and is dead then.
//
// The prefix in closed form: the state after an event's local configuration is the counter, the
// state of the event's module, and the starting states of the other modules. So cut-offs are those
// of the modules, in each stage, and the transition that starts the group again.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bench/prefix_modules.h"

namespace vorel::bench {

enum class GroupEnding { starts_again, ends };

struct GroupShape {
  std::vector<ModuleKind> modules;
  std::uint32_t stages = 2;  // even
  GroupEnding ending = GroupEnding::starts_again;
};

// All numbers count from 0 in the lists of the group.
struct Group {
  using Numbers = std::vector<std::uint32_t>;
  static constexpr std::int32_t no_cut_off = -2, initial_marking = -1;

  struct TransitionRow {
    std::string name;  // of its signal, the sign and an instance number, such as "m0a+/1"
    std::uint32_t signal;
    bool falls;
    Numbers preset, postset;  // places
  };
  struct ConditionRow {
    std::uint32_t place;
    std::int64_t producer;  // -1: initial
    Numbers consumers;
  };
  struct EventRow {
    std::uint32_t transition;
    std::int32_t cut_off;  // no_cut_off, initial_marking, or an event
    Numbers preset, postset;
  };

  std::vector<std::string> places;   // names
  std::vector<std::string> signals;  // names
  Numbers marked;                    // places, the first conditions in this order
  std::vector<TransitionRow> transitions;
  std::vector<ConditionRow> conditions;
  std::vector<EventRow> events;
};

Group make_group(const GroupShape& shape);

}  // namespace vorel::bench
