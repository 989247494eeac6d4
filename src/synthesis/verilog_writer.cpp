#include "synthesis/verilog_writer.h"

#include <algorithm>
#include <cassert>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/messages.h"
#include "base/unique_names.h"
#include "synthesis/verilog_module.h"
#include "toolkit/verilog_name.h"

namespace vorel::synthesis {
namespace {

using InitialValues = std::unordered_map<std::string_view, bool>;

toolkit::LogicExpr literal(const std::string& name, bool negated = false) {
  return {toolkit::LogicExpr::Literal{name, negated}};
}

// False after the error that a name has no value.
bool evaluate(const toolkit::LogicExpr& expression, const InitialValues& values, bool& result) {
  if (const auto* constant = std::get_if<toolkit::LogicExpr::Const>(&expression.node)) {
    result = constant->value;
    return true;
  }
  if (const auto* leaf = std::get_if<toolkit::LogicExpr::Literal>(&expression.node)) {
    const auto found = values.find(leaf->name);
    if (found == values.end()) {
      base::print_error("invalid unordered_map<K, T> key");
      return false;
    }
    result = found->second != leaf->negated;
    return true;
  }
  const auto* conjunction = std::get_if<toolkit::LogicExpr::And>(&expression.node);
  const auto& operands = conjunction != nullptr
                             ? conjunction->operands
                             : std::get<toolkit::LogicExpr::Or>(expression.node).operands;
  result = conjunction != nullptr;
  for (const toolkit::LogicExpr& operand : operands) {
    bool value = false;
    if (!evaluate(operand, values, value)) return false;
    if (conjunction != nullptr ? !value : value) result = value;
  }
  return true;
}

class VerilogWriter {
 public:
  VerilogWriter(std::ostream& stream, const net::Stg& stg, SynthesisStyle style,
                std::span<const SignalSolution* const> solutions)
      : stream_{stream}, stg_{stg}, style_{style}, solutions_{solutions} {}

  bool run() {
    write_header();
    collect_initial_values();
    bool is_right = true;
    switch (style_) {
      case SynthesisStyle::complex_gate:
      case SynthesisStyle::four_sets:
        write_complex_gates();
        break;
      case SynthesisStyle::generalised_c:
        write_generalised_c();
        break;
      case SynthesisStyle::standard_c:
        is_right = write_standard_c();
    }
    write_module_end(stream_, initial_values_);
    return is_right;
  }

 private:
  void write_header() {
    write_module_start(stream_, module_name, stg_);
    std::uint64_t cost = 0;
    for (const SignalSolution* solution : solutions_) cost += solution->cost();
    stream_ << "    // " << style_name()
            << " implementation, each 'assign' statement is assumed to be ATOMIC;\n"
               "    // total cost="
            << cost << '\n';
  }

  std::string_view style_name() const {
    if (style_ == SynthesisStyle::generalised_c) return "gC";
    return style_ == SynthesisStyle::standard_c ? "standard-C" : "complex-gate";
  }

  void collect_initial_values() {
    initial_values_ = initial_values_text(stg_);
    for (const auto& signal : stg_.signals) {
      if (!signal->is_dummy()) values_.emplace(signal->name, signal->initial_value == 1);
    }
  }

  void write_complex_gates() {
    for (const SignalSolution* solution : solutions_) {
      stream_ << '\n';
      write_assignments(solution->name(), *solution);
    }
  }

  // All alternatives but the first as comments.
  void write_assignments(const std::string& target, const SignalSolution& solution) {
    const char* comment = "";
    for (const SignalImplementation& alternative : solution.alternatives) {
      stream_ << "    " << comment << "assign " << toolkit::verilog_name(target) << " = "
              << toolkit::to_verilog(alternative.equation) << "; // cost=" << alternative.cost
              << '\n';
      comment = "// ";
    }
  }

  const std::string& signal_of_pair(std::size_t pair) const {
    return stg_.signals[stg_.inputs_end + pair]->name;
  }

  void write_generalised_c() {
    for (std::size_t pair = 0; 2 * pair < solutions_.size(); ++pair) {
      const std::string& signal = signal_of_pair(pair);
      stream_ << '\n';
      const char* comment = "";
      for (const SignalImplementation& set : solutions_[2 * pair]->alternatives) {
        for (const SignalImplementation& reset : solutions_[2 * pair + 1]->alternatives) {
          stream_ << "    // SET=" << toolkit::to_verilog(set.equation)
                  << ", RESET=" << toolkit::to_verilog(reset.equation)
                  << ", cost=" << set.cost + reset.cost << "\n    " << comment << "assign "
                  << toolkit::verilog_name(signal) << " = "
                  << toolkit::to_verilog(gc_equation(signal, set.equation, reset.equation))
                  << ";\n";
          comment = "// ";
        }
      }
    }
  }

  bool write_standard_c() {
    const std::vector<StandardCWires> wires = standard_c_wires(stg_);
    for (std::size_t pair = 0; 2 * pair < solutions_.size(); ++pair) {
      const std::string& signal = signal_of_pair(pair);
      const SignalSolution& set = *solutions_[2 * pair];
      const SignalSolution& reset = *solutions_[2 * pair + 1];
      stream_ << "\n\n    // Signal " << signal << " cost=" << set.cost() + reset.cost() << '\n';
      const auto& [set_name, reset_name] = wires[pair];
      write_assignments(set_name, set);
      write_assignments(reset_name, reset);
      stream_ << "    assign " << toolkit::verilog_name(signal) << " = "
              << toolkit::to_verilog(c_element_equation(signal, wires[pair]))
              << "; // C-element with one inverted input\n";
      bool set_value = false, reset_value = false;
      if (!evaluate(set.best().equation, values_, set_value) ||
          !evaluate(reset.best().equation, values_, reset_value)) {
        return false;
      }
      initial_values_ += initial_value_text(set_name, set_value);
      initial_values_ += initial_value_text(reset_name, reset_value);
    }
    return true;
  }

  std::ostream& stream_;
  const net::Stg& stg_;
  const SynthesisStyle style_;
  const std::span<const SignalSolution* const> solutions_;
  InitialValues values_;        // of the signals
  std::string initial_values_;  // of signals and wires, in words
};

}  // namespace

std::vector<StandardCWires> standard_c_wires(const net::Stg& stg) {
  base::UniqueNames names;
  for (const auto& signal : stg.signals) names.take(signal->name);
  std::vector<StandardCWires> wires;
  for (const net::SignalId id : stg.driven_signals()) {
    const std::string& signal = stg.signals[id.value]->name;
    std::string set = names.take(signal + "_SET");
    wires.push_back({std::move(set), names.take(signal + "_RESET")});
  }
  return wires;
}

toolkit::LogicExpr gc_equation(const std::string& signal, const toolkit::LogicExpr& set,
                               const toolkit::LogicExpr& reset) {
  toolkit::LogicExpr hold{toolkit::LogicExpr::And{{literal(signal), toolkit::negate(reset)}}};
  return {toolkit::LogicExpr::Or{{set, std::move(hold)}}};
}

toolkit::LogicExpr c_element_equation(const std::string& signal, const StandardCWires& wires) {
  const toolkit::LogicExpr set = literal(wires.set), not_reset = literal(wires.reset, true);
  const toolkit::LogicExpr either{toolkit::LogicExpr::Or{{set, not_reset}}};
  return {toolkit::LogicExpr::Or{{{toolkit::LogicExpr::And{{set, not_reset}}},
                                  {toolkit::LogicExpr::And{{literal(signal), either}}}}}};
}

bool write_verilog(std::ostream& stream, const net::Stg& stg, SynthesisStyle style,
                   std::span<const SignalSolution* const> solutions) {
  if (solutions.empty()) {
    stream << "\nFailed to synthesise the specification\n";
    return true;
  }
  if (!names_can_stand_in_verilog(stg)) return false;
  assert(solutions.size() ==
         (stg.internals_end - stg.inputs_end) * (has_two_functions(style) ? 2u : 1u));
  return VerilogWriter(stream, stg, style, solutions).run();
}

}  // namespace vorel::synthesis
