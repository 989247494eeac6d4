// verify/initial_values.h - initial values that nobody tells.
// Here:      those that follow from others through gates.
// Not here:  what the STG, the file and the user tell (verify/circuit_builder.h).
#pragma once

#include <optional>

#include "base/indexed_by.h"
#include "verify/circuit.h"

namespace vorel::verify {

// 0, 1 or net::unknown_value.
using WireValues = base::IndexedBy<Wire, std::uint8_t>;

// Sets unknown values: to what the gate makes of the known values of its inputs; where no gate
// decides, to that at which the gates behind the wire rest, if they agree on one. What stays
// unknown does so for all that is known; nullopt if nothing does, else such a wire, one that a gate
// holds if there is one.
std::optional<WireId> propagate_values(const Circuit& circuit, WireValues& values);

}  // namespace vorel::verify
