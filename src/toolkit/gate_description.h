// toolkit/gate_description.h - what the statements of a library say about one gate.
// Here:      what a description must hold to be a gate; the order of the pins.
// Not here:  the statements (toolkit/genlib_reader.h).
#pragma once

#include <string_view>
#include <vector>

#include "toolkit/gate_expression.h"
#include "toolkit/genlib_cursor.h"
#include "toolkit/library_gate.h"

namespace vorel::toolkit {

// Texts are parts of the library.
struct GateDescription {
  std::string_view name;
  double area = 0;
  bool is_latch = false;
  GateEquation equation;
  std::vector<std::string_view> declared_pins;  // by PIN, in order, "*" among them
  std::string_view control;                     // by CONTROL; empty without one
  // By SEQ, which every latch has: empty without one, the class then being combinational. The
  // feedback is "ANY" if the latch does not see its own value.
  std::string_view sequence_output, feedback;
  GateClass gate_class = GateClass::combinational;
};

inline constexpr std::string_view any_pin = "*", no_feedback = "ANY";

// False after an error, which the cursor has told.
bool make_gate(const GateDescription& description, const GenlibCursor& cursor, LibraryGate& gate);

}  // namespace vorel::toolkit
