// The program vorel-verify next to the exploration of all states: netlists that vorel writes, and
// the same with one thing changed.
#include <filesystem>
#include <map>
#include <string>

#include "decomposition/gate_library.h"
#include "formats/g_writer.h"
#include "oracle/netlist.h"
#include "oracle/netlist_mutations.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "support/seeds.h"
#include "tools/command_testing.h"

namespace vorel::tools {
namespace {

using oracle::CircuitQuestion;
using support::Json;

constexpr std::size_t max_states = 20'000;

const std::vector<std::pair<const char*, CircuitQuestion>> questions = {
    {"initial_state", CircuitQuestion::initial_state},
    {"conformance", CircuitQuestion::conformance},
    {"no_hazard", CircuitQuestion::hazard},
    {"progress", CircuitQuestion::progress},
    {"no_deadlock", CircuitQuestion::deadlock}};

// An STG as a file, and what the oracle knows of it.
struct Subject {
  Subject(net::Stg of, std::string its_title, bool hides)
      : stg{std::move(of)}, title{std::move(its_title)}, hides_internal{hides} {}

  // Those that the file has; the oracle takes internal signals that are hidden for dummies.
  bool explore() {
    if (hides_internal) {
      for (const auto& signal : stg.signals)
        if (signal->kind == net::SignalKind::internal) signal->kind = net::SignalKind::dummy;
      net::sort_signals(stg);
    }
    graph = oracle::explore(stg);
    const auto values = oracle::find_initial_values(stg, graph);
    if (graph.outcome != oracle::Exploration::complete || !values) return false;
    initial = *values;
    return true;
  }

  net::Stg stg;
  std::string title;
  bool hides_internal;
  oracle::StateGraph<net::Stg> graph;
  oracle::Values initial;
};

class VerifyCampaign : public CommandTest {
 protected:
  VerifyCampaign() : CommandTest(VOREL_VERIFY_BINARY, VOREL_SCHEMA) {
    const auto gates = decomposition::read_gates("");
    for (const toolkit::LibraryGate& gate : *gates) library_.emplace(gate.name, gate);
  }

  // The netlists of an STG by the mode that makes them; none where there are conflicts.
  std::map<std::string, std::string> netlists_of(const std::string& g_text) const {
    std::map<std::string, std::string> netlists;
    folder_.write("stg.g", g_text);
    if (folder_.shell(VOREL_UNFOLD_BINARY " -q stg.g stg.unf.pnml").exit_code > 1) return netlists;
    for (const std::string mode : {"-E", "-G", "-S", "-T"}) {
      std::filesystem::remove(folder_.path("out.v"));
      if (folder_.shell(VOREL_BINARY " " + mode + " stg.unf.pnml out.v").exit_code > 1) continue;
      std::string module = file("out.v");
      if (!module.starts_with("module")) continue;
      // As no compiler takes them.
      for (std::size_t at = 0; (at = module.find("1b`", at)) != std::string::npos;)
        module.replace(at, 3, "1'b");
      netlists[mode] = module;
    }
    return netlists;
  }

  // The STG of stg.g next to the module.
  void compare(const Subject& subject, const std::string& module, const std::string& kind,
               bool is_mutated) {
    SCOPED_TRACE(subject.title + (subject.hides_internal ? ", hiding, " : ", ") + kind + '\n' +
                 file("stg.g") + module);
    folder_.write("circuit.v", module);
    std::filesystem::remove(folder_.path("out.json"));
    Arguments command{"stg.g", "circuit.v", "--json", "out.json"};
    if (subject.hides_internal) command.push_back("--hide-internal");
    oracle::Netlist netlist = oracle::read_netlist(module, library_);
    if (is_mutated) declare_mutexes(netlist.circuit, command);
    const support::ProgramRun result = call(command);
    if (result.exit_code == 2) {
      EXPECT_TRUE(is_mutated) << result.err;
      EXPECT_TRUE(is_refused_rightly(subject, netlist, result.err)) << result.err;
      EXPECT_EQ(result.out, "");
      EXPECT_FALSE(exists("out.json"));
      return;
    }
    ASSERT_EQ(netlist.fault, "");
    const Json document = checked_document(file("out.json"));
    auto& initial = netlist.circuit.initial;
    for (const Json& wire : document.at("wires")) {
      const std::string name = wire.at("name");
      const bool value = wire.at("initial_value") == 1;
      // What a change makes of wires without a value of their own is another matter.
      if (is_mutated) initial.emplace(name, value);
      EXPECT_TRUE(!initial.contains(name) || initial.at(name) == value) << name;
    }
    const oracle::CircuitStates states(subject.stg, subject.graph, subject.initial, netlist.circuit,
                                       max_states);
    if (states.faults().obstacle == "too many states") return;
    ASSERT_EQ(states.faults().obstacle, "");
    compare_answers(states, document, result);
  }

  // Here and there, between any two.
  void declare_mutexes(oracle::Circuit& circuit, Arguments& command) {
    const std::string& a = circuit.gates[random_.below(circuit.gates.size())].output;
    const std::string& b = circuit.gates[random_.below(circuit.gates.size())].output;
    if (a == b || random_.chance(70)) return;
    circuit.mutexes.emplace(a, b);
    command.insert(command.end(), {"--mutex", a + ',' + b});
  }

  bool is_refused_rightly(const Subject& subject, const oracle::Netlist& netlist,
                          const std::string& message) const {
    if (!netlist.fault.empty()) return true;
    // The oracle lets such wires swing and stops somewhere.
    if (message.find("--initial") != std::string::npos) return true;
    const oracle::CircuitStates states(subject.stg, subject.graph, subject.initial, netlist.circuit,
                                       max_states);
    return !states.faults().obstacle.empty();
  }

  void compare_answers(const oracle::CircuitStates& states, const Json& document,
                       const support::ProgramRun& result) {
    bool has_fault = false;
    std::set<std::pair<std::string, std::string>> arbiters;
    for (const Json& pair : document.at("arbiters"))
      arbiters.insert(std::minmax<std::string>(pair.at(0), pair.at(1)));
    EXPECT_EQ(arbiters, states.faults().arbiters);
    for (std::size_t i = 0; i < questions.size(); ++i) {
      const auto& [key, question] = questions[i];
      const Json& answer = document.at("questions").at(i);
      ASSERT_EQ(answer.at("question"), key);
      const std::string fault = states.faults()[question];
      const bool is_left_open = answer.at("answer") == "undecided" && result.exit_code == 3;
      EXPECT_TRUE(is_left_open || answer.at("answer") == (fault.empty() ? "yes" : "no"))
          << key << ": " << fault << answer;
      has_fault = has_fault || !fault.empty();
      if (answer.at("answer") != "no") continue;
      std::vector<oracle::CircuitEdge> trace;
      for (const std::string edge : answer.at("trace"))
        trace.push_back({edge.substr(0, edge.size() - 1), edge.back() == '+'});
      EXPECT_EQ(states.refute(question, answer.at("wire"), trace), "") << key << ": " << answer;
    }
    EXPECT_EQ(result.exit_code, has_fault ? 3 : 0) << result.err;
    EXPECT_EQ(document.at("verdict"), has_fault ? "not correct" : "correct");
    ++(has_fault ? not_correct_ : correct_);
  }

  // Its netlists, and each of them with one change of every kind.
  void try_all(Subject& subject, const std::string& g_text, std::uint64_t seed) {
    const auto netlists = netlists_of(g_text);
    if (netlists.empty() || !subject.explore()) return;
    random_ = oracle::Random(seed);
    for (const auto& [mode, module] : netlists) {
      compare(subject, module, mode, false);
      for (std::size_t m = 0; m < oracle::netlist_mutation_count; ++m) {
        const auto mutation = static_cast<oracle::NetlistMutation>(m);
        if (const auto changed = oracle::mutated(module, mutation, library_, random_)) {
          compare(subject, *changed, oracle::name_of(mutation), true);
          ++mutations_;
        }
      }
    }
    netlists_ += netlists.size();
  }

  oracle::Random random_{1};
  std::map<std::string, toolkit::LibraryGate> library_;
  std::size_t netlists_ = 0, mutations_ = 0, correct_ = 0, not_correct_ = 0;
};

TEST_F(VerifyCampaign, AnswersAboutExamplesAreThoseOfAllTheirStates) {
  std::uint64_t seed = 1;
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (entry.path().extension() != ".g") continue;
    const std::string text = support::read_text(entry.path());
    for (const bool hides : {false, true}) {
      Subject subject(*oracle::parse_g(text), entry.path().stem(), hides);
      try_all(subject, text, seed++);
    }
  }
  EXPECT_GE(netlists_, 21u);
}

TEST_F(VerifyCampaign, AnswersAboutRandomCircuitsAreThoseOfAllTheirStates) {
  const std::uint64_t tried = support::for_each_seed(16, [&](std::uint64_t seed) {
    const oracle::RandomStgParams params{
        .dummies = seed % 4 == 3, .toggles = seed % 4 == 2, .max_states = 60};
    std::ostringstream text;
    ASSERT_TRUE(formats::write_g(oracle::random_stg(seed, params), text));
    Subject subject(oracle::random_stg(seed, params), "seed " + std::to_string(seed),
                    seed % 5 == 0);
    try_all(subject, text.str(), seed);
  });
  EXPECT_GT(mutations_, tried);
  EXPECT_GT(correct_, netlists_ / 2);
  EXPECT_GT(not_correct_, mutations_ / 4);
}

}  // namespace
}  // namespace vorel::tools
