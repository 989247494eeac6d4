// synthesis/trigger_table.h - which signals make a signal change.
#pragma once

#include <vector>

#include "configuration/state_literals.h"
#include "synthesis/function_phase.h"
#include "synthesis/support_search.h"

namespace vorel::synthesis {

// The triggers of a signal's edges: the signals of the last edges before them, dummies looked
// through. A signal can be its own trigger. Inputs have no entry.
class TriggerTable {
 public:
  explicit TriggerTable(const configuration::StateStructure& structure);

  // Of the rising edges, of the falling ones, or of both.
  const SignalList& triggers(std::uint32_t signal, FunctionPhase phase) const;

 private:
  struct Entry {
    SignalList rising, falling, all;
  };
  std::vector<Entry> entries_;  // by signal number
};

}  // namespace vorel::synthesis
