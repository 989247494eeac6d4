// Circuits of vorel -T in the hands of other tools: simulated next to their STGs, with random
// delays, and read by a synthesiser.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "decomposition/decomposition_driver.h"
#include "decomposition/gate_models.h"
#include "formats/pnml_reader.h"
#include "net/process_variant.h"
#include "oracle/coding.h"
#include "oracle/netlist.h"
#include "oracle/random.h"
#include "support/default_params.h"
#include "support/run_program.h"

namespace vorel::decomposition {
namespace {

struct Mapped {
  std::string title() const { return example + option + '\n' + module; }

  std::string example, option, module;
  std::unique_ptr<net::StgPrefix> prefix;  // with the inserted signals
  std::unique_ptr<DecompositionDriver> driver;
};

// Gates of the built-in library with the same pins.
const std::vector<std::string> alike[] = {
    {"and2", "and2_1", "nand2", "nand2_1", "or2", "or2_1", "nor2"},
    {"and3", "nand3", "or3", "nor3", "aoi12", "oai12"},
    {"and4", "nand4", "or4", "nor4", "aoi22", "oai22", "ao22"},
    {"delay", "delay_inv"},
    {"sr_nand", "sr_nor", "rs_nand", "rs_nor"},
    {"c_element0", "c_element1", "c_element2"}};

// The module with another gate in the place of one of its gates; empty if that has none alike.
std::string changed(const std::string& module, oracle::Random& random) {
  std::vector<std::size_t> places;
  for (std::size_t at = module.find("\n    \\"); at != std::string::npos;
       at = module.find("\n    \\", at + 1)) {
    if (!module.substr(0, at).ends_with("zero delay")) places.push_back(at + 6);
  }
  const std::size_t at = places[random.below(places.size())];
  const std::string name = module.substr(at, module.find(':', at) - at);
  for (const std::vector<std::string>& names : alike) {
    if (std::ranges::find(names, name) == names.end()) continue;
    const std::string& other = names[random.below(names.size())];
    if (other == name) return "";
    return module.substr(0, at) + other + module.substr(at + name.size());
  }
  return "";
}

class Simulation : public testing::Test {
 protected:
  void SetUp() override {
    if (shell("command -v iverilog && command -v vvp").exit_code != 0)
      GTEST_SKIP() << "Icarus Verilog is not installed";
    gates_ = *read_gates("");
    std::ostringstream models;
    ASSERT_TRUE(write_gate_models(models, gates_));
    folder_.write("gates.v", models.str());
    for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
      if (entry.path().extension() != ".g") continue;
      map(entry.path().stem(), "", std::numeric_limits<std::int32_t>::max());
      map(entry.path().stem(), " -g2", 2);
    }
    ASSERT_GE(circuits_.size(), 20u);
  }

  support::ProgramRun shell(const std::string& command) const {
    return support::run_program({"/bin/sh", "-c", command}, {.directory = folder_.path()});
  }

  // The example, its conflicts resolved.
  void map(const std::string& example, const std::string& option, int most_inputs) {
    std::string file = support::example(example + ".unf.pnml");
    if (shell(VOREL_BINARY " -C " + file).out.find("no CSC conflicts") == std::string::npos) {
      shell(VOREL_BINARY " -R -f " + file + "; " VOREL_UNFOLD_BINARY " vorel.g in.pnml");
      file = folder_.path("in.pnml");
    }
    const auto process = formats::read_pnml<net::StgPrefixVariant>(file);
    ASSERT_NE(process, nullptr) << file;
    auto prefix = std::make_unique<net::StgPrefix>(std::move(std::get<net::StgPrefix>(*process)));
    auto driver = std::make_unique<DecompositionDriver>(
        *prefix, support::default_params({{"max_gate_inputs", most_inputs}}), "");
    const support::CaughtMessages warnings;
    driver->run();
    ASSERT_NE(driver->circuit(), nullptr) << file;
    std::ostringstream text;
    ASSERT_TRUE(driver->circuit()->write_verilog(text));
    circuits_.push_back({example, option, text.str(), std::move(prefix), std::move(driver)});
  }

  // Both get a number, so that many can be simulated together.
  void add(const Mapped& mapped, std::string module) {
    const std::string number = std::to_string(count_++);
    modules_ += module.insert(module.find('('), number);
    synthesis::TestbenchSubject subject = mapped.driver->circuit()->testbench_subject();
    subject.module += number;
    std::ostringstream text;
    ASSERT_TRUE(synthesis::write_testbench(text, *mapped.prefix, subject, number));
    modules_ += text.str();
  }

  // What the testbenches print, by their numbers.
  std::vector<std::string> simulate(const std::string& arguments) const {
    folder_.write("test.v", modules_);
    const auto run =
        shell("iverilog -Wall -Wno-implicit -o test test.v gates.v && vvp -n test " + arguments);
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.err, "");
    std::vector<std::string> lines(count_);
    std::istringstream out(run.out);
    for (std::string line; std::getline(out, line);)
      lines.at(std::stoul(line)) = line.substr(line.find(": ") + 2);
    return lines;
  }

  static bool is_good(const std::string& line) {
    return line.ends_with(" edges, all as the STG has them");
  }

  support::TemporaryFolder folder_;
  std::vector<toolkit::LibraryGate> gates_;
  std::vector<Mapped> circuits_;
  std::string modules_;
  std::size_t count_ = 0;
};

TEST_F(Simulation, MappedExamplesFollowTheirStgsWhateverTheDelays) {
  for (const Mapped& mapped : circuits_) add(mapped, mapped.module);
  for (const char* const seed : {"1", "2", "3"}) {
    const auto lines = simulate(std::string("+edges=400 +seed=") + seed);
    for (std::size_t i = 0; i < lines.size(); ++i)
      EXPECT_EQ(lines[i], "400 edges, all as the STG has them") << circuits_[i].title();
  }
}

TEST_F(Simulation, WrongGatesAreComplainedOf) {
  std::map<std::string, toolkit::LibraryGate> library;
  for (const toolkit::LibraryGate& gate : gates_) library.emplace(gate.name, gate);
  oracle::Random random(1);
  std::vector<bool> is_right;
  std::vector<std::string> titles;
  for (const Mapped& mapped : circuits_) {
    const auto graph = oracle::explore<net::Stg>(*mapped.prefix);
    const auto initial = oracle::find_initial_values(*mapped.prefix, graph);
    if (!oracle::disabled_signals(*mapped.prefix, graph).empty() ||
        mapped.prefix->internals_end < mapped.prefix->signals.size()) {
      continue;
    }
    for (int i = 0; i < 8; ++i) {
      const std::string module = changed(mapped.module, random);
      if (module.empty()) continue;
      const auto netlist = oracle::read_netlist(module, library);
      is_right.push_back(
          oracle::find_fault(*mapped.prefix, graph, *initial, netlist.circuit).empty());
      titles.push_back(module);
      add(mapped, module);
    }
  }
  const auto lines = simulate("+edges=2000");
  std::size_t faults = 0, missed = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (is_right[i]) {
      EXPECT_TRUE(is_good(lines[i])) << titles[i] << lines[i];
    } else {
      ++faults;
      missed += is_good(lines[i]) ? 1 : 0;
    }
  }
  EXPECT_GT(faults, 50u);
  EXPECT_LE(missed, faults / 20);
}

TEST_F(Simulation, YosysTakesNetlistsAndModels) {
  if (shell("command -v yosys").exit_code != 0) GTEST_SKIP() << "Yosys is not installed";
  for (const Mapped& mapped : circuits_) {
    folder_.write("netlist.v", mapped.module);
    const auto run = shell(
        "yosys -q -p 'read_verilog gates.v netlist.v; "
        "hierarchy -check -top VOREL_mapped_implementation'");
    EXPECT_EQ(run.exit_code, 0) << mapped.title() << run.err;
  }
}

TEST_F(Simulation, ReadmeTellsTheSizesOfMappedExamples) {
  const std::string readme = support::read_text(support::example("../README.md"));
  for (const Mapped& mapped : circuits_) {
    if (!mapped.option.empty()) continue;
    std::string row = "| `" + mapped.example + "` |";
    for (const Mapped& other : circuits_) {
      if (other.example != mapped.example) continue;
      int gates = 0;
      std::istringstream lines(other.module);
      for (std::string line; std::getline(lines, line);)
        gates += line.starts_with("    \\") && !line.starts_with("    \\delay:") ? 1 : 0;
      std::ostringstream cells;
      cells << ' ' << gates << " | " << other.driver->circuit()->area() << " | "
            << other.driver->inserted().size() << " |";
      row += cells.str();
    }
    EXPECT_NE(readme.find('\n' + row + '\n'), std::string::npos) << row;
  }
}

}  // namespace
}  // namespace vorel::decomposition
