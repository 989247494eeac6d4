// vorel -T from an STG to a circuit: what it writes is read back, next to the STG with the signals
// that it has inserted and next to the one without them.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "decomposition/gate_library.h"
#include "decomposition/gate_models.h"
#include "formats/g_writer.h"
#include "oracle/netlist.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "oracle/resolution_checks.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::decomposition {
namespace {

using Names = std::vector<std::string>;

// Where an AND is an inverted gate.
const char* const nand_library =
    "GATE inv 1 o=!a;\nGATE buf 2 o=a;\nGATE one 1 o=1;\nGATE zero 1 o=0;\n"
    "GATE nand2 2 o=!(a*b);\nGATE nor2 2 o=!(a+b);\n"
    "LATCH c 5 q=a*b+(a+b)*n; SEQ q n ASYNCH\n";

// An inverter called like an instance, names that are not plain.
const char* const rich_library =
    "GATE IN_BUBBLE 2 o=!a;\nGATE buf 1 o=a;\nGATE one 1 o=1;\nGATE zero 1 o=0;\n"
    "GATE module 4 w1=a*b;\nGATE \"nand[2]\" 3 o=!(a*b);\nGATE or2 4 o=a+b;\n"
    "GATE nor2 3 o=!(a+b);\nGATE and3 5 o=a*b*c;\nGATE or3 5 o=a+b+c;\nGATE mux 6 o=a*s+b*!s;\n"
    "GATE xor 6 o=a*!b+!a*b;\nGATE maj 8 o=a*b+a*c+b*c;\nGATE ao21 6 o=a*b+c;\n"
    "GATE oai21 5 o=!((a+b)*c);\nGATE aoi211 7 o=!(a*b+c+d);\n"
    "LATCH c 6 q=a*b+(a+b)*n; SEQ q n ASYNCH\nLATCH sr 5 q=s+!r*n; SEQ q n ASYNCH\n"
    "LATCH rs 5 q=!r*(s+n); SEQ q n ASYNCH\nLATCH gc 7 q=a*b*c+(a+b)*n; SEQ q n ASYNCH\n";

std::string with_pins(std::string text) {
  const std::string pins = " PIN * UNKNOWN 1 1 1 1 1 1";
  for (std::size_t at = text.find(';'); at != std::string::npos; at = text.find(';', at + 1))
    if (text[at - 1] != '0' && text[at - 1] != '1') text.insert(at + 1, pins);
  return text;
}

struct Setting {
  const char* name;
  const char* library;  // null: the built-in one
  Names options = {};
  bool use_latches = true;
  std::uint32_t max_gate_inputs = std::numeric_limits<std::uint32_t>::max();
};

const Setting settings[] = {{"built-in", nullptr},
                            {"no latches", nullptr, {"-g!"}, false},
                            {"two inputs", nullptr, {"-g2"}, true, 2},
                            {"nand", nand_library},
                            {"rich", rich_library}};

const Names more_options[] = {{}, {"-t"}, {"-p2"}, {"-cs"}, {"-$0"}, {"-$1", "-p0"}, {"-cl", "-t"}};

// In each a signal would otherwise get an inverter behind its gate, or gates for SET and RESET.
const char* const arbiters[] = {
    ".inputs a\n.outputs x\n.internal y\n.graph\nfree y+ y+/1\nheld y- y-/1\nready x~/1 y+/1\n"
    "x~ a~/1\ny+ held x~\ny- free ready\na~ y+\nx~/1 a~\ny+/1 held y-/1\ny-/1 free ready\n"
    "a~/1 y-\n.marking { free <x~/1,a~> }\n.end\n",
    ".outputs x\n.internal y z\n.graph\nfree y+ x+/1\nx+ y-\nx- free\ny+ x+ z+\ny- x- z-\nz+ y-\n"
    "z- y+\nx+/1 x-/1\nx-/1 free\n.marking { free <y-,z-> }\n.end\n",
    ".inputs a b c\n.outputs x y\n.graph\na+ x+\nb+ x+\nx+ a- b-\na- x-\nb- x-\nx- a+ b+ free\n"
    "c+ y+\ny+ c-\nc- y-\ny- c+ free\nfree x+ y+\n.marking { <x-,a+> <x-,b+> <y-,c+> free }\n"
    ".end\n"};

struct Tally {
  unsigned tried = 0, mapped = 0, inserted = 0, stopped = 0;
  std::string failed;  // the titles
};

// Of every second one. What chose between inputs is an arbiter then.
void make_outputs_of_inputs(net::Stg& stg) {
  for (std::uint32_t i = 0; i < stg.inputs_end; i += 2)
    stg.signals[i]->kind = net::SignalKind::output;
  net::sort_signals(stg);
}

class Mapping : public testing::Test {
 protected:
  // An STG, with its conflicts resolved if it has some, as prefix; false if that cannot be.
  bool prepare(const net::Stg& stg) {
    before_ = {};
    if (!formats::save_g(stg, folder_.path("vorel.g")) || !unfold()) return false;
    if (!oracle::conflicting_signals(*parsed()).empty()) {
      const auto run = run_vorel({"-R", "-f", "in.pnml"});
      if (run.out.find("all conflicts resolved") == std::string::npos || !unfold()) return false;
    }
    before_ = parsed();
    const auto graph = oracle::explore(*before_);
    // Outputs may disable each other, as those of an arbiter; what an input disables is a hazard.
    return std::ranges::none_of(
               oracle::disabled_signals(*before_, graph),
               [&](const auto& pair) { return pair.second < before_->inputs_end; }) &&
           oracle::signals_that_dummies_disable(graph).empty();
  }

  bool unfold() {
    return support::run_vorel_unfold({folder_.path("vorel.g"), folder_.path("in.pnml")}).exit_code <
           2;
  }

  std::optional<net::Stg> parsed() const {
    return oracle::parse_g(support::read_text(folder_.path("vorel.g")));
  }

  support::ProgramRun run_vorel(Names arguments) {
    return support::run_vorel(arguments, {.directory = folder_.path()});
  }

  void try_setting(const Setting& setting, const std::string& title, const Names& more = {}) {
    SCOPED_TRACE(title + ", " + setting.name + testing::PrintToString(more));
    for (const char* file : {"vorel.g", "circuit.v"}) std::filesystem::remove(folder_.path(file));
    Names arguments = {"-T"};
    for (const Names& options : {setting.options, more})
      arguments.insert(arguments.end(), options.begin(), options.end());
    std::string library;
    if (setting.library != nullptr) {
      library = folder_.write("library", with_pins(setting.library));
      arguments.insert(arguments.end(), {"-d", library});
    }
    arguments.insert(arguments.end(), {"in.pnml", "circuit.v"});
    const support::ProgramRun run = run_vorel(arguments);
    Tally& tally = tallies_[setting.name];
    ++tally.tried;
    const std::string module = support::read_text(folder_.path("circuit.v"));
    if (run.exit_code == 2 && run.err.find("failed to decompose") != std::string::npos) {
      tally.failed += title + ' ';
      EXPECT_EQ(module, "\nFailed to decompose\n");
      EXPECT_FALSE(std::filesystem::exists(folder_.path("vorel.g")));
      return;
    }
    if (run.exit_code == -SIGKILL) {  // by the limit of its time
      ++tally.stopped;
      return;
    }
    ++tally.mapped;
    ASSERT_EQ(run.exit_code, 1) << run.out << run.err;
    const auto after = parsed();
    ASSERT_TRUE(after);
    SCOPED_TRACE(support::read_text(folder_.path("vorel.g")) + module);
    oracle::Netlist netlist = read_module(setting, library, module, run.out);
    expect_right_circuit(*after, std::move(netlist.circuit));
    const std::size_t inserted = after->signals.size() - before_->signals.size();
    tally.inserted += static_cast<unsigned>(inserted);
    std::ostringstream sizes;
    sizes << ' ' << gate_count(module) << " | " << netlist.area << " | " << inserted << " |";
    sizes_[title + setting.name] = sizes.str();
    results_[setting.name] += numbered(module, tally.mapped);
  }

  // Modules must not have one name.
  static std::string numbered(std::string module, unsigned number) {
    return module.insert(module.find('('), std::to_string(number));
  }

  // Without wires from one signal to another.
  static std::size_t gate_count(const std::string& module) {
    std::size_t count = 0;
    std::istringstream lines(module);
    for (std::string line; std::getline(lines, line);)
      count += line.starts_with("    \\") && !line.starts_with("    \\delay:") ? 1 : 0;
    return count;
  }

  static oracle::Netlist read_module(const Setting& setting, const std::string& library,
                                     const std::string& module, const std::string& out) {
    const GateLibrary gates = *GateLibrary::read(library);
    Names admitted = gates.gate_list(setting.max_gate_inputs, setting.use_latches);
    admitted.insert(admitted.end(), {gates.inverter_name(), gates.buffer_name()});
    std::map<std::string, toolkit::LibraryGate> by_name;
    for (const std::string& name : admitted) by_name.emplace(name, gates.gate(name));
    oracle::Netlist netlist = oracle::read_netlist(module, by_name);
    EXPECT_EQ(netlist.fault, "");
    char told[100];
    std::snprintf(told, sizeof told, "Logic decomposition finished (area=%.2f)", netlist.area);
    EXPECT_NE(out.find(told), std::string::npos) << told << out;
    return netlist;
  }

  void expect_right_circuit(const net::Stg& after, oracle::Circuit circuit) {
    const oracle::ResolutionClaim claim{.new_signals = oracle::new_signals(*before_, after),
                                        .initial_value = std::nullopt};
    EXPECT_EQ(oracle::resolution_fault(*before_, after, claim), "");
    circuit.declared.insert(claim.new_signals.begin(), claim.new_signals.end());
    for (const net::Stg* const stg : {&after, static_cast<const net::Stg*>(&*before_)}) {
      SCOPED_TRACE(stg == &after ? "with inserted signals" : "without inserted signals");
      const auto graph = oracle::explore(*stg);
      EXPECT_EQ(oracle::find_fault(*stg, graph, *oracle::find_initial_values(*stg, graph), circuit),
                "");
    }
  }

  void tell_tallies() {
    unsigned inserted = 0, tried = 0;
    for (const auto& [name, tally] : tallies_) {
      inserted += tally.inserted;
      tried += tally.tried;
      EXPECT_GE(tally.mapped + 1, tally.tried * 3 / 4) << name;
      EXPECT_LE(tally.stopped, tally.tried / 10) << name;
      RecordProperty(name, std::to_string(tally.mapped) + " of " + std::to_string(tally.tried) +
                               ", " + std::to_string(tally.inserted) + " inserted, " +
                               std::to_string(tally.stopped) + " stopped, not " + tally.failed);
    }
    EXPECT_GE(inserted, tried / 10);
  }

  // All modules, with the models of the gates.
  void expect_others_to_read_modules() {
    for (const Setting& setting : settings) {
      const std::string library =
          setting.library == nullptr ? "" : folder_.write("library", with_pins(setting.library));
      std::ostringstream models;
      ASSERT_TRUE(write_gate_models(models, *read_gates(library)));
      folder_.write("test.v", models.str() + results_[setting.name]);
      expect_silence("iverilog -o test.vvp test.v");
    }
  }

  void expect_silence(const std::string& command) {
    const support::ProgramRun run =
        support::run_program({"/bin/sh", "-c", command}, {.directory = folder_.path()});
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.out + run.err, "");
  }

  const support::TemporaryFolder folder_;
  std::optional<net::Stg> before_;
  std::map<std::string, Tally> tallies_;        // by setting
  std::map<std::string, std::string> results_;  // modules by setting
  std::map<std::string, std::string> sizes_;    // by title and setting, as README.md tells them
};

TEST_F(Mapping, OfTheExamplesGivesCircuitsThatDoWhatTheStgsDo) {
  const std::string readme = support::read_text(support::example("../README.md"));
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (entry.path().extension() != ".g") continue;
    if (!prepare(*oracle::parse_g(support::read_text(entry.path())))) continue;
    const std::string name = entry.path().stem();
    run_vorel({"-T", "in.pnml", name + ".xml"});
    for (const Setting& setting : settings) try_setting(setting, name);
    const std::string row =
        "\n| `" + name + "` |" + sizes_[name + "built-in"] + sizes_[name + "two inputs"] + '\n';
    EXPECT_NE(readme.find(row), std::string::npos) << row;
  }
  expect_others_to_read_modules();
  expect_silence("xmllint --noout --schema '" + support::example("../docs/results.xsd") +
                 "' *.xml 2> messages || cat messages");
  tell_tallies();
  EXPECT_EQ(tallies_["built-in"].failed + tallies_["rich"].failed, "");
  EXPECT_GE(tallies_["built-in"].mapped, 10u);
}

TEST_F(Mapping, OfArbitersPutsNoWireThatTakesTimeBeforeAChoice) {
  for (const char* const text : arbiters) {
    ASSERT_TRUE(prepare(*oracle::parse_g(text)));
    for (const Setting& setting : settings) try_setting(setting, text);
  }
  for (const char* const setting : {"built-in", "no latches", "rich"})
    EXPECT_EQ(tallies_[setting].failed, "");
}

TEST_F(Mapping, OfRandomStgsGivesCircuitsThatDoWhatTheseDo) {
  const support::CaughtMessages warnings;
  const auto [first, end] = support::seeds(30);
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    net::Stg stg = oracle::random_stg(seed, {.toggles = seed % 3 == 0, .max_states = 100});
    if (seed % 11 == 0) make_outputs_of_inputs(stg);
    if (!prepare(stg)) continue;
    try_setting(settings[seed % std::size(settings)], std::to_string(seed),
                more_options[seed / std::size(settings) % std::size(more_options)]);
  }
  expect_others_to_read_modules();
  tell_tallies();
}

}  // namespace
}  // namespace vorel::decomposition
