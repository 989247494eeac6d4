// Modules of derived equations in the hands of a Verilog compiler and simulator.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "conflicts/conflicts_support.h"
#include "oracle/parse_g.h"
#include "oracle/testbench.h"
#include "support/legacy_files.h"
#include "support/run_program.h"
#include "synthesis/synthesis_support.h"
#include "synthesis/verilog_writer.h"

namespace vorel::synthesis {
namespace {

constexpr SynthesisStyle styles[] = {SynthesisStyle::complex_gate, SynthesisStyle::generalised_c,
                                     SynthesisStyle::standard_c};

struct Subject {
  std::string name;
  net::StgPrefix prefix;
  oracle::StateGraph<net::Stg> graph;

  std::string module(SynthesisStyle style) const {
    EquationSearch engine(prefix, configuration::SearchOptions::of(support::default_params({})),
                          style);
    std::ostringstream text;
    EXPECT_TRUE(write_verilog(text, prefix, style, solutions_of(engine)));
    return text.str();
  }

  // The testbench takes a signal for an edge of it, and without delays a gate that its own output
  // excites again swings for ever.
  bool can_be_simulated() const {
    for (const auto& state : graph.states) {
      std::set<std::uint32_t> signals;
      for (const auto& arc : state.arcs) {
        const std::uint32_t signal = arc.transition->signal->index;
        const auto is_same = [signal](const auto& next) {
          return next.transition->signal->index == signal;
        };
        if (!signals.insert(signal).second) return false;
        if (signal >= prefix.inputs_end &&
            std::ranges::any_of(graph.states[arc.target].arcs, is_same)) {
          return false;
        }
      }
    }
    return true;
  }
};

// Nothing of an STG with dummies or conflicts of codes.
void add_subject(std::vector<Subject>& subjects, const std::string& name, const net::Stg& stg) {
  auto prefix = oracle::unfold(stg);
  if (!prefix || prefix->internals_end < prefix->signals.size()) return;
  const support::CaughtMessages warnings;
  net::find_initial_values(*prefix);
  auto graph = oracle::explore<net::Stg>(*prefix);
  const auto initial = oracle::find_initial_values(*prefix, graph);
  if (!initial || !oracle::csc_conflict_signals(*prefix, graph, *initial).empty()) return;
  subjects.push_back({name, std::move(*prefix), std::move(graph)});
}

std::vector<Subject> examples() {
  std::vector<Subject> subjects;
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (entry.path().extension() != ".g") continue;
    const auto stg = oracle::parse_g(*oracle::read_file(entry.path()));
    EXPECT_TRUE(stg.has_value()) << entry.path();
    if (stg) add_subject(subjects, entry.path().stem(), *stg);
  }
  EXPECT_GE(subjects.size(), 5u);
  return subjects;
}

std::vector<Subject> random_subjects(std::uint64_t count) {
  std::vector<Subject> subjects;
  const support::Seeds range = support::seeds(count);
  for (std::uint64_t seed = range.first; seed < range.end; ++seed) {
    const net::Stg stg = oracle::random_stg(seed, {.toggles = seed % 2 == 0, .max_states = 60});
    add_subject(subjects, "seed " + std::to_string(seed), stg);
  }
  EXPECT_GT(subjects.size(), count / 4);
  return subjects;
}

class Verilog : public testing::Test {
 protected:
  void SetUp() override {
    if (shell("command -v iverilog && command -v vvp").exit_code != 0) {
      GTEST_SKIP() << "Icarus Verilog is not installed";
    }
  }

  support::ProgramRun shell(const std::string& command) const {
    return support::run_program({"/bin/sh", "-c", command}, {.directory = folder_.path()});
  }

  // All in one run. The lines that the testbenches print, by their numbers.
  std::map<std::uint32_t, std::string> simulate(const std::string& modules) const {
    folder_.write("test.v", modules);
    const support::ProgramRun run =
        shell("ulimit -t 20; iverilog -o test.vvp test.v && vvp -n test.vvp");
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.err, "");
    std::map<std::uint32_t, std::string> lines;
    std::istringstream out(run.out);
    for (std::string line; std::getline(out, line);) {
      lines[static_cast<std::uint32_t>(std::stoul(line))] = line.substr(line.find(": ") + 2);
    }
    return lines;
  }

  void expect_to_follow(const std::vector<Subject>& subjects, bool is_random) const {
    std::string modules;
    std::vector<std::string> titles;
    for (const Subject& subject : subjects) {
      for (const SynthesisStyle style : styles) {
        std::string module = subject.module(style);
        if (module.find("1b`") != std::string::npos) continue;  // Verilog has no such constants
        if (!subject.can_be_simulated()) {
          module.insert(module.find('('), "_compiled" + std::to_string(modules.size()));
          modules += module;
          continue;
        }
        // Where outputs disable each other, as in an arbiter, a wire that lags is a hazard.
        const bool prompt = is_random || subject.name == "mutex2";
        const auto number = static_cast<std::uint32_t>(titles.size());
        modules += oracle::with_testbench(
            module, subject.prefix, subject.graph,
            {.number = number, .seed = support::seeds(1).first + number, .prompt_wires = prompt});
        titles.push_back(subject.name + ":\n" + module);
      }
    }
    const auto lines = simulate(modules);
    EXPECT_EQ(lines.size(), titles.size());
    for (const auto& [number, line] : lines) {
      EXPECT_TRUE(line.ends_with(" edges")) << titles.at(number) << line;
      EXPECT_TRUE(is_random || std::strtoul(line.c_str(), nullptr, 10) > 50)
          << titles.at(number) << line;
    }
  }

  support::TemporaryFolder folder_;
};

TEST_F(Verilog, OutputsOfTheExamplesFollowTheirStgs) { expect_to_follow(examples(), false); }

TEST_F(Verilog, OutputsOfRandomStgsFollowThem) { expect_to_follow(random_subjects(40), true); }

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
    text.replace(at, from.size(), to);
    at += to.size();
  }
  return text;
}

TEST_F(Verilog, OddNamesOfSignalsStandAsEscapedIdentifiers) {
  const std::string odd[] = {"req[0]", "reg", "and2:c", "3x", "z'", "//w", "\\v", "/*", "$t+"};
  std::string modules;
  for (Subject& subject : examples()) {
    const auto& signals = subject.prefix.signals;
    ASSERT_LE(signals.size(), std::size(odd));
    for (const SynthesisStyle style : styles) {
      for (const auto& signal : signals) signal->name = "s" + std::to_string(signal->index);
      const std::string plain = subject.module(style);
      for (const auto& signal : signals) signal->name = odd[signal->index];
      std::string module = subject.module(style), unescaped = module;
      for (const auto& signal : signals) {
        const std::string number = "s" + std::to_string(signal->index);
        for (const std::string wire : {"", "_SET", "_RESET"}) {
          unescaped = replaced(unescaped, "\\" + signal->name + wire + " ", number + wire);
        }
        unescaped = replaced(unescaped, signal->name, number);  // in comments
      }
      EXPECT_EQ(unescaped, plain) << module;
      modules += module.insert(module.find('('), "_" + std::to_string(modules.size()));
    }
  }
  EXPECT_TRUE(simulate(modules).empty());
}

TEST_F(Verilog, SimulationTellsAWrongGate) {
  const std::vector<Subject> subjects = examples();
  const auto subject = std::ranges::find(subjects, "celement", &Subject::name);
  ASSERT_NE(subject, subjects.end());
  const std::string module = subject->module(SynthesisStyle::complex_gate);
  const std::string right = "c = a & (b | c) | b & c;";
  std::string modules;
  std::uint32_t number = 0;
  for (const char* wrong : {"c = a & b;", "c = a | b;", "c = 0 & c;"}) {
    std::string changed = module;
    ASSERT_NE(changed.find(right), std::string::npos) << module;
    changed.replace(changed.find(right), right.size(), wrong);
    modules +=
        oracle::with_testbench(changed, subject->prefix, subject->graph, {.number = number++});
  }
  const auto lines = simulate(modules);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_TRUE(lines.at(0).starts_with("signal 2 changes in state "));
  EXPECT_TRUE(lines.at(1).starts_with("signal 2 changes in state "));
  EXPECT_TRUE(lines.at(2).starts_with("all rest in state "));
}

}  // namespace
}  // namespace vorel::synthesis
