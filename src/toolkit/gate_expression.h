// toolkit/gate_expression.h - the equation that gives a gate's function.
// Here:      "O = !(A * B + C');", read into steps, with pins in the order in which they occur.
// Not here:  which pins a gate declares (toolkit/genlib_reader.h).
//
//   equation  = name "=" sum ";" .
//   sum       = exclusive { ( "+" | "|" ) exclusive } .
//   exclusive = product { "^" product } .
//   product   = factor { [ "*" | "&" ] factor } .
//   factor    = { "!" } ( name | "(" sum ")" ) { "'" } .
//
// CONST0 and 0, CONST1 and 1 are constants. After a factor, GATE, LATCH and PIN are the next
// statement. A gate has at most most_gate_pins, and brackets nest at most most_nested_brackets
// deep, which is far beyond any real cell.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "toolkit/gate_function.h"
#include "toolkit/genlib_cursor.h"

namespace vorel::toolkit {

inline constexpr std::uint32_t most_gate_pins = 1000;
inline constexpr std::uint32_t most_nested_brackets = 500;

struct GateEquation {
  std::string_view output;             // parts of the text, as are the pins
  std::vector<std::string_view> pins;  // without repetition
  GateFunction function;
};

// False after an error, which the cursor has told.
bool parse_gate_equation(GenlibCursor& cursor, GateEquation& equation);

}  // namespace vorel::toolkit
