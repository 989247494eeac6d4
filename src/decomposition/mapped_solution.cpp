#include "decomposition/mapped_solution.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <utility>

#include "bdd/bdd_structure.h"
#include "synthesis/signal_solution.h"

namespace vorel::decomposition {
namespace {

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    if (&name != names.data()) text += ", ";
    text += name;
  }
  return text;
}

}  // namespace

// Connects the gates of a candidate.
class MappedSolution::Builder {
 public:
  Builder(MappedSolution& result, const Deco& deco, std::span<const std::string> names,
          base::UniqueNames& taken)
      : result_{result}, deco_{deco}, names_{names}, taken_{taken} {
    wires_.resize(deco.subfunctions.size());
  }

  void run() {
    assert(deco_.directly_implementable && deco_.gate.exists());
    add_functions();
    GateInstance& gate = result_.main_gate_;
    gate.gate = deco_.gate.gate;
    gate.name = taken_.take("U");
    gate.output = deco_.signal;
    gate.function = deco_.function;
    for (const bdd::Bdd& input : deco_.gate.inputs) gate.pins.push_back(main_pin(input));
    if (deco_.gate.inverted) gate.bubble = bubble("OUT_BUBBLE");
  }

 private:
  void add_functions() {
    result_.set_function_ = deco_.function;
    result_.reset_function_ = deco_.kind == DecoKind::monotonic ? deco_.inverse_function
                                                                : toolkit::negate(deco_.function);
    std::set<std::uint32_t> context;
    for (const Subfunction& part : deco_.subfunctions)
      for (const std::uint32_t variable : part.function.support()) context.insert(variable);
    for (const std::uint32_t variable : context) result_.context_.push_back(names_[variable]);
  }

  // The input is a sub-function, or its complement.
  InstancePin main_pin(const bdd::Bdd& input) {
    if (input.is_constant()) return {input, {}, {}};
    assert(bdd::is_literal(input));
    const std::size_t number = input.variable();
    const Subfunction& part = deco_.subfunctions[number];
    const bool is_inverted = is_inverted_input(input);
    const bdd::Bdd function = is_inverted ? ~part.function : part.function;
    if (part.is_trivial()) return literal_pin(function);
    if (wires_[number].empty()) add_gate_of(number);
    return {function, wires_[number], is_inverted ? bubble("IN_BUBBLE") : Bubble{}};
  }

  InstancePin literal_pin(const bdd::Bdd& function) {
    if (function.is_constant()) return {function, {}, {}};
    return {function, names_[function.variable()],
            is_inverted_input(function) ? bubble("IN_BUBBLE") : Bubble{}};
  }

  void add_gate_of(std::size_t number) {
    const GateMatch& match = deco_.subfunctions[number].match;
    assert(deco_.kind == DecoKind::monotonic && match.exists());
    GateInstance gate;
    gate.gate = match.gate;
    gate.output = wires_[number] = taken_.take("w");
    gate.name = taken_.take("U");
    gate.function = number == 0 ? deco_.function : deco_.inverse_function;
    for (const bdd::Bdd& input : match.inputs) gate.pins.push_back(literal_pin(input));
    if (match.inverted) gate.bubble = bubble("OUT_BUBBLE");
    result_.subfunction_gates_.push_back(std::move(gate));
  }

  Bubble bubble(const char* name) {
    const std::string wire = taken_.take("w");
    return {wire, taken_.take(name)};
  }

  MappedSolution& result_;
  const Deco& deco_;
  const std::span<const std::string> names_;
  base::UniqueNames& taken_;
  std::vector<std::string> wires_;  // by sub-function, those of gates that there are
};

MappedSolution::MappedSolution(const Deco& deco, std::vector<std::string> triggers,
                               const GateLibrary& library, std::span<const std::string> names,
                               base::UniqueNames& taken)
    : results::Solution(false),
      library_{library},
      signal_{deco.signal},
      triggers_{std::move(triggers)} {
  Builder(*this, deco, names, taken).run();
}

std::uint64_t MappedSolution::cost() const {
  const std::uint64_t set = toolkit::literal_count(set_function_);
  if (reset_function_ == toolkit::negate(set_function_)) return set;
  return set + toolkit::literal_count(reset_function_);
}

std::string MappedSolution::function_text() const {
  const std::string set = toolkit::to_string(set_function_);
  if (reset_function_ == toolkit::negate(set_function_)) return set;
  return "monotonic_covers(SET: " + set + ", RESET: " + toolkit::to_string(reset_function_) + ")";
}

double MappedSolution::area() const {
  double area = area_of(main_gate_, library_);
  for (const GateInstance& gate : subfunction_gates_) area += area_of(gate, library_);
  return area;
}

const GateInstance* MappedSolution::gate_that_drives(const std::string& wire) const {
  const auto found = std::ranges::find(subfunction_gates_, wire, &GateInstance::output);
  return found == subfunction_gates_.end() ? nullptr : &*found;
}

void MappedSolution::print(std::ostream& stream) const {
  synthesis::print_signal_heading(stream, signal_, cost(), triggers_);
  synthesis::print_context(stream, context_);
  stream << '\n';
  if (main_gate_.gate == library_.buffer_name()) {
    print_instance(stream, main_gate_, function_text());
    return;
  }
  stream << "Equation: " << function_text() << "\nGate " << main_gate_.gate
         << (main_gate_.inverted() ? " (inverted)" : "") << ", sub-functions:";
  const toolkit::LibraryGate& gate = library_.gate(main_gate_.gate);
  for (std::size_t i = 0; i < main_gate_.pins.size(); ++i) {
    const InstancePin& pin = main_gate_.pins[i];
    const GateInstance* const driver = gate_that_drives(pin.signal);
    stream << "\n pin " << gate.pins[i];
    if (driver == nullptr) {
      print_pin(stream << ": ", pin, library_);
    } else {
      stream << (pin.bubble.exists() ? " (inverted): " : ": ");
      print_instance(stream, *driver, toolkit::to_string(driver->function));
    }
  }
}

results::XmlNode* MappedSolution::to_xml(results::XmlDocument& document) const {
  results::XmlNode* node = results::xml_element(document, "solution");
  results::xml_attribute(document, *node, "cost", cost());
  results::xml_attribute(document, *node, "signal", signal_);
  results::xml_attribute(document, *node, "message", "Logic decomposition for signal " + signal_);
  results::xml_attribute(document, *node, "equation", function_text());
  results::xml_attribute(document, *node, "triggers", joined(triggers_));
  results::xml_attribute(document, *node, "context", joined(context_));
  node->append_node(decomposition::to_xml(document, main_gate_, library_));
  for (const GateInstance& gate : subfunction_gates_)
    node->append_node(decomposition::to_xml(document, gate, library_));
  return node;
}

void MappedSolution::write_verilog(std::ostream& stream) const {
  stream << "    // [" << signal_ << "] = " << function_text() << '\n';
  for (const GateInstance& gate : subfunction_gates_)
    decomposition::write_verilog(stream, gate, library_);
  decomposition::write_verilog(stream, main_gate_, library_);
}

}  // namespace vorel::decomposition
