#include "toolkit/gate_description.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace vorel::toolkit {
namespace {

class GateMaker {
 public:
  GateMaker(const GateDescription& description, const GenlibCursor& cursor)
      : description_{description},
        cursor_{cursor},
        mentioned_(pins().begin(), pins().end()),
        feedback_{pins().end()} {}

  bool run(LibraryGate& gate) {
    if (!is_latch_consistent() || !has_feedback_pin() || !order_pins()) return false;
    gate.name = description_.name;
    gate.area = description_.area;
    gate.gate_class = description_.gate_class;
    gate.output = description_.equation.output;
    gate.pins.assign(ordered_pins_.begin(), ordered_pins_.end());
    gate.has_feedback = feedback_ != pins().end();
    gate.function = with_pins_renumbered(description_.equation.function, new_numbers());
    assert(gate.pins.size() == pins().size());
    return true;
  }

 private:
  const std::vector<std::string_view>& pins() const { return description_.equation.pins; }
  bool fail(std::string_view part, std::string_view fault) const {
    return cursor_.fail_at(
        part, std::string("gate ").append(shown(description_.name)) + ": " + std::string(fault));
  }
  static std::string shown(std::string_view name) { return GenlibCursor::quoted(name); }

  bool is_latch_consistent() const {
    const GateDescription& d = description_;
    if (d.is_latch && d.sequence_output.empty()) return fail(d.name, "a latch needs SEQ");
    if (!d.is_latch) return true;
    if (d.sequence_output != d.equation.output) {
      return fail(d.sequence_output, "SEQ names " + shown(d.sequence_output) +
                                         " where the output is " + shown(d.equation.output));
    }
    return d.gate_class == GateClass::clocked_latch || d.control.empty() ||
           fail(d.control, "an asynchronous latch has no CONTROL");
  }

  // A clocked latch may name its value without using it: it is not built into circuits.
  bool has_feedback_pin() {
    const GateDescription& d = description_;
    const bool sees_itself = d.is_latch && d.feedback != no_feedback;
    if (sees_itself) feedback_ = std::ranges::find(pins(), d.feedback);
    if (sees_itself && feedback_ == pins().end() && d.gate_class != GateClass::clocked_latch) {
      return fail(d.feedback, "the equation does not mention the feedback " + shown(d.feedback));
    }
    const auto output = std::ranges::find(pins(), d.equation.output);
    return output == pins().end() || output == feedback_ ||
           fail(*output, "the equation mentions the output " + shown(*output));
  }

  // Declared pins as they are declared, then others as they occur; the feedback is the last.
  bool order_pins() {
    std::unordered_set<std::string_view> declared;
    for (const std::string_view pin : description_.declared_pins) {
      if (!declared.insert(pin).second) return fail(pin, "a second PIN for " + shown(pin));
      if (pin != any_pin && !place_declared(pin)) return false;
    }
    for (const std::string_view pin : pins()) {
      if (number_of_.contains(pin) || is_feedback(pin)) continue;
      if (!declared.contains(any_pin) && pin != description_.control) {
        return fail(pin, "there is no PIN for " + shown(pin));
      }
      place(pin);
    }
    if (feedback_ != pins().end()) place(*feedback_);
    assert(number_of_.size() == pins().size());
    return true;
  }

  bool place_declared(std::string_view pin) {
    if (is_feedback(pin)) return true;
    if (!mentioned_.contains(pin)) return fail(pin, "the equation does not mention " + shown(pin));
    place(pin);
    return true;
  }

  bool is_feedback(std::string_view pin) const {
    return feedback_ != pins().end() && pin == *feedback_;
  }

  void place(std::string_view pin) {
    number_of_.emplace(pin, static_cast<std::uint32_t>(ordered_pins_.size()));
    ordered_pins_.push_back(pin);
  }

  std::vector<std::uint32_t> new_numbers() const {
    std::vector<std::uint32_t> numbers;
    for (const std::string_view pin : pins()) numbers.push_back(number_of_.at(pin));
    return numbers;
  }

  const GateDescription& description_;
  const GenlibCursor& cursor_;
  const std::unordered_set<std::string_view> mentioned_;
  std::vector<std::string_view>::const_iterator feedback_;  // among the pins, or their end
  std::vector<std::string_view> ordered_pins_;
  std::unordered_map<std::string_view, std::uint32_t> number_of_;  // the place there
};

}  // namespace

bool make_gate(const GateDescription& description, const GenlibCursor& cursor, LibraryGate& gate) {
  return GateMaker(description, cursor).run(gate);
}

}  // namespace vorel::toolkit
