#include "decomposition/gate_library.h"

#include <algorithm>
#include <cassert>
#include <tuple>

#include "base/input_text.h"
#include "base/messages.h"
#include "decomposition/internal_gate_library.h"
#include "toolkit/gate_expression.h"
#include "toolkit/genlib_reader.h"

namespace vorel::decomposition {
namespace {

constexpr std::string_view wire_name = "**wire**";  // stands for no gate at all

// What a library is searched for is told by equations in its own format.
constexpr std::string_view nand2 = "o=!(i1*i2);", nor2 = "o=!(i1+i2);";
constexpr std::string_view two_input_primitives[] = {
    "o=i1+i2;", nor2, "o=i1*i2;", nand2, "o=!(!i1+i2);", "o=!(!i1*i2);",
};

auto order_of(const toolkit::LibraryGate& gate) {
  return std::tie(gate.area, gate.gate_class, gate.name);
}
static_assert(toolkit::GateClass::combinational < toolkit::GateClass::asynchronous_latch);

bool report_missing(std::string_view name) {
  base::print_error(std::string("the gate \"").append(name).append("\" is not in the library"));
  return false;
}

toolkit::GateEquation parsed(std::string_view equation) {
  toolkit::GateEquation result;
  toolkit::GenlibCursor cursor(equation, "an equation of this program");
  [[maybe_unused]] const bool is_correct = toolkit::parse_gate_equation(cursor, result);
  assert(is_correct);
  return result;
}

}  // namespace

bool is_usable(const toolkit::LibraryGate& gate) {
  return gate.name != wire_name && gate.gate_class != toolkit::GateClass::clocked_latch;
}

std::optional<std::vector<toolkit::LibraryGate>> read_gates(const std::string& file_name) {
  if (file_name.empty()) {
    return toolkit::read_genlib(internal_gate_library_text,
                                std::string(internal_gate_library_name));
  }
  std::string text;
  if (!base::read_whole_file(file_name, text)) return std::nullopt;
  return toolkit::read_genlib(text, file_name);
}

GateLibrary::GateLibrary(std::vector<toolkit::LibraryGate> gates) : gates_{std::move(gates)} {
  std::ranges::sort(gates_, {}, order_of);
  for (std::size_t i = 0; i < gates_.size(); ++i) number_of_.emplace(gates_[i].name, i);
  assert(number_of_.size() == gates_.size() && "the reader gives every name once");
}

const toolkit::LibraryGate& GateLibrary::gate(std::string_view name) const {
  const auto found = number_of_.find(name);
  assert(found != number_of_.end() && "a gate of the library");
  return gates_[found->second];
}

double GateLibrary::literal_area(std::size_t literals) const {
  return literals < 2 ? 0 : static_cast<double>(literals) * literal_slope_ + literal_offset_;
}

std::vector<std::string> GateLibrary::gate_list(std::uint32_t max_gate_inputs,
                                                bool use_latches) const {
  std::vector<std::string> names;
  for (const toolkit::LibraryGate& gate : gates_) {
    const bool is_latch = gate.gate_class != toolkit::GateClass::combinational;
    if (!is_usable(gate) || gate.input_count() > max_gate_inputs) continue;
    if (use_latches || !is_latch) names.push_back(gate.name);
  }
  return names;
}

// The first gate with the function, its pins in any order and under any names.
const toolkit::LibraryGate* GateLibrary::find_by_function(std::string_view equation) const {
  const toolkit::GateEquation sought = parsed(equation);
  const auto pin_count = static_cast<std::uint32_t>(sought.pins.size());
  const toolkit::TruthTable table = toolkit::truth_table(sought.function, pin_count);
  const auto found = std::ranges::find_if(gates_, [&](const toolkit::LibraryGate& gate) {
    return is_usable(gate) && gate.gate_class == toolkit::GateClass::combinational &&
           gate.pin_count() == pin_count &&
           toolkit::equal_up_to_pin_order(table, toolkit::truth_table(gate.function, pin_count),
                                          pin_count);
  });
  return found == gates_.end() ? nullptr : &*found;
}

const toolkit::LibraryGate* GateLibrary::find_one_input_gate(bool inverts) const {
  const toolkit::GateFunction input{{{toolkit::GateOperator::pin, 0}}};
  const auto found = std::ranges::find_if(gates_, [&](const toolkit::LibraryGate& gate) {
    if (!is_usable(gate) || gate.input_count() != 1) return false;
    toolkit::TruthTable expected = toolkit::truth_table(input, gate.pin_count());
    if (inverts) expected.front() = ~expected.front();
    return toolkit::truth_table(gate.function, gate.pin_count()) == expected;
  });
  return found == gates_.end() ? nullptr : &*found;
}

// Reports all that are missing.
bool GateLibrary::choose_basic_gates() {
  const bool has_constant_0 = find_by_function("o=0;") != nullptr || report_missing("const0");
  const bool has_constant_1 = find_by_function("o=1;") != nullptr || report_missing("const1");
  const toolkit::LibraryGate* const buffer = find_one_input_gate(false);
  const toolkit::LibraryGate* const inverter = find_one_input_gate(true);
  if (buffer != nullptr) buffer_name_ = buffer->name;
  if (inverter != nullptr) inverter_name_ = inverter->name;
  const bool has_buffer = buffer != nullptr || report_missing("buffer");
  const bool has_inverter = inverter != nullptr || report_missing("inverter");
  const bool has_primitive = std::ranges::any_of(two_input_primitives,
                                                 [this](std::string_view equation) {
                                                   return find_by_function(equation) != nullptr;
                                                 }) ||
                             report_missing("[n]or2[_1]/[n]and2[_1]");
  return has_constant_0 && has_constant_1 && has_buffer && has_inverter && has_primitive;
}

void GateLibrary::derive_areas() {
  inverter_area_ = area(inverter_name_);
  const toolkit::LibraryGate* primitive = find_by_function(nand2);
  if (primitive == nullptr) primitive = find_by_function(nor2);
  literal_slope_ = primitive != nullptr ? primitive->area - inverter_area_ : inverter_area_ * 0.5;
  literal_offset_ = literal_slope_ < inverter_area_ ? inverter_area_ - literal_slope_ : 0;
}

std::optional<GateLibrary> GateLibrary::read(const std::string& file_name) {
  auto gates = read_gates(file_name);
  if (!gates) return std::nullopt;
  GateLibrary library(std::move(*gates));
  if (!library.choose_basic_gates()) return std::nullopt;
  library.derive_areas();
  return library;
}

}  // namespace vorel::decomposition
