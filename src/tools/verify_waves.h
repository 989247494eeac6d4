// tools/verify_waves.h - the trace of a finding as a value change dump, for viewers of waveforms.
#pragma once

#include <ostream>

#include "verify/circuit.h"
#include "verify/verification.h"

namespace vorel::tools {

// All wires, with one edge of the trace at each of the times 1, 2, ... False after an error.
bool write_waves(const verify::Circuit& circuit, const verify::Finding& finding,
                 std::ostream& stream);

}  // namespace vorel::tools
