#include "synthesis/testbench.h"

#include <algorithm>
#include <cassert>
#include <cstdint>

#include "base/ptr_list.h"
#include "synthesis/testbench_text.h"
#include "synthesis/verilog_module.h"
#include "toolkit/verilog_name.h"

namespace vorel::synthesis {
namespace {

class Writer {
 public:
  Writer(std::ostream& stream, const net::Stg& stg, const TestbenchSubject& subject)
      : stream_{stream}, stg_{stg}, subject_{subject} {
    for (const base::Id<net::Signal> id : stg.driven_signals()) add_node(*stg.signals[id.value]);
    for (const TestbenchSubject::Wire& wire : subject.wires)
      nodes_.push_back({wire.name, wire.initial});
    gates_ = nodes_.size();
    for (std::uint32_t input = 0; input < stg.inputs_end; ++input) add_node(*stg.signals[input]);
  }

  void run(std::string_view name) {
    write_heading(name);
    write_sizes(name);
    stream_ << testbench::state_text;
    write_instance();
    write_names();
    write_each("let_go", [this](std::size_t node) { stream_ << "release " << net(node) << ";\n"; });
    write_each("hold", [this](std::size_t node) {
      stream_ << "if (value[" << node << "]) force " << net(node) << " = 1'b1; else force "
              << net(node) << " = 1'b0;\n";
    });
    write_stg();
    write_start();
    stream_ << testbench::token_game_text << testbench::circuit_text;
  }

 private:
  struct Node {
    std::string name;
    std::optional<bool> initial;
  };

  void add_node(const net::Signal& signal) {
    nodes_.push_back({signal.name, signal.initial_value == 1});
  }

  std::string net(std::size_t node) const {
    return "dut." + toolkit::verilog_name(nodes_[node].name);
  }

  // -1 for a dummy.
  std::int64_t node_of(const net::Signal& signal) const {
    if (signal.is_dummy()) return -1;
    return std::int64_t{signal.index} + (signal.index < stg_.inputs_end
                                             ? static_cast<std::int64_t>(gates_)
                                             : -std::int64_t{stg_.inputs_end});
  }

  void write_heading(std::string_view name) {
    stream_ << "// Tries " << subject_.module
            << " in the environment of its STG, gates taking any time.\n"
               "//\n"
               "// With Icarus Verilog: iverilog -o test FILES && vvp -n test\n"
               "// After \"test\": +edges=N  edges of signals to go through, 1000\n"
               "//               +seed=N   of the random delays and choices\n"
               "//               +trace    prints each edge\n"
               "//               +vcd=FILE the waveforms\n"
               "module "
            << toolkit::verilog_name(name) << ";\n";
  }

  void write_sizes(std::string_view name) {
    const struct {
      const char* name;
      std::size_t value;
    } sizes[] = {{"places", stg_.places.size()},
                 {"transitions", stg_.transitions.size()},
                 {"signals", stg_.internals_end - stg_.inputs_end},
                 {"gates", gates_},
                 {"nodes", nodes_.size()},
                 {"most_markings", 256},
                 {"slowest", 64}};
    for (const auto& size : sizes)
      stream_ << "    localparam " << size.name << " = " << size.value << ";\n";
    stream_ << "    localparam title = \"" << name << "\";\n";
  }

  void write_instance() {
    if (!subject_.reset_input.empty()) stream_ << "\n    reg reset;\n";
    stream_ << "\n    // In zero time: what is held has time of its own here.\n";
    for (const std::string& delay : subject_.delays)
      stream_ << "    defparam dut." << delay << " = 0;\n";
    stream_ << "    " << toolkit::verilog_name(subject_.module) << " dut(";
    for (std::size_t node = gates_; node < nodes_.size(); ++node)
      stream_ << (node == gates_ ? "." : ", .") << toolkit::verilog_name(nodes_[node].name)
              << "(value[" << node << "])";
    if (!subject_.reset_input.empty())
      stream_ << (gates_ == nodes_.size() ? "." : ", .")
              << toolkit::verilog_name(subject_.reset_input) << "(reset)";
    stream_ << ");\n    wire [gates-1:0] net = {";
    for (std::size_t node = gates_; node-- > 0;) stream_ << net(node) << (node > 0 ? ", " : "};\n");
  }

  void write_names() {
    stream_ << "\n    task write_name(input integer node);\n        case (node)\n";
    for (std::size_t node = 0; node < nodes_.size(); ++node) {
      stream_ << "            " << node << ": $write(\"%0s\", \"";
      for (const char c : nodes_[node].name) stream_ << (c == '\\' || c == '"' ? "\\" : "") << c;
      stream_ << "\");\n";
    }
    stream_ << "        endcase\n    endtask\n";
  }

  template <class WriteStatement>
  void write_each(const char* task, WriteStatement write_statement) {
    stream_ << "\n    task " << task << "(input integer node);\n        case (node)\n";
    for (std::size_t node = 0; node < gates_; ++node) {
      stream_ << "            " << node << ": ";
      write_statement(node);
    }
    stream_ << "        endcase\n    endtask\n";
  }

  // A number of the bits that are told, each standing for a place.
  void write_places(const auto& holds) {
    if (stg_.places.empty()) {
      stream_ << "1'b0";  // Verilog has no number without bits
      return;
    }
    stream_ << stg_.places.size() << "'b";
    for (std::size_t place = stg_.places.size(); place-- > 0;)
      stream_ << (holds(*stg_.places[place]) ? '1' : '0');
  }

  void write_stg() {
    stream_ << "\n    task describe_stg;\n        begin\n";
    for (const auto& transition : stg_.transitions) {
      const std::string index = '[' + std::to_string(transition->index) + "] = ";
      const auto write_side = [&](const char* name, const base::PtrList<net::StgPlace>& side) {
        stream_ << name << index;
        write_places([&side](const net::StgPlace& place) {
          return std::ranges::find(side, &place) != side.end();
        });
        stream_ << "; ";
      };
      write_side("            preset", transition->preset);
      write_side("postset", transition->postset);
      const net::Signal& signal = *transition->signal;
      const auto sign = static_cast<std::uint32_t>(transition->sign);
      stream_ << "node_of" << index << node_of(signal) << "; value_before" << index << sign
              << "; // "
              << (signal.is_dummy() ? "a dummy" : signal.name + std::string("+-~").substr(sign, 1))
              << '\n';
    }
    stream_ << "            following_count = 0;\n            add_following(";
    write_places([](const net::StgPlace& place) { return place.initial_marking > 0; });
    stream_ << ");\n            follow_dummies;\n        end\n    endtask\n";
  }

  // The signals are held at once; then the wires whose value is told; the others follow these.
  void write_start() {
    stream_ << "\n    task start_circuit;\n        begin\n";
    if (!subject_.initial_block.empty())
      stream_ << "            #0;\n            disable dut."
              << toolkit::verilog_name(subject_.initial_block) << ";\n";
    stream_ << "            value = " << nodes_.size() << "'b";
    for (std::size_t node = nodes_.size(); node-- > 0;)
      stream_ << (nodes_[node].initial.value_or(false) ? '1' : '0');
    stream_ << ";\n";
    write_reset();
    for (std::size_t node = 0; node < gates_; ++node) {
      if (nodes_[node].initial) stream_ << "            hold(" << node << ");\n";
    }
    stream_ << "            settle;\n";
    for (std::size_t node = 0; node < gates_; ++node) {
      if (!nodes_[node].initial)
        stream_ << "            value[" << node << "] = net[" << node << "];\n";
    }
    for (std::size_t node = 0; node < gates_; ++node) {
      if (!nodes_[node].initial) stream_ << "            hold(" << node << ");\n";
    }
    if (!subject_.reset_input.empty()) stream_ << "            reset = 0;\n";
    stream_ << "            settle;\n        end\n    endtask\n";
  }

  // Before anything is held the reset alone has to lead to the initial values.
  void write_reset() {
    if (subject_.reset_input.empty()) return;
    stream_ << "            reset = 1;\n            #1;\n";
    for (std::size_t node = 0; node < gates_; ++node) {
      if (nodes_[node].initial)
        stream_ << "            if (net[" << node << "] !== value[" << node
                << "] && !is_over) begin\n                complain(" << node
                << ");\n                $display(\" is not reset\");\n            end\n";
    }
  }

  std::ostream& stream_;
  const net::Stg& stg_;
  const TestbenchSubject& subject_;
  std::vector<Node> nodes_;
  std::size_t gates_ = 0;  // nodes that gates drive
};

}  // namespace

bool write_testbench(std::ostream& stream, const net::Stg& stg, const TestbenchSubject& subject,
                     std::string_view name) {
  assert(stg.inputs_end < stg.internals_end && "there is something to watch");
  if (!names_can_stand_in_verilog(stg)) return false;
  Writer(stream, stg, subject).run(name);
  return true;
}

}  // namespace vorel::synthesis
