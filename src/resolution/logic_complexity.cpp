#include "resolution/logic_complexity.h"

#include "base/sort_unique.h"
#include "configuration/triggers.h"

namespace vorel::resolution {

TriggerSignals trigger_signals(const net::StgPrefix& prefix) {
  configuration::TriggerFinder finder(prefix);
  TriggerSignals triggers(prefix.signals.size());
  for (const auto& event : prefix.events) {
    const net::SignalId signal = base::id_of(*event->transition->signal);
    if (!prefix.driven_signals().contains(signal)) continue;
    for (const auto* trigger : finder.triggers_of(*event)) {
      triggers[signal].push_back(base::id_of(*trigger->transition->signal));
    }
  }
  for (auto& list : triggers) base::sort_unique(list);
  return triggers;
}

std::uint64_t logic_term(std::size_t triggers, bool pwr_of_2) {
  if (!pwr_of_2) return triggers;
  return triggers < 64 ? std::uint64_t{1} << triggers : 0;
}

std::uint64_t logic_complexity(const TriggerSignals& triggers, const net::Stg& stg, bool pwr_of_2) {
  std::uint64_t sum = 0;
  for (const net::SignalId signal : stg.driven_signals()) {
    sum += logic_term(triggers[signal].size(), pwr_of_2);
  }
  return sum;
}

std::uint64_t logic_complexity(const net::StgPrefix& prefix, bool pwr_of_2) {
  return logic_complexity(trigger_signals(prefix), prefix, pwr_of_2);
}

}  // namespace vorel::resolution
