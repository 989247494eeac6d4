#include "oracle/testbench.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace vorel::oracle {
namespace {

constexpr const char* module_name = "VOREL_unmapped_implementation";

class Testbench {
 public:
  Testbench(const std::string& module, const net::Stg& stg, const StateGraph<net::Stg>& graph,
            const TestbenchParams& params)
      : stg_{stg}, graph_{graph}, number_{std::to_string(params.number)}, params_{params} {
    std::istringstream lines(module);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::string first, second;
      words >> first >> second;
      if (first == "assign") nodes_.push_back(second);
      if (line == "    // initial values of the signals") std::getline(lines, initial_values_);
    }
  }

  std::string run(const std::string& module) {
    write_module(module);
    write_declarations();
    write_specification();
    write_assignments();
    write_inputs();
    write_main();
    return text_.str();
  }

 private:
  void write_module(std::string module) {
    module.replace(module.find(module_name), std::string(module_name).size(),
                   module_name + number_);
    text_ << module;
  }

  void write_declarations() {
    text_ << "module test" << number_ << ";\n  integer seed = " << params_.seed
          << ", state = 0, edges = 0, step, i, choice;\n  reg is_moving, failed = 0;\n";
    std::istringstream values(initial_values_.substr(initial_values_.find("//") + 2));
    for (std::string value; values >> value;) {
      const bool is_low = value.starts_with('!');
      text_ << "  reg v_" << value.substr(is_low ? 1 : 0) << " = " << (is_low ? 0 : 1) << ";\n";
    }
    text_ << "  " << module_name << number_ << " dut(";
    for (std::uint32_t input = 0; input < stg_.inputs_end; ++input) {
      const std::string& name = stg_.signals[input]->name;
      text_ << (input == 0 ? "." : ", .") << name << "(v_" << name << ')';
    }
    text_ << ");\n";
  }

  // after(signal): the state to which an edge of the signal leads, -1 if there is none; is_due: an
  // output or internal signal has one.
  void write_specification() {
    std::string due;
    text_ << "  function integer after(input integer signal);\n"
             "    case (state * "
          << stg_.signals.size() << " + signal)\n";
    for (std::size_t state = 0; state < graph_.states.size(); ++state) {
      bool is_due = false;
      for (const auto& arc : graph_.states[state].arcs) {
        const std::uint32_t signal = arc.transition->signal->index;
        text_ << "      " << state * stg_.signals.size() + signal << ": after = " << arc.target
              << ";\n";
        is_due = is_due || signal >= stg_.inputs_end;
      }
      if (is_due) due += " || state == " + std::to_string(state);
    }
    text_ << "      default: after = -1;\n    endcase\n  endfunction\n"
             "  wire is_due = 0"
          << due
          << ";\n"
             "  task change(input integer signal);\n    begin\n"
             "      if (after(signal) < 0 && !failed) begin\n        failed = 1;\n"
             "        $display(\""
          << number_
          << ": signal %0d changes in state %0d\", signal, state);\n      end\n"
             "      state = after(signal);\n      edges = edges + 1;\n    end\n  endtask\n";
  }

  void write_assignments() {
    text_ << "  task act(input integer node);\n    case (node)\n";
    for (std::size_t node = 0; node < nodes_.size(); ++node) {
      const std::string& name = nodes_[node];
      text_ << "      " << node << ": begin\n        release dut." << name
            << ";\n        #1 if (dut." << name << " !== v_" << name
            << ") begin\n          is_moving = 1;\n          v_" << name << " = dut." << name
            << ";\n";
      const auto signal = std::ranges::find(
          stg_.signals, name, [](const auto& s) -> const auto& { return s->name; });
      if (signal != stg_.signals.end()) {
        text_ << "          change(" << (*signal)->index << ");\n";
      } else {
        wires_ += "        act(" + std::to_string(node) + ");\n";
      }
      text_ << "        end\n        force dut." << name << " = v_" << name << ";\n      end\n";
    }
    text_ << "    endcase\n  endtask\n";
  }

  void write_inputs() {
    text_ << "  task drive(input integer signal);\n    if (after(signal) >= 0) begin\n"
             "      case (signal)\n";
    for (std::uint32_t input = 0; input < stg_.inputs_end; ++input) {
      const std::string value = "v_" + stg_.signals[input]->name;
      text_ << "        " << input << ": " << value << " = ~" << value << ";\n";
    }
    text_ << "        default: ;\n      endcase\n      change(signal);\n      #1;\n    end\n"
             "  endtask\n";
  }

  void write_main() {
    text_ << "  initial begin\n";
    for (const std::string& name : nodes_)
      text_ << "    force dut." << name << " = v_" << name << ";\n";
    text_ << "    #1;\n"
             "    for (step = 1; step <= 1000 && !failed; step = step + 1) begin\n"
             "      choice = {$random(seed)} % "
          << nodes_.size() + stg_.inputs_end
          << ";\n"
             "      if (choice < "
          << nodes_.size()
          << ") act(choice);\n"
             "      else drive(choice - "
          << nodes_.size() << ");\n";
    if (params_.prompt_wires) text_ << wires_;
    text_ << "      if (step % 16 == 0 && !failed) begin\n"
             "        is_moving = 0;\n"
             "        for (i = 0; i < "
          << nodes_.size() << "; i = i + 1) act(i);\n"
          << (params_.prompt_wires ? wires_ : "")
          << "        if (!is_moving && is_due && !failed) begin\n          failed = 1;\n"
             "          $display(\""
          << number_
          << ": all rest in state %0d\", state);\n"
             "        end\n      end\n    end\n"
             "    if (!failed) $display(\""
          << number_
          << ": %0d edges\", edges);\n"
             "  end\nendmodule\n";
  }

  const net::Stg& stg_;
  const StateGraph<net::Stg>& graph_;
  const std::string number_;
  const TestbenchParams params_;
  std::vector<std::string> nodes_;  // to which something is assigned: signals, SET and RESET
  std::string initial_values_;      // the line of the module
  std::string wires_;               // statements that let the wires of SET and RESET follow
  std::ostringstream text_;
};

}  // namespace

std::string with_testbench(const std::string& module, const net::Stg& stg,
                           const StateGraph<net::Stg>& graph, const TestbenchParams& params) {
  return Testbench(module, stg, graph, params).run(module);
}

}  // namespace vorel::oracle
