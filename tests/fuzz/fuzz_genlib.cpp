// Any bytes as a gate library in the GENLIB format.
#include <algorithm>
#include <set>

#include "base/messages.h"
#include "fuzz/fuzzing.h"
#include "support/gate_text.h"
#include "toolkit/genlib_reader.h"

namespace vorel::fuzzing {
namespace {

constexpr std::size_t most_steps = 300;  // so that brackets nest less than the reader lets them

// In quotes any character is part of a name but the quote, which only a name without blanks has.
std::string written(const std::string& name) {
  return name.find('"') == std::string::npos ? '"' + name + '"' : name;
}

std::string text_of(const toolkit::LibraryGate& gate) {
  std::vector<std::string> pins;
  for (const std::string& pin : gate.pins) pins.push_back(written(pin));
  const bool is_latch = gate.gate_class != toolkit::GateClass::combinational;
  std::string text = (is_latch ? "LATCH " : "GATE ") + written(gate.name) +
                     base::format_message(" %.17g ", gate.area) + written(gate.output) + "=" +
                     support::text_of(gate.function, pins) + ";";
  for (const std::string& pin : pins) text += "PIN " + pin + " INV 1 2 3 4 5 6 ";
  if (is_latch) {
    text += "SEQ " + written(gate.output) + " " + (gate.has_feedback ? pins.back() : "ANY") +
            (gate.gate_class == toolkit::GateClass::clocked_latch ? " ACTIVE_LOW " : " ASYNCH ");
  }
  return text + "\n";
}

void require_sound(const toolkit::LibraryGate& gate) {
  require(gate.area >= 0 && !gate.name.empty() && !gate.output.empty());
  const std::set<std::string> names(gate.pins.begin(), gate.pins.end());
  require(names.size() == gate.pins.size());
  std::set<std::uint32_t> mentioned;
  for (const toolkit::GateStep& step : gate.function.steps) {
    if (step.op == toolkit::GateOperator::pin) mentioned.insert(step.pin);
  }
  require(mentioned.size() == gate.pins.size());
  require(mentioned.empty() || *mentioned.rbegin() + 1 == gate.pins.size());
  require(!gate.has_feedback || gate.gate_class != toolkit::GateClass::combinational);
}

// A pin whose name is that of all pins can only be declared with the others.
bool can_be_written(const toolkit::LibraryGate& gate) {
  return gate.function.steps.size() <= most_steps &&
         std::ranges::find(gate.pins, "*") == gate.pins.end();
}

}  // namespace

void fuzz_genlib(const std::string& bytes) {
  const auto gates = read_or_refuse(
      bytes, [](const std::string& text) { return toolkit::read_genlib(text, "input"); });
  if (!gates) return;
  for (const toolkit::LibraryGate& gate : *gates) {
    require_sound(gate);
    if (!can_be_written(gate)) continue;
    const auto again = toolkit::read_genlib(text_of(gate), "input");
    require(again && again->size() == 1);
    const toolkit::LibraryGate& copy = again->front();
    require(copy.name == gate.name && copy.area == gate.area && copy.output == gate.output);
    require(copy.pins == gate.pins && copy.function == gate.function);
    require(toolkit::have_same_function(copy, gate));
  }
}

}  // namespace vorel::fuzzing
