// The command -D from file to answer, compared with the explicit state graph.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_merger.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "oracle/write_files.h"
#include "support/run_program.h"

namespace vorel {
namespace {

using Names = std::vector<std::string>;

Names split(const std::string& line) {
  Names items;
  for (std::size_t start = 0; !line.empty() && start <= line.size();) {
    const std::size_t end = std::min(line.find(", ", start), line.size());
    items.push_back(line.substr(start, end - start));
    start = end + 2;
  }
  return items;
}

// The lines that follow "SOLUTION I:".
std::vector<Names> solutions_of(const std::string& out) {
  std::vector<Names> solutions;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) {
    if (line != "SOLUTION " + std::to_string(solutions.size()) + ":") continue;
    std::getline(lines, line);
    solutions.push_back(split(line));
  }
  return solutions;
}

template <class N>
class Comparison {
 public:
  explicit Comparison(const N& net) : prefix_{*oracle::unfold(net)}, graph_{oracle::explore(net)} {
    folder_.write("net.pnml", oracle::pnml_text(prefix_));
    folder_.write("net.mci", oracle::mci_text(prefix_));
    const auto merged = oracle::merge(prefix_);
    folder_.write("merged.pnml", oracle::pnml_text(merged));
    folder_.write("merged.mp", oracle::mp_text(merged));
  }

  void run() {
    for (const char* file : {"net.pnml", "net.mci"}) {
      for (const char* option : {"-v0", "-m1", "-m2", "-!", "-$1", "-f", "-@", "-b"}) {
        SCOPED_TRACE(std::string(file) + " " + option);
        const ProgramRun run = run_vorel({"-D", option, folder_.path(file)});
        check(run, option);
      }
      EXPECT_EQ(count(file, "-m1"), count(file, "-m2")) << file;
    }
    for (const char* file : {"merged.pnml", "merged.mp"}) {
      for (const char* option : {"-v3", "-m1", "-$0", "-f", "-+"}) {
        SCOPED_TRACE(std::string(file) + " " + option);
        check(run_vorel({"-D", option, folder_.path(file)}), option);
      }
      EXPECT_EQ(count(file, "-m1"), count(file, "-+")) << file;
    }
  }

  bool has_deadlock() const { return graph_.has_deadlock(); }

 private:
  void check(const ProgramRun& run, const std::string& option) {
    EXPECT_LE(run.exit_code, 1) << run.err;
    EXPECT_EQ(run.err.find("Error"), std::string::npos) << run.err;
    EXPECT_NE(run.out.find(has_deadlock() ? "\nthe system has a deadlock\n"
                                          : "\nthe system is deadlock-free\n"),
              std::string::npos);
    const auto solutions = solutions_of(run.out);
    ASSERT_EQ(solutions.size(), has_deadlock() ? 1u : 0u);
    if (solutions.empty()) return;
    if (option == "-@") return check_configuration(solutions[0]);
    const auto end = oracle::replay<N>(prefix_, solutions[0]);
    ASSERT_TRUE(end.has_value()) << "the trace does not replay";
    EXPECT_TRUE(graph_.deadlocks().contains(*end));
    EXPECT_NE(run.out.find("\npath cost: " + std::to_string(solutions[0].size()) + "\n"),
              std::string::npos);
    if (option == "-f") {
      EXPECT_EQ(solutions[0].size(), graph_.shortest_deadlock());
    }
  }

  // Events of the reference unfolder are numbered after their causes: ascending order fires.
  void check_configuration(const Names& numbers) {
    Names names;
    std::uint32_t last = 0;
    for (const std::string& number : numbers) {
      const auto index = static_cast<std::uint32_t>(std::stoul(number));
      EXPECT_GE(index, last);
      last = index;
      names.push_back(prefix_.events.at(index)->transition->name);
    }
    const auto end = oracle::replay<N>(prefix_, names);
    ASSERT_TRUE(end.has_value());
    EXPECT_TRUE(graph_.deadlocks().contains(*end));
  }

  // The number of solutions under -a, which are all different, and of those under -a2.
  std::pair<std::size_t, std::size_t> count(const char* file, const char* method) {
    const auto all = solutions_of(run_vorel({"-D", "-a", method, folder_.path(file)}).out);
    const auto two = solutions_of(run_vorel({"-D", "-a2", method, folder_.path(file)}).out);
    EXPECT_EQ(two.size(), std::min<std::size_t>(2, all.size()));
    std::set<oracle::Marking> ends;
    for (const Names& names : all) ends.insert(oracle::replay<N>(prefix_, names).value());
    EXPECT_EQ(ends, graph_.deadlocks());
    return {all.size(), two.size()};
  }

  TemporaryFolder folder_;
  PrefixOf<N> prefix_;
  oracle::StateGraph<N> graph_;
};

TEST(DeadlockCommand, AgreesWithTheStateGraphInEveryVariant) {
  std::size_t with_deadlock = 0;
  for (std::uint64_t seed = 1; seed <= 16; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Comparison net(oracle::random_net(seed));
    net.run();
    with_deadlock += net.has_deadlock() ? 1 : 0;
    if (seed % 4 == 0) Comparison(oracle::random_stg(seed, {.dummies = true})).run();
  }
  EXPECT_GT(with_deadlock, 2u);
  EXPECT_LT(with_deadlock, 16u);
}

std::size_t occurrences(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
    ++count;
  }
  return count;
}

// "spin" and "spill" wait for each other, and only what "spill" leaves could stop the loop of "go".
TEST(DeadlockCommand, DoesNotTakeEventsThatWaitForEachOtherForARun) {
  const TemporaryFolder folder;
  const std::string circle = folder.write("circle.mp",
                                          "6 4 5 4\n"
                                          "1 1 1\n2 1 0\n3 1 0\n4 1 0\n5 1 0\n1 2 0\n"
                                          "1 0 1 1 1 2\n2 0 1 2 2 1 3\n3 0 2 1 3 0 4\n4 1 1 1 0 5\n"
                                          "5\nready\na\nb\nc\nstopped\n"
                                          "spin\nspill\nstop\ngo\n");
  for (const char* search : {"-v3", "-a", "-f"}) {
    const ProgramRun at_once = run_vorel({"-D", search, circle});
    EXPECT_EQ(at_once.exit_code, 1) << "the format is deprecated";
    EXPECT_NE(at_once.out.find("\nthe system is deadlock-free\n"), std::string::npos);
    EXPECT_EQ(occurrences(at_once.err, "\nInstance size: cl/vars/lits="), 1u);
    EXPECT_EQ(occurrences(at_once.err, "CYCLE"), 0u);
    EXPECT_EQ(occurrences(at_once.err,
                          "\nExceeded the threshold on the number of chordless cycles: "
                          "|SCC|=2, threshold=0"),
              std::string(search) == "-v3" ? 1u : 0u);

    const ProgramRun in_steps = run_vorel({"-D", "-+", search, circle});
    EXPECT_NE(in_steps.out.find("\nthe system is deadlock-free\n"), std::string::npos);
    EXPECT_EQ(occurrences(in_steps.err, "\nInstance size: cl/vars/lits="), 2u);
    EXPECT_EQ(occurrences(in_steps.err,
                          "\nThe configuration contains a CYCLE, new constraints have "
                          "been added\nInstance size: "),
              1u);
  }
}

// Its places are not entered in the order of their depths, or not once at each.
TEST(DeadlockCommand, RefusesAMergedProcessWithTwoConditionsOfOnePlaceAndDepth) {
  const TemporaryFolder folder;
  const ProgramRun run =
      run_vorel({"-D", folder.write("twice.mp", "2 1 1 1\n1 1 1\n1 1 0\n1 0 1 1 0 1\n1\np\nt\n")});
  EXPECT_EQ(run.exit_code, 2);
  EXPECT_NE(run.err.find("place p has two conditions at occurrence depth 1"), std::string::npos);
  EXPECT_EQ(run.out.find("the system"), std::string::npos);
}

TEST(DeadlockCommand, WritesItsAnswerWhereItIsTold) {
  const TemporaryFolder folder;
  const std::string dead = example("philosophers4.unf.pnml");
  const std::string live = example("vme_read.unf.pnml");
  const std::string to_screen = run_vorel({"-D", dead}).out;
  const Names trace = solutions_of(to_screen).at(0);

  const std::string text = folder.path("out put.txt");
  const ProgramRun to_file = run_vorel({"-D", dead, text});
  EXPECT_EQ(to_file.exit_code, 0);
  EXPECT_EQ(to_file.out.find("deadlock"), std::string::npos);
  const std::string line = trace[0] + ", " + trace[1] + ", " + trace[2] + ", " + trace[3];
  EXPECT_EQ(read_text(text), "\nYES\n_SEQUENCE:\n" + line + "\n");
  run_vorel({"-D", live, text});
  EXPECT_EQ(read_text(text), "NO\n");

  EXPECT_EQ(solutions_of(run_vorel({"-D", dead, "cerr"}).out).size(), 1u);

  const std::string xml = folder.path("out.xml");
  EXPECT_EQ(run_vorel({"-D", "-@", dead, xml}).exit_code, 0);
  const std::string document = read_text(xml);
  EXPECT_NE(document.find("<result status=\"success\" message=\"the system has a deadlock\">"),
            std::string::npos);
  EXPECT_NE(document.find("<solution cost=\"4\">"), std::string::npos);
  EXPECT_NE(document.find("transition=\"" + trace[0] + "\"/>"), std::string::npos);

  const ProgramRun nowhere = run_vorel({"-D", dead, folder.path("no/such/folder.txt")});
  EXPECT_EQ(nowhere.exit_code, 1);
  EXPECT_NE(nowhere.err.find("\nYES\n_SEQUENCE:\n" + line), std::string::npos);
  const ProgramRun no_xml = run_vorel({"-D", dead, folder.path("no/such/folder.xml")});
  EXPECT_EQ(no_xml.exit_code, 2);
}

TEST(DeadlockCommand, StoresTheFormulaOfTheLastSolve) {
  const TemporaryFolder folder;
  const ProgramRun run =
      run_vorel({"-D", "-s", example("philosophers4.unf.pnml")}, {.directory = folder.path()});
  EXPECT_EQ(run.exit_code, 0);
  std::istringstream formula(read_text(folder.path("formula.cnf")));
  std::string p, cnf;
  int variables = 0, clauses = 0, counted = 0;
  formula >> p >> cnf >> variables >> clauses;
  EXPECT_EQ(p + cnf, "pcnf");
  for (int literal = 0; formula >> literal;) {
    EXPECT_LE(std::abs(literal), variables);
    counted += literal == 0 ? 1 : 0;
  }
  EXPECT_EQ(counted, clauses);
  EXPECT_GT(clauses, 0);
}

TEST(DeadlockCommand, WarnsOfPrefixesThatMayHaveLostTheirCutOffs) {
  const TemporaryFolder folder;
  const ProgramRun empty =
      run_vorel({"-D", folder.write("net.pnml",
                                    "<pnml><net type='branching_process:low_level_net'>"
                                    "<original_net><net type='low_level_net'><page/></net>"
                                    "</original_net><page/></net></pnml>")});
  EXPECT_EQ(empty.exit_code, 1);
  EXPECT_NE(empty.err.find("the prefix has no cut-off events; if they were discarded by the "
                           "unfolder then false deadlocks could have been introduced"),
            std::string::npos);
  // A net without transitions is dead from the start.
  EXPECT_EQ(solutions_of(empty.out), (std::vector<Names>{{}}));
}

}  // namespace
}  // namespace vorel
