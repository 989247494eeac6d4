#include "report/gate_symbol.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <optional>
#include <string>

#include "base/messages.h"

namespace vorel::report {
namespace {

constexpr std::size_t most_inputs = 8;  // of gates that are looked at
constexpr double hollow = 12;           // of a disjunction at its left, as a control point

const verify::Gate* driver_of(const std::string& wire, const verify::Circuit& circuit) {
  const auto is_driver = [&](const verify::Gate& gate) {
    return circuit.wires[gate.output.value].name == wire;
  };
  const auto found = std::ranges::find_if(circuit.gates, is_driver);
  return found == circuit.gates.end() ? nullptr : &*found;
}

// The function of a gate by the values of the instance's inputs, behind their inversions: input i
// is bit i of an assignment.
class FunctionTable {
 public:
  FunctionTable(const flow::Instance& instance, const verify::Gate& gate,
                const verify::Circuit& circuit)
      : gate_{gate}, values_(gate.inputs.size() + 1) {
    for (const flow::Instance::Pin& pin : instance.inputs) {
      if (!has_pin(instance, pin)) continue;
      const auto is_pin = [&](verify::WireId wire) {
        return circuit.wires[wire.value].name == pin.wire;
      };
      const auto found = std::ranges::find_if(gate.inputs, is_pin);
      variables_.push_back(static_cast<std::size_t>(found - gate.inputs.begin()));
      inversions_ |= static_cast<std::uint32_t>(pin.is_inverted) << (variables_.size() - 1);
    }
  }

  // Each pin is an input of the gate, once.
  bool is_usable() const {
    std::vector<std::size_t> sorted = variables_;
    std::ranges::sort(sorted);
    for (std::size_t i = 0; i < sorted.size(); ++i)
      if (sorted[i] != i) return false;
    return sorted.size() == gate_.inputs.size();
  }

  bool keeps_its_value() const {
    return std::ranges::count(gate_.function.support(),
                              static_cast<std::uint32_t>(gate_.inputs.size())) > 0;
  }

  std::size_t input_count() const { return variables_.size(); }
  std::uint32_t assignment_count() const { return 1u << input_count(); }

  // The only assignment for which the function has this value, if there is just one.
  std::optional<std::uint32_t> only(bool value, bool output) {
    std::optional<std::uint32_t> found;
    for (std::uint32_t assignment = 0; assignment < assignment_count(); ++assignment) {
      if (evaluate(assignment, output) != value) continue;
      if (found) return std::nullopt;
      found = assignment;
    }
    return found;
  }

 private:
  bool evaluate(std::uint32_t assignment, bool output) {
    for (std::size_t i = 0; i < input_count(); ++i)
      values_[variables_[i]] = static_cast<int>(((assignment ^ inversions_) >> i) & 1u);
    values_.back() = output ? 1 : 0;
    return gate_.function.evaluate(values_);
  }

  const verify::Gate& gate_;
  std::vector<int> values_;             // by variable
  std::vector<std::size_t> variables_;  // by pin
  std::uint32_t inversions_ = 0;
};

GateSymbol with_bubbles(GateShape shape, std::uint32_t bubbles, std::size_t inputs,
                        bool has_output_bubble) {
  GateSymbol symbol{shape, std::vector<bool>(inputs), has_output_bubble};
  for (std::size_t i = 0; i < inputs; ++i) symbol.has_bubble[i] = ((bubbles >> i) & 1u) != 0;
  return symbol;
}

// True for one assignment only it is a conjunction, false for one only a disjunction. Where all
// inputs are inverted the other shape, with the inversion behind it, is the usual one.
GateSymbol without_memory(FunctionTable& table) {
  const std::size_t inputs = table.input_count();
  const std::uint32_t all = table.assignment_count() - 1;
  if (inputs == 1) {
    const std::optional<std::uint32_t> one = table.only(true, false);
    return one ? with_bubbles(GateShape::buffer, 0, 1, *one == 0) : GateSymbol{};
  }
  if (const auto one = table.only(true, false))
    return *one == 0 ? with_bubbles(GateShape::disjunction, 0, inputs, true)
                     : with_bubbles(GateShape::conjunction, *one ^ all, inputs, false);
  if (const auto zero = table.only(false, false))
    return *zero == all ? with_bubbles(GateShape::conjunction, 0, inputs, true)
                        : with_bubbles(GateShape::disjunction, *zero, inputs, false);
  return {};
}

// It rises when all inputs have one value, each its own, and falls when all have the other.
GateSymbol with_memory(FunctionTable& table) {
  const std::size_t inputs = table.input_count();
  const std::uint32_t all = table.assignment_count() - 1;
  const auto rises = table.only(true, false), falls = table.only(false, true);
  if (inputs < 2 || !rises || !falls || (*rises ^ *falls) != all) return {};
  return *rises == 0 ? with_bubbles(GateShape::c_element, 0, inputs, true)
                     : with_bubbles(GateShape::c_element, *rises ^ all, inputs, false);
}

}  // namespace

bool has_pin(const flow::Instance& instance, const flow::Instance::Pin& pin) {
  return !instance.gate.empty() || pin.wire != instance.output;
}

GateSymbol symbol_of(const flow::Instance& instance, const verify::Circuit& circuit) {
  const verify::Gate* const gate = driver_of(instance.output, circuit);
  if (gate == nullptr || gate->function.is_null() || gate->inputs.empty() ||
      gate->inputs.size() > most_inputs || instance.is_output_inverted)
    return {};
  FunctionTable table(instance, *gate, circuit);
  if (!table.is_usable()) return {};
  return table.keeps_its_value() ? with_memory(table) : without_memory(table);
}

void draw_outline(SvgCanvas& canvas, GateShape shape, Point centre, double width, double height) {
  const Point corner{centre.x - width / 2, centre.y - height / 2};
  const auto outline = [&](const char* format, auto... numbers) {
    canvas.path(corner, base::format_message(format, numbers...), "gate");
  };
  const double w = width, h = height;
  switch (shape) {
    case GateShape::box:
      canvas.box(centre, width, height, 3, "gate");
      break;
    case GateShape::conjunction:
    case GateShape::c_element:
      outline("M0 0H%.1fC%.1f 0 %.1f %.1f %.1f %.1fC%.1f %.1f %.1f %.1f %.1f %.1fH0Z", 0.6 * w,
              0.85 * w, w, 0.22 * h, w, h / 2, w, 0.78 * h, 0.85 * w, h, 0.6 * w, h);
      break;
    case GateShape::disjunction:
      outline("M0 0H%.1fQ%.1f 0 %.1f %.1fQ%.1f %.1f %.1f %.1fH0Q%.1f %.1f 0 0Z", 0.4 * w, 0.8 * w,
              w, h / 2, 0.8 * w, h, 0.4 * w, h, hollow, h / 2);
      break;
    case GateShape::buffer:
      outline("M0 0L%.1f %.1fL0 %.1fZ", w, h / 2, h);
      break;
  }
}

double inset_at(GateShape shape, double height_part) {
  return shape == GateShape::disjunction ? 2 * height_part * (1 - height_part) * hollow : 0;
}

}  // namespace vorel::report
