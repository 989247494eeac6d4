// resolution/logic_complexity.h - how much logic the signals of a circuit need, by their triggers.
#pragma once

#include <cstdint>
#include <vector>

#include "base/indexed_by.h"
#include "net/process.h"

namespace vorel::resolution {

// By signal: the signals that trigger some event of it (configuration/triggers.h), cut-offs
// included, by number, perhaps the signal itself. None for inputs and dummies.
using TriggerSignals = base::IndexedBy<net::Signal, std::vector<net::SignalId>>;
TriggerSignals trigger_signals(const net::StgPrefix& prefix);

// What a signal with so many trigger signals adds: the number, or 2 to the power of it in 64 bits,
// 0 from 64 on.
std::uint64_t logic_term(std::size_t triggers, bool pwr_of_2);

// The sum over the output and internal signals.
std::uint64_t logic_complexity(const TriggerSignals& triggers, const net::Stg& stg, bool pwr_of_2);
std::uint64_t logic_complexity(const net::StgPrefix& prefix, bool pwr_of_2);

}  // namespace vorel::resolution
