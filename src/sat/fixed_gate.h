// sat/fixed_gate.h - the normal form of the gates with exactly three or four inputs.
// Here:      folding by truth table: whatever becomes of a gate whose inputs are constant, equal or
//            complementary is read off the function that remains.
// Not here:  gates of any number of inputs (sat/gate.h), from where this is called.
#pragma once

#include "sat/gate.h"

namespace vorel::sat {

// normalise() for GateMaj to GateCmpXor.
bool normalise_fixed_gate(Gate& gate);

}  // namespace vorel::sat
