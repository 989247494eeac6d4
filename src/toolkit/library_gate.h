// toolkit/library_gate.h - a cell of a gate library.
// Here:      what the choice of gates for a function depends on.
// Not here:  delays and loads, which are read but not used; the library (toolkit/genlib_reader.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/gate_function.h"

namespace vorel::toolkit {

enum class GateClass : std::uint8_t {
  combinational,
  asynchronous_latch,
  clocked_latch,  // it waits for a control pin, which its function does not mention
};

struct LibraryGate {
  std::uint32_t pin_count() const { return static_cast<std::uint32_t>(pins.size()); }
  std::uint32_t input_count() const { return pin_count() - (has_feedback ? 1u : 0u); }
  bool is_feedback(std::uint32_t pin) const { return has_feedback && pin + 1 == pins.size(); }

  std::string name;
  double area = 0;  // finite, not negative
  GateClass gate_class = GateClass::combinational;
  std::string output;
  std::vector<std::string> pins;  // all that the function mentions
  bool has_feedback = false;      // the last pin is the output's present value
  GateFunction function;
};

// True if the gates are of one class and, pins with the same name being the same, of one function.
// Functions of more than most_tabled_pins are only the same if they are written alike.
bool have_same_function(const LibraryGate& a, const LibraryGate& b);

}  // namespace vorel::toolkit
