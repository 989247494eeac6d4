// unfolder/marked_past.h - which conditions are concurrent with some chosen ones, by marking pasts.
// Here:      the union of the chosen conditions' pasts, and whether another past fits to it.
// Not here:  the relation that answers the same from memory (unfolder/concurrency_relation.h).
//
// A condition is concurrent with all chosen ones if its past consumes nothing that theirs consume
// otherwise, nor one of them, and they do not consume it. What was found out about an event holds
// until the choice changes, so each event is looked at once for each choice. Scratch of one worker.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "unfolder/branching_process.h"

namespace vorel::unfolder {

class MarkedPast {
 public:
  explicit MarkedPast(const BranchingProcess& process) : process_{process} {}

  // Starts again with the past of an event (none: no_event), all of whose conditions are free.
  void start(EventId e);
  // Chooses a condition that fits, and takes the last choice back.
  void push(ConditionId c);
  void pop();
  // True when the condition is concurrent with all chosen ones and with those of the first event.
  bool fits(ConditionId c);

 private:
  struct Level {
    std::size_t events, conditions;  // sizes of the stacks before
  };

  void add_past(EventId e);
  void consume(ConditionId c);
  void begin_choice();
  bool past_fits(EventId e);
  // The first producer of the event's preset of which nothing is known yet, or no_event; `fits`
  // becomes false when something is known to be wrong.
  EventId unknown_cause(EventId e, bool& fits) const;

  const BranchingProcess& process_;
  std::vector<std::uint32_t> in_past_;   // by event: the round in which it was added, else old
  std::vector<std::uint32_t> consumed_;  // by condition, likewise
  std::vector<std::uint64_t>
      verdict_;                  // by event: twice the choice it was judged for, plus 1 if it fits
  std::vector<EventId> events_;  // added in this round
  std::vector<ConditionId> conditions_;  // consumed in this round
  std::vector<Level> levels_;
  std::vector<EventId> walk_;
  std::uint32_t round_ = 0;
  std::uint64_t choice_ = 0;
};

}  // namespace vorel::unfolder
