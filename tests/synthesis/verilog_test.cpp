// Modules of derived equations in the hands of a Verilog compiler and simulator.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "conflicts/conflicts_support.h"
#include "oracle/parse_g.h"
#include "support/legacy_files.h"
#include "support/run_program.h"
#include "synthesis/synthesis_support.h"
#include "synthesis/testbench.h"
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

  // Where outputs disable each other, as in an arbiter, a wire that lags is a hazard.
  TestbenchSubject testbench_subject(SynthesisStyle style) const {
    TestbenchSubject subject{module_name, {}, {}};
    if (style != SynthesisStyle::standard_c || !oracle::disabled_signals(prefix, graph).empty())
      return subject;
    for (const StandardCWires& wires : standard_c_wires(prefix)) {
      subject.wires.push_back({wires.set, std::nullopt});
      subject.wires.push_back({wires.reset, std::nullopt});
    }
    return subject;
  }
};

// Nothing of an STG with conflicts of codes, or whose dummies decide what can come.
void add_subject(std::vector<Subject>& subjects, const std::string& name, const net::Stg& stg) {
  auto prefix = oracle::unfold(stg);
  if (!prefix || configuration::has_dummy_cutoffs(*prefix)) return;
  const support::CaughtMessages warnings;
  net::find_initial_values(*prefix);
  auto graph = oracle::explore<net::Stg>(*prefix);
  const auto initial = oracle::find_initial_values(*prefix, graph);
  if (!initial || !oracle::csc_conflict_signals(*prefix, graph, *initial).empty()) return;
  if (!oracle::signals_that_dummies_disable(graph).empty()) return;
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
  support::for_each_seed(count, [&](std::uint64_t seed) {
    const net::Stg stg = oracle::random_stg(
        seed, {.dummies = seed % 3 == 0, .toggles = seed % 2 == 0, .max_states = 60});
    add_subject(subjects, "seed " + std::to_string(seed), stg);
  });
  EXPECT_GT(subjects.size(), count / 4);
  return subjects;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
    text.replace(at, from.size(), to);
    at += to.size();
  }
  return text;
}

class Verilog : public testing::Test {
 protected:
  void SetUp() override {
    if (folder_.shell("command -v iverilog && command -v vvp").exit_code != 0) {
      GTEST_SKIP() << "Icarus Verilog is not installed";
    }
  }

  // A module and its testbench, both with a number behind their names.
  void add(const Subject& subject, SynthesisStyle style, std::string module) {
    const std::string number = std::to_string(titles_.size());
    titles_.push_back(subject.name + ":\n" + module);
    modules_ += module.insert(module.find('('), number);
    TestbenchSubject testbench = subject.testbench_subject(style);
    testbench.module += number;
    std::ostringstream text;
    EXPECT_TRUE(write_testbench(text, subject.prefix, testbench, number));
    modules_ += text.str();
  }

  // All in one run. The lines that the testbenches print, by their numbers.
  std::map<std::size_t, std::string> simulate(int edges) const {
    folder_.write("test.v", modules_);
    const std::string seed = std::to_string(support::seeds(1).first);
    const support::ProgramRun run = folder_.shell(
        "ulimit -t 100; iverilog -Wall -Wno-implicit -o test.vvp test.v && vvp -n test.vvp "
        "+edges=" +
        std::to_string(edges) + " +seed=" + seed);
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_EQ(run.err, "");
    std::map<std::size_t, std::string> lines;
    std::istringstream out(run.out);
    for (std::string line; std::getline(out, line);) {
      lines[std::stoul(line)] = line.substr(line.find(": ") + 2);
    }
    return lines;
  }

  void add_all(const std::vector<Subject>& subjects) {
    for (const Subject& subject : subjects) {
      // Constants are written in a way that is not Verilog's.
      for (const SynthesisStyle style : styles)
        add(subject, style, replaced(subject.module(style), "1b`", "1'b"));
    }
  }

  void expect_to_follow(std::size_t least_edges) const {
    const auto lines = simulate(200);
    EXPECT_EQ(lines.size(), titles_.size());
    for (const auto& [number, line] : lines) {
      EXPECT_TRUE(line.ends_with(" edges, all as the STG has them")) << titles_[number] << line;
      EXPECT_GE(std::strtoul(line.c_str(), nullptr, 10), least_edges) << titles_[number] << line;
    }
  }

  std::string modules_;
  std::vector<std::string> titles_;
  support::TemporaryFolder folder_;
};

// With names that Verilog takes as escaped identifiers only.
TEST_F(Verilog, OutputsOfTheExamplesFollowTheirStgs) {
  const std::string odd[] = {"req[0]", "reg", "and2:c", "3x", "z'", "//w", "\\v", "/*", "$t+"};
  auto subjects = examples();
  for (Subject& subject : subjects) {
    ASSERT_LE(subject.prefix.signals.size(), std::size(odd));
    for (const auto& signal : subject.prefix.signals) signal->name = odd[signal->index];
  }
  add_all(subjects);
  expect_to_follow(200);
}

TEST_F(Verilog, OutputsOfRandomStgsFollowThem) {
  add_all(random_subjects(40));
  expect_to_follow(0);
}

TEST_F(Verilog, SimulationTellsWhatIsWrong) {
  const std::string c_element =
      ".inputs a b\n.outputs c\n.graph\na+ c+\nb+ c+\nc+ a- b-\na- c-\nb- c-\nc- a+ b+\n"
      ".marking { <c-,a+> <c-,b+> }\n.end\n";
  // A buffer from a to c, and two gates that follow each other for ever.
  const std::string buffer_and_ring =
      ".inputs a b\n.outputs c\n.internal d e\n.graph\na+ c+\nc+ a-\na- c-\nc- a+\nd+ e+\n"
      "e+ d-\nd- e-\ne- d+\nb+ b-\nb- b+\n.marking { <c-,a+> <e-,d+> <b-,b+> }\n.end\n";
  const std::string names = " e0 e1 e2 e3 e4 e5 e6 e7";
  const std::string dummies = ".inputs a b\n.outputs c\n.dummy e" + names + "\n.graph\na+ e\ne" +
                              names + "\n" + replaced(names, " ", " c+\n").substr(4) +
                              " c+\nc+ a-\na- c-\nc- a+ b+\nb+ b-\nb- a+\n" +
                              ".marking { <c-,a+> <b-,a+> }\n.end\n";
  const struct {
    const std::string& stg;
    const char* assignments;
    const char* expected;
  } rows[] = {
      {c_element, "assign c = a & (b | c) | b & c;", " edges, all as the STG has them"},
      {c_element, "assign c = a & b;", ": c- comes, which the STG does not allow"},
      {c_element, "assign c = a | b;", ": c+ comes, which the STG does not allow"},
      {c_element, "assign c = 0 & c;", ": all gates rest and the STG waits for c+"},
      {c_element, "assign c = ~(~a | ~b) | c & 1'bx;", ": c has no value"},
      {buffer_and_ring, "assign c = a, d = ~e, e = d;", " edges, all as the STG has them"},
      {buffer_and_ring, "assign c = 0 & a, d = ~e, e = d;", ": c+ is due and does not come"},
      {buffer_and_ring, "assign c = a & ~e | c & a, d = ~e, e = d;",
       ": c was excited and is disabled by e+"},
      {dummies, "assign c = a;", ": the STG can be in more than 256 markings"}};
  for (const auto& row : rows) {
    auto stg = oracle::parse_g(row.stg);
    ASSERT_TRUE(stg);
    for (const auto& signal : stg->signals) signal->initial_value = 0;
    const std::string number = std::to_string(titles_.size());
    titles_.push_back(row.assignments);
    modules_ += "module circuit" + number + "(c, a, b);\noutput c;\ninput a, b;\n" +
                row.assignments + "\nendmodule\n";
    std::ostringstream text;
    ASSERT_TRUE(write_testbench(text, *stg, {"circuit" + number, {}, {}}, number));
    modules_ += text.str();
  }
  // Far more than it takes for each fault to happen.
  const auto lines = simulate(10'000);
  ASSERT_EQ(lines.size(), std::size(rows));
  for (const auto& [number, line] : lines)
    EXPECT_NE(line.find(rows[number].expected), std::string::npos) << titles_[number] << '\n'
                                                                   << line;
}

}  // namespace
}  // namespace vorel::synthesis
