// The flow as a whole, next to the exploration of all states and to the programs of its steps.
#include "flow/flow.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "base/messages.h"
#include "decomposition/gate_library.h"
#include "formats/g_reader.h"
#include "formats/g_writer.h"
#include "oracle/coding.h"
#include "oracle/netlist.h"
#include "oracle/random_stg.h"
#include "oracle/resolution_checks.h"
#include "support/caught_messages.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::flow {
namespace {

std::string g_text(const net::Stg& stg) {
  std::ostringstream text;
  EXPECT_TRUE(formats::write_g(stg, text));
  return text.str();
}

net::Stg parsed(const std::string& text) {
  auto stg = formats::read_g_text(text, "subject.g");
  EXPECT_TRUE(stg);
  return std::move(*stg);
}

class Flow : public testing::Test {
 protected:
  Flow() {
    const auto gates = decomposition::read_gates("");
    for (const toolkit::LibraryGate& gate : *gates) library_.emplace(gate.name, gate);
  }

  static FlowResult run(const std::string& text, FlowRequest request = {}) {
    if (request.stg_name.empty()) request.stg_name = "subject.g";
    const std::uint32_t severity = base::raise_severity(0);
    const support::CaughtMessages errors, output(std::cout);
    FlowResult result = run_flow(parsed(text), request);
    EXPECT_EQ(errors.text() + output.text(), "");
    EXPECT_EQ(base::raise_severity(0), severity);
    return result;
  }

  // What the verdict claims, next to all states of the STG and of the circuit.
  void expect_honest(const std::string& text, const FlowResult& result, bool is_reduced = false) {
    const net::Stg before = parsed(text);
    const auto graph = oracle::explore(before);
    ASSERT_EQ(graph.outcome, oracle::Exploration::complete);
    EXPECT_EQ(result.hint.empty(), result.verdict <= Verdict::verified_with_warnings);
    ASSERT_TRUE(result.coding) << result.sentence;
    const auto conflicts = oracle::conflicting_signals(before);
    EXPECT_TRUE(result.coding->csc_holds || !conflicts.empty());
    const bool has_fault = std::ranges::any_of(
        result.findings, [](const StgFinding& f) { return f.gravity == Gravity::fault; });
    EXPECT_EQ(result.verdict == Verdict::faulty_stg, has_fault);
    for (const auto& [loser, taker] : oracle::disabled_signals(before, graph))
      EXPECT_TRUE(taker >= before.inputs_end || has_fault);
    for (const StgFinding& finding : result.findings)
      EXPECT_TRUE(finding.kind != FindingKind::irreducible ||
                  std::ranges::count(conflicts, finding.subjects.front()) != 0);
    if (result.verdict <= Verdict::verified_with_warnings)
      expect_right_circuit(before, result, is_reduced);
    ++verdicts_[result.verdict];
  }

  void expect_right_circuit(const net::Stg& before, const FlowResult& result, bool is_reduced) {
    const std::string after_text = g_text(*result.circuit_stg());
    SCOPED_TRACE(after_text + result.circuit->module_text);
    const net::Stg after = parsed(after_text);
    const oracle::ResolutionClaim claim{.new_signals = oracle::new_signals(before, after),
                                        .initial_value = std::nullopt,
                                        .reduced = is_reduced};
    EXPECT_EQ(oracle::resolution_fault(before, after, claim), "");
    oracle::Netlist netlist = oracle::read_netlist(result.circuit->module_text, library_);
    ASSERT_EQ(netlist.fault, "");
    netlist.circuit.declared.insert(claim.new_signals.begin(), claim.new_signals.end());
    for (const net::Stg* const stg : {&after, &before}) {
      if (is_reduced && stg == &before) continue;
      const auto graph = oracle::explore(*stg);
      const std::string fault = oracle::find_fault(
          *stg, graph, *oracle::find_initial_values(*stg, graph), netlist.circuit);
      EXPECT_TRUE(fault.empty() || fault == "too many states") << fault;
      too_large_ += fault == "too many states";
    }
  }

  static std::string example(const std::string& name) {
    return support::read_text(std::filesystem::path(VOREL_EXAMPLES) / name);
  }

  std::map<std::string, toolkit::LibraryGate> library_;
  std::map<Verdict, unsigned> verdicts_;
  unsigned too_large_ = 0;  // circuits with too many states for the oracle
};

TEST_F(Flow, LeadsEachExampleToACircuitThatAllItsStatesShowToBeRight) {
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (entry.path().extension() != ".g") continue;
    SCOPED_TRACE(entry.path().filename());
    for (const Style style : {Style::automatic, Style::complex_gate, Style::standard_c}) {
      FlowRequest request;
      request.style = style;
      const std::string text = support::read_text(entry.path());
      const FlowResult result = run(text, request);
      // Which is not right for arbiters.
      EXPECT_TRUE(result.verdict <= Verdict::verified_with_warnings || style == Style::standard_c)
          << result.sentence;
      expect_honest(text, result);
    }
  }
  EXPECT_GE(verdicts_[Verdict::verified], 15u);
}

TEST_F(Flow, IsHonestAboutRandomStgs) {
  const auto [first, end] = support::seeds(25);
  for (std::uint64_t seed = first; seed < end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::string text = g_text(oracle::random_stg(
        seed, {.dummies = seed % 4 == 3, .toggles = seed % 8 == 2, .max_states = 60}));
    FlowRequest request;
    request.resolution.with_reductions = seed % 5 == 0;
    request.limits.max_mapping_seconds = 1;
    request.limits.max_seconds = 10;
    constexpr Style styles[] = {Style::automatic, Style::automatic,  Style::generalised_c,
                                Style::automatic, Style::standard_c, Style::complex_gate};
    request.style = styles[seed % std::size(styles)];
    expect_honest(text, run(text, request), request.resolution.with_reductions);
  }
  for (const auto& [verdict, count] : verdicts_)
    RecordProperty("verdict " + std::to_string(static_cast<int>(verdict)), std::to_string(count));
  EXPECT_GE(verdicts_[Verdict::verified] + verdicts_[Verdict::verified_with_warnings],
            (end - first) / 4);
  EXPECT_LE(too_large_, (end - first) / 20);
}

// The resolved STG and the area are those that the programs of single steps find.
TEST_F(Flow, AnswersAsTheProgramsOfItsStepsDo) {
  const support::TemporaryFolder folder;
  const auto run_vorel = [&](std::vector<std::string> arguments) {
    return support::run_vorel(arguments, {.directory = folder.path()});
  };
  const auto unfold = [&](const std::string& from, const std::string& to) {
    ASSERT_LE(support::run_vorel_unfold({folder.path(from), folder.path(to)}).exit_code, 1);
  };
  FlowRequest request;
  request.style = Style::mapped;
  request.resolution.concurrent_insertions = 0;
  for (const char* const name : {"vme_read.g", "sequencer.g", "latch_ctrl.g"}) {
    SCOPED_TRACE(name);
    const FlowResult result = run(example(name), request);
    folder.write("vorel.g", example(name));
    unfold("vorel.g", "stg.pnml");
    if (result.resolved) {
      run_vorel({"-R", "-f", "stg.pnml"});
      EXPECT_EQ(g_text(parsed(support::read_text(folder.path("vorel.g")))),
                g_text(*result.resolved));
      unfold("vorel.g", "stg.pnml");
    }
    const auto mapping = run_vorel({"-T", "stg.pnml"});
    ASSERT_TRUE(result.circuit);
    for (const Equation& equation : result.circuit->equations)
      EXPECT_NE(mapping.out.find("Equation: " + equation.text), std::string::npos)
          << equation.text << mapping.out;
  }
}

struct BadEnd {
  const char* what;
  std::string text;
  Verdict verdict;
  const char* sentence;  // part of it
  const char* hint;
};

TEST_F(Flow, EndsBadlyWithTheReasonAndAHint) {
  const BadEnd ends[] = {
      {"no output", ".inputs a\n.graph\na+ a-\na- a+\n.marking {<a-,a+>}\n.end\n", Verdict::error,
       "no output or internal signal", "declare"},
      {"unsafe",
       ".inputs a\n.outputs z\n.graph\na+ p z+\nz+ a+\np z-\nz- z+\n.marking {<z+,a+> "
       "<z-,z+>}\n.end\n",
       Verdict::faulty_stg, "p", "trace"},
      {"inconsistent",
       ".inputs a\n.outputs z\n.graph\na+ z+\nz+ a+/2\na+/2 a-\na- z-\nz- a+\n"
       ".marking {<z-,a+>}\n.end\n",
       Verdict::faulty_stg, "a", "trace"},
      {"an input disables an output",
       ".inputs a\n.outputs z\n.graph\np z+ a+\nz+ z-\nz- p\na+ a-\n"
       "a- p\n.marking {p}\n.end\n",
       Verdict::faulty_stg, "z", "wait"},
      {"inputs alone lead on to a state with its code",
       ".inputs a\n.outputs x y\n.graph\na+ x+\nx+ x-\nx- y+\ny+ y-\ny- a-\na- a+\n"
       ".marking {<a-,a+>}\n.end\n",
       Verdict::faulty_stg, "x", "between"},
      {"inputs alone make a conflict",
       ".inputs a\n.outputs z\n.graph\na+ a-\na- z+\nz+ z-\nz- a+\n"
       ".marking {<z-,a+>}\n.end\n",
       Verdict::faulty_stg, "z", "between"},
  };
  for (const BadEnd& end : ends) {
    SCOPED_TRACE(end.what);
    const FlowResult result = run(end.text);
    EXPECT_EQ(result.verdict, end.verdict);
    EXPECT_NE(result.sentence.find(end.sentence), std::string::npos) << result.sentence;
    EXPECT_NE(result.hint.find(end.hint), std::string::npos) << result.hint;
    EXPECT_FALSE(result.circuit);
  }
}

TEST_F(Flow, GivesUpAtItsLimits) {
  FlowRequest few_events;
  few_events.limits.max_events = 3;
  FlowRequest no_time;
  no_time.limits.max_seconds = 1e-6;
  FlowRequest unresolved;
  unresolved.resolution.is_wanted = false;
  for (const FlowRequest& request : {few_events, no_time, unresolved}) {
    const FlowResult result = run(example("vme_read.g"), request);
    EXPECT_EQ(result.verdict, Verdict::gave_up) << result.sentence;
    EXPECT_FALSE(result.hint.empty() || result.circuit);
  }
}

// The search for the fifth signal would take minutes.
TEST_F(Flow, EndsInTimeWithinTheSearchForOneSignal) {
  FlowRequest request;
  request.limits.max_seconds = 1;
  const FlowResult result = run(g_text(oracle::random_stg(20413, {.max_states = 60})), request);
  EXPECT_EQ(result.verdict, Verdict::gave_up) << result.sentence;
  EXPECT_NE(result.sentence.find("conflicts are left after 1 seconds"), std::string::npos)
      << result.sentence;
  EXPECT_LT(result.seconds, 30);
}

TEST_F(Flow, LeavesTimeForTheStylesThatFollowMapping) {
  FlowRequest request;
  request.limits.max_seconds = 3;
  const FlowResult result =
      run(g_text(oracle::random_stg(11, {.dummies = true, .max_states = 60})), request);
  EXPECT_LE(result.verdict, Verdict::verified_with_warnings) << result.sentence;
}

}  // namespace
}  // namespace vorel::flow
