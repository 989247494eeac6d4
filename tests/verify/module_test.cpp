// Modules for other tools, in all styles and with all ways to start: what the verifier says of
// them, how they do in simulation, what a synthesiser makes of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/messages.h"
#include "configuration/search_options.h"
#include "decomposition/decomposition_driver.h"
#include "decomposition/gate_models.h"
#include "net/initial_values.h"
#include "oracle/coding.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "support/caught_messages.h"
#include "support/default_params.h"
#include "support/run_program.h"
#include "support/seeds.h"
#include "synthesis/equation_search.h"
#include "synthesis/netlist_module.h"
#include "synthesis/netlist_reset.h"
#include "synthesis/verilog_writer.h"
#include "toolkit/verilog_name.h"
#include "verify/circuit_builder.h"
#include "verify/verifier.h"

namespace vorel::verify {
namespace {

using synthesis::Netlist;
using synthesis::ResetKind;
using synthesis::SynthesisStyle;

struct Subject {
  std::string title;
  const net::Stg* stg;
  Netlist netlist;
  std::string plain;  // the module of vorel itself
};

std::string answers(const std::string& text, const net::Stg& stg,
                    const std::vector<toolkit::LibraryGate>& gates,
                    const CircuitOptions& options = {}) {
  const support::CaughtMessages messages;
  const auto circuit = read_circuit_text(text, "module", stg, gates, options);
  const auto verification = circuit ? verify(stg, *circuit) : std::nullopt;
  if (!verification) return messages.text();
  std::string result;
  for (const Answer answer : verification->answers)
    result += std::to_string(static_cast<int>(answer));
  return result;
}

class Module : public testing::Test {
 protected:
  void SetUp() override {
    if (folder_.shell("command -v iverilog && command -v vvp").exit_code != 0)
      GTEST_SKIP() << "Icarus Verilog is not installed";
    gates_ = *decomposition::read_gates("");
    for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
      if (entry.path().extension() != ".g") continue;
      add_stg(entry.path().stem(), *oracle::parse_g(*oracle::read_file(entry.path())));
    }
    add_stg("NAND gate that rises first",
            *oracle::parse_g(".inputs a b\n.outputs z\n.graph\nz+ b-\nb- a+\na+ b+\nb+ z-\nz- a-\n"
                             "a- z+\n.marking { <a-,z+> }\n.end\n"));
    net::Stg odd = *oracle::parse_g(*oracle::read_file(VOREL_EXAMPLES "/vme_read_csc.g"));
    const std::string names[] = {"req[0]", "reg", "\\inv:combinational", "3x", "//z", "w0", "U\\"};
    for (const auto& signal : odd.signals) signal->name = names[signal->index];
    net::sort_signals(odd);
    add_stg("odd names", odd);
    constexpr std::uint64_t has_excited_gate_with_inverter = 3296;
    add_random_stg(has_excited_gate_with_inverter);
    const support::Seeds seeds = support::seeds(6);
    for (std::uint64_t seed = seeds.first; seed < seeds.end; ++seed) add_random_stg(seed);
    ASSERT_GE(subjects_.size(), 30u);
  }

  void add_random_stg(std::uint64_t seed) {
    add_stg("seed " + std::to_string(seed),
            oracle::random_stg(seed, {.toggles = seed % 2 == 0, .max_states = 40}));
  }

  // In all styles; nothing of an STG with conflicts of codes.
  void add_stg(const std::string& title, const net::Stg& stg) {
    auto unfolded = oracle::unfold(stg);
    if (!unfolded) return;
    const base::MessageCapture messages;  // not all have a circuit of the library's gates
    net::find_initial_values(*unfolded);
    const auto graph = oracle::explore<net::Stg>(*unfolded);
    const auto initial = oracle::find_initial_values(*unfolded, graph);
    if (!initial || !oracle::csc_conflict_signals(*unfolded, graph, *initial).empty()) return;
    if (unfolded->inputs_end == unfolded->internals_end) return;
    prefixes_.push_back(std::make_unique<net::StgPrefix>(std::move(*unfolded)));
    net::StgPrefix& prefix = *prefixes_.back();
    for (const SynthesisStyle style : {SynthesisStyle::complex_gate, SynthesisStyle::generalised_c,
                                       SynthesisStyle::standard_c}) {
      synthesis::EquationSearch engine(
          prefix, configuration::SearchOptions::of(support::default_params({})), style);
      engine.run();
      std::vector<const synthesis::SignalSolution*> solutions;
      for (const auto& solution : engine.found().solutions)
        solutions.push_back(static_cast<const synthesis::SignalSolution*>(solution.get()));
      if (solutions.empty()) continue;
      std::ostringstream text;
      ASSERT_TRUE(synthesis::write_verilog(text, prefix, style, solutions));
      subjects_.push_back(
          {title, &prefix, synthesis::netlist_of(prefix, style, solutions), text.str()});
    }
    add_mapped(title, stg);
  }

  void add_mapped(const std::string& title, const net::Stg& stg) {
    prefixes_.push_back(std::make_unique<net::StgPrefix>(std::move(*oracle::unfold(stg))));
    net::StgPrefix& prefix = *prefixes_.back();
    net::find_initial_values(prefix);
    decomposition::DecompositionDriver driver(prefix, support::default_params({}), "");
    driver.run();
    if (driver.circuit() == nullptr) return;
    std::ostringstream text;
    ASSERT_TRUE(driver.circuit()->write_verilog(text));
    subjects_.push_back({title, &prefix, driver.circuit()->netlist(), text.str()});
  }

  std::vector<toolkit::LibraryGate> gates_;
  std::vector<std::unique_ptr<net::StgPrefix>> prefixes_;
  std::vector<Subject> subjects_;
  support::TemporaryFolder folder_;
};

// So many modules are given to a tool at a time; more would take it minutes.
constexpr std::size_t most_modules = 150;

// Modules with testbenches, and those of wrong circuits, which may swing for ever.
struct Batch {
  std::string modules, tests, wrong;
  std::size_t testbenches = 0;
  Netlist gates;  // of all
};

// Titles by the numbers that the testbenches print.
void expect_to_follow(const Batch& batch, const std::vector<std::string>& titles,
                      const std::vector<toolkit::LibraryGate>& gates,
                      const support::TemporaryFolder& folder) {
  std::ostringstream models;
  decomposition::write_gate_models_of(models, batch.gates, "all", gates);
  folder.write("modules.v", models.str() + batch.modules);
  folder.write("test.v", batch.tests);
  folder.write("wrong.v", batch.wrong);
  auto run = folder.shell(
      "iverilog -Wall -t null modules.v wrong.v && iverilog -Wall -o test modules.v test.v && "
      "vvp -n test +edges=60 +seed=" +
      std::to_string(support::seeds(1).first));
  EXPECT_EQ(run.err, "");
  std::size_t right = 0;
  std::istringstream out(run.out);
  for (std::string line; std::getline(out, line); ++right)
    EXPECT_TRUE(line.ends_with(" edges, all as the STG has them")) << line << '\n'
                                                                   << titles[std::stoul(line)];
  EXPECT_EQ(right, batch.testbenches);
  if (folder.shell("command -v yosys").exit_code != 0) return;
  run = folder.shell("yosys -q -p 'read_verilog modules.v wrong.v; hierarchy -check; check'");
  // Feedback is what such circuits live by.
  std::istringstream warnings(run.out + run.err);
  for (std::string line; std::getline(warnings, line);)
    EXPECT_TRUE(line.starts_with("Warning: found logic loop") || line.starts_with("    ")) << line;
  EXPECT_EQ(run.exit_code, 0);
}

TEST_F(Module, IsWhatTheVerifierAndOtherToolsTake) {
  Batch batch;
  std::vector<std::string> titles;
  std::vector<std::string> kinds{" = clear | ", " = ~clear & ", " with a reset: [",
                                 "// the reset of z\n    assign z = ~clear & w"};
  for (const Subject& subject : subjects_) {
    const std::string expected = answers(subject.plain, *subject.stg, gates_);
    for (const ResetKind reset : {ResetKind::none, ResetKind::initial_block, ResetKind::input}) {
      const std::string number = std::to_string(titles.size());
      Netlist netlist = subject.netlist;
      ASSERT_TRUE(reset != ResetKind::input ||
                  synthesis::add_reset(netlist, *subject.stg, "clear"));
      const synthesis::ModuleOptions options{synthesis::module_name_of(netlist, "m " + number),
                                             reset, "clear"};
      std::ostringstream text, testbench;
      ASSERT_TRUE(write_module(text, *subject.stg, netlist, options));
      titles.push_back(subject.title + '\n' + text.str());
      CircuitOptions constants;
      if (reset == ResetKind::input) constants.constants.push_back({"clear", false});
      EXPECT_EQ(answers(text.str(), *subject.stg, gates_, constants), expected) << titles.back();
      (expected == "00000" ? batch.modules : batch.wrong) += text.str();
      std::erase_if(kinds, [&text](const std::string& kind) {
        return text.str().find(kind) != std::string::npos;
      });
      if (!netlist.inverter.name.empty()) batch.gates.inverter = netlist.inverter;
      std::ranges::copy(netlist.gates, std::back_inserter(batch.gates.gates));
      if (expected != "00000") continue;
      ++batch.testbenches;
      ASSERT_TRUE(write_testbench(testbench, *subject.stg,
                                  testbench_subject(*subject.stg, netlist, options), number));
      batch.tests += testbench.str();
    }
    if (batch.testbenches < most_modules && &subject != &subjects_.back()) continue;
    expect_to_follow(std::exchange(batch, {}), titles, gates_, folder_);
  }
  EXPECT_EQ(kinds, std::vector<std::string>{}) << "not tried";
}

// Without the testbench, which holds all wires itself. Where nothing is excited and inputs stay as
// they are, so do all wires; a reset that never comes leaves some unknown.
TEST_F(Module, StartsFromItsInitialValues) {
  std::string text, expected;
  std::size_t count = 0;
  for (const Subject& subject : subjects_) {
    const std::vector<synthesis::NetlistGate>& gates = subject.netlist.gates;
    std::unordered_map<std::string, bool> initial;
    std::string in;  // the first input last
    for (std::uint32_t i = 0; i < subject.stg->internals_end; ++i) {
      const bool value = subject.stg->signals[i]->initial_value == 1;
      initial.emplace(subject.stg->signals[i]->name, value);
      if (i < subject.stg->inputs_end) in.insert(0, 1, value ? '1' : '0');
    }
    for (const auto& gate : gates) initial.emplace(gate.output, gate.initial_value);
    const auto rests = [&](const synthesis::NetlistGate& gate) {
      return synthesis::value_of(gate.function, initial) == gate.initial_value;
    };
    if (in.empty() || !std::ranges::all_of(gates, rests)) continue;
    for (const bool is_reset : {false, true}) {
      const ResetKind kind = is_reset ? ResetKind::input : ResetKind::initial_block;
      Netlist netlist = subject.netlist;
      ASSERT_TRUE(!is_reset || synthesis::add_reset(netlist, *subject.stg, "clear"));
      const std::string number = std::to_string(count++);
      std::ostringstream module;
      ASSERT_TRUE(write_module(module, *subject.stg, netlist, {"m" + number, kind, "clear"}));
      text += module.str() + "module start" + number + "; reg [99:0] in = 100'b" + in +
              "; reg clear = 1; m" + number + " dut(" + (is_reset ? ".clear(clear)" : "");
      for (std::uint32_t i = 0; i < subject.stg->inputs_end; ++i)
        text += std::string(i > 0 || is_reset ? ", ." : ".") +
                toolkit::verilog_name(subject.stg->signals[i]->name) + "(in[" + std::to_string(i) +
                "])";
      text += "); initial begin if ($test$plusargs(\"unset\")) clear = 0; #" +
              std::to_string(30 * count) + " clear = 0; #30 $display(\"%b\", {";
      for (const auto& gate : netlist.gates) {
        text += (&gate == netlist.gates.data() ? "dut." : ", dut.") +
                toolkit::verilog_name(gate.output);
        expected += gate.initial_value ? '1' : '0';
      }
      text += "}); end endmodule\n";
      expected += '\n';
    }
  }
  EXPECT_GT(count, 20u);
  std::ostringstream models;
  ASSERT_TRUE(decomposition::write_gate_models(models, gates_));
  folder_.write("start.v", models.str() + text);
  const auto run = folder_.shell("iverilog -o start start.v && vvp -n start");
  EXPECT_EQ(run.out, expected) << run.err << text;
  EXPECT_NE(folder_.shell("vvp -n start +unset").out.find('x'), std::string::npos);
}

}  // namespace
}  // namespace vorel::verify
