// synthesis/trigger_table.h - which signals make a signal change.
#pragma once

#include <vector>

#include "configuration/state_structure.h"
#include "synthesis/function_phase.h"

namespace vorel::synthesis {

// The triggers of a signal's edges: the signals of the last edges before them, dummies looked
// through. A signal can be its own trigger. Inputs have no entry.
class TriggerTable {
 public:
  explicit TriggerTable(const configuration::StateStructure<net::StgPrefix>& structure);

  // Of the rising edges, of the falling ones, or of both.
  const SignalList& triggers(SignalFunction function) const;

 private:
  struct Entry {
    SignalList rising, falling, all;
  };
  base::IndexedBy<net::Signal, Entry> entries_;
};

}  // namespace vorel::synthesis
