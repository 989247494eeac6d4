// toolkit/genlib_reader.h - the reader of gate libraries in the GENLIB format [SSL-1992].
// Here:      statements, what a gate must declare, gates that are described more than once.
// Not here:  files, what a library must hold to be of use (decomposition/gate_library.h).
//
//   library    = { gate | latch } .
//   gate       = "GATE" name area equation { pin } .
//   latch      = "LATCH" name area equation { pin | sequence | control | constraint } .
//   pin        = "PIN" ( name | "*" ) ( "INV" | "NONINV" | "UNKNOWN" ) load load 4 * delay .
//   sequence   = "SEQ" output ( feedback | "ANY" ) ( "ASYNCH" | "RISING_EDGE" | "FALLING_EDGE"
//                                                   | "ACTIVE_HIGH" | "ACTIVE_LOW" ) .
//   control    = "CONTROL" name load load 4 * delay .
//   constraint = "CONSTRAINT" ( name | "*" ) setup-time hold-time .
//
// Equations are those of toolkit/gate_expression.h; line ends count as blanks. The pins of a gate
// stand in the order of their PIN statements; those that "*" declares follow as they occur in the
// equation, the feedback of a latch is the last.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/library_gate.h"

namespace vorel::toolkit {

// In the order of the text. A gate that is described more than once, always with the same function,
// is given once, with its smallest area. nullopt after the error `incorrect syntax of NAME`; what
// is wrong, and where, is a note for those who ask for diagnostics.
std::optional<std::vector<LibraryGate>> read_genlib(std::string_view text, const std::string& name);

}  // namespace vorel::toolkit
