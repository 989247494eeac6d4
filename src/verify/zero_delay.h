// verify/zero_delay.h - gates that take no time.
// Here:      which gates these are, what their outputs stand for.
// Not here:  how they become part of other gates (function_of in verify/netlist_gates.h).
#pragma once

#include <optional>
#include <vector>

#include "base/source_text.h"
#include "verify/netlist_gates.h"

namespace vorel::verify {

struct ZeroDelay {
  std::vector<bool> takes_none;         // by gate
  std::vector<WireLiteral> stands_for;  // by wire; itself, if its gate takes time
};

// `is_signal` is by wire: a gate that drives a signal takes time, with a warning if a pragma says
// otherwise. With `all_inverters` every other inverter takes none. nullopt after an error: a gate
// below a pragma has more than one input, or such gates are a cycle.
std::optional<ZeroDelay> find_zero_delay(const base::SourceText& source,
                                         const std::vector<NetlistGate>& gates,
                                         const std::vector<bool>& is_signal, bool all_inverters);

}  // namespace vorel::verify
