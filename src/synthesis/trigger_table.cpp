#include "synthesis/trigger_table.h"

#include <algorithm>

#include "configuration/triggers.h"

namespace vorel::synthesis {
namespace {

void sort_unique(SignalList& signals) {
  std::ranges::sort(signals);
  const auto repeated = std::ranges::unique(signals);
  signals.erase(repeated.begin(), repeated.end());
}

}  // namespace

TriggerTable::TriggerTable(const configuration::StateStructure& structure)
    : entries_(structure.prefix().internals_end) {
  const net::StgPrefix& prefix = structure.prefix();
  configuration::TriggerFinder finder(prefix);
  for (std::uint32_t signal = prefix.inputs_end; signal < prefix.internals_end; ++signal) {
    Entry& entry = entries_[signal];
    const bool starts_high = prefix.signals[signal]->initial_value == 1;
    for (const auto* event : structure.signal_events().of(signal)) {
      const bool is_high = starts_high != (structure.edges_before()[*event] % 2 != 0);
      SignalList& list = is_high ? entry.falling : entry.rising;
      for (const auto* trigger : finder.triggers_of(*event)) {
        list.push_back(trigger->transition->signal->index);
      }
    }
    sort_unique(entry.rising);
    sort_unique(entry.falling);
    entry.all = entry.rising;
    entry.all.insert(entry.all.end(), entry.falling.begin(), entry.falling.end());
    sort_unique(entry.all);
  }
}

const SignalList& TriggerTable::triggers(std::uint32_t signal, FunctionPhase phase) const {
  const Entry& entry = entries_[signal];
  if (phase == FunctionPhase::next_state) return entry.all;
  return phase == FunctionPhase::set ? entry.rising : entry.falling;
}

}  // namespace vorel::synthesis
