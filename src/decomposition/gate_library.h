// decomposition/gate_library.h - the gates that functions are mapped onto.
// Here:      reading a library, its cheapest gates of the basic kinds, areas, the list of gates.
// Not here:  the format (toolkit/genlib_reader.h), what a gate does to its output
//            (decomposition/gate_covers.h), which gate implements a function.
//
// Wherever one of several gates is taken, it is the first by area, then combinational gates before
// latches, then by name. Clocked latches are known by name only: in a circuit without a clock their
// functions, which do not mention it, do not hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/library_gate.h"

namespace vorel::decomposition {

// The gates of the file, plain or gzipped, in its order; those of the built-in text if the name is
// empty. nullopt after an error: `cannot open "NAME" for input`, `incorrect syntax of NAME`.
std::optional<std::vector<toolkit::LibraryGate>> read_gates(const std::string& file_name);

// Whether a circuit may be built with the gate: it needs no clock, and "**wire**" is no gate at
// all.
bool is_usable(const toolkit::LibraryGate& gate);

class GateLibrary {
 public:
  // As read_gates. nullopt after an error, of its own `the gate "NAME" is not in the library` for
  // each of the basic gates that is missing.
  static std::optional<GateLibrary> read(const std::string& file_name);

  // The cheapest gates of one input with its function, and with its complement.
  const std::string& buffer_name() const { return buffer_name_; }
  const std::string& inverter_name() const { return inverter_name_; }

  // The unit of area. May be 0.
  double inverter_area() const { return inverter_area_; }
  // Of a function that has no gate: 0 below two literals, then linear. It falls where a NAND of two
  // inputs is smaller than an inverter.
  double literal_area(std::size_t literals) const;

  // The names of the gates with at most so many inputs, without feedback; the smallest area first.
  std::vector<std::string> gate_list(std::uint32_t max_gate_inputs, bool use_latches) const;

  // Of a gate that is in the library.
  const toolkit::LibraryGate& gate(std::string_view name) const;
  double area(std::string_view name) const { return gate(name).area; }

 private:
  explicit GateLibrary(std::vector<toolkit::LibraryGate> gates);

  bool choose_basic_gates();
  void derive_areas();
  const toolkit::LibraryGate* find_by_function(std::string_view equation) const;
  const toolkit::LibraryGate* find_one_input_gate(bool inverts) const;

  std::vector<toolkit::LibraryGate> gates_;  // in the order in which they are taken
  std::map<std::string, std::size_t, std::less<>> number_of_;
  std::string buffer_name_, inverter_name_;
  double inverter_area_ = -1.0, literal_slope_ = -1.0, literal_offset_ = -1.0;
};

}  // namespace vorel::decomposition
