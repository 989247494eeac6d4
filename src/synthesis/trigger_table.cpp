#include "synthesis/trigger_table.h"

#include <cassert>

#include "base/sort_unique.h"
#include "configuration/triggers.h"

namespace vorel::synthesis {
TriggerTable::TriggerTable(const configuration::StateStructure<net::StgPrefix>& structure)
    : entries_(structure.process().internals_end) {
  const net::StgPrefix& prefix = structure.process();
  configuration::TriggerFinder finder(prefix);
  for (const net::SignalId signal : prefix.driven_signals()) {
    Entry& entry = entries_[signal];
    const bool starts_high = base::element(prefix.signals, signal).initial_value == 1;
    for (const auto* event : structure.instances().events_of(signal)) {
      const bool is_high = starts_high != (structure.edges_before()[*event] % 2 != 0);
      SignalList& list = is_high ? entry.falling : entry.rising;
      for (const auto* trigger : finder.triggers_of(*event)) {
        list.push_back(base::id_of(*trigger->transition->signal));
      }
    }
    base::sort_unique(entry.rising);
    base::sort_unique(entry.falling);
    entry.all = entry.rising;
    entry.all.insert(entry.all.end(), entry.falling.begin(), entry.falling.end());
    base::sort_unique(entry.all);
  }
}

const SignalList& TriggerTable::triggers(SignalFunction function) const {
  const Entry& entry = entries_[function.signal];
  assert(entry.rising.size() <= entry.all.size() && entry.falling.size() <= entry.all.size());
  if (function.phase == FunctionPhase::next_state) return entry.all;
  return function.phase == FunctionPhase::set ? entry.rising : entry.falling;
}

}  // namespace vorel::synthesis
