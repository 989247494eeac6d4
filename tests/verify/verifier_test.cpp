// The verifier against all reachable states of circuit and STG, and hand-made classics.
#include "verify/verifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

#include "net/clone_net.h"
#include "oracle/netlist.h"
#include "oracle/netlist_mutations.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "support/seeds.h"
#include "verify/circuit_builder.h"
#include "verify/random_circuit.h"

namespace vorel::verify {
namespace {

constexpr const char* c_element_stg =
    ".inputs a b\n.outputs c\n.graph\na+ c+\nb+ c+\nc+ a- b-\na- c-\nb- c-\nc- a+ b+\n"
    ".marking { <c-,a+> <c-,b+> }\n.end\n";
constexpr const char* buffer_stg =
    ".inputs a\n.outputs z\n.graph\na+ z+\nz+ a-\na- z-\nz- a+\n.marking { <z-,a+> }\n.end\n";
constexpr const char* two_buffers_stg =
    ".inputs a b\n.outputs y z\n.graph\na+ y+\ny+ a-\na- y-\ny- a+\nb+ z+\nz+ b-\nb- z-\nz- b+\n"
    ".marking { <y-,a+> <z-,b+> }\n.end\n";
constexpr const char* mutex_stg =
    ".inputs r s\n.outputs g h\n.graph\nr+ g+\nme g+\ng+ r-\nr- g-\ng- r+ me\n"
    "s+ h+\nme h+\nh+ s-\ns- h-\nh- s+ me\n.marking { me <g-,r+> <h-,s+> }\n.end\n";

// An STG, its states, and a circuit as the verifier and as the exploration see it.
struct Subject {
  const net::Stg stg;
  const oracle::StateGraph<net::Stg> graph;
  const oracle::Values initial;
  const oracle::Circuit explored;
  const oracle::CircuitStates states;
  const Circuit circuit;

  Subject(net::Stg of, const std::string& module)
      : stg{with_values(std::move(of))},
        graph{oracle::explore(stg)},
        initial{*oracle::find_initial_values(stg, graph)},
        explored{oracle::read_netlist(module, {}).circuit},
        states{stg, graph, initial, explored},
        circuit{*read_circuit_text(module, "m.v", stg, {}, {})} {}
  static net::Stg with_values(net::Stg stg) {
    EXPECT_TRUE(oracle::assign_initial_values(stg));
    return stg;
  }
  std::string text_of(const std::vector<TraceEdge>& trace) const {
    std::string text;
    for (const TraceEdge& edge : trace)
      text += circuit.wires[edge.wire.value].name + (edge.rises ? "+ " : "- ");
    return text;
  }
  // By question: yes, no or undecided; behind no the trace.
  std::string answers(const VerifierOptions& options = {}) const {
    const auto verification = verify(stg, circuit, options);
    if (!verification) return "error";
    std::string text;
    for (const Answer answer : verification->answers)
      text += answer == Answer::holds ? 'y' : answer == Answer::fails ? 'n' : '?';
    for (const Finding& finding : verification->findings) text += " | " + text_of(finding.trace);
    return text;
  }
};

// Each answer is that of the exploration, and each trace shows there that it is no.
void compare(const Verification& verification, const Subject& subject) {
  const oracle::CircuitStates& states = subject.states;
  EXPECT_EQ(states.faults().obstacle, "");
  for (std::size_t q = 0; q < question_count; ++q)
    EXPECT_EQ(verification.answers[q],
              states.faults().faults[q].empty() ? Answer::holds : Answer::fails)
        << q << ": " << states.faults().faults[q];
  const auto name_of = [&](WireId wire) { return subject.circuit.wires[wire.value].name; };
  for (const Finding& finding : verification.findings) {
    std::vector<oracle::CircuitEdge> trace;
    for (const TraceEdge& edge : finding.trace) trace.push_back({name_of(edge.wire), edge.rises});
    const auto question = static_cast<oracle::CircuitQuestion>(finding.question);
    EXPECT_EQ(states.refute(question, name_of(finding.wire), trace), "") << finding.message;
  }
}

// As vorel writes it, with one statement a line.
std::string module_of(const char* stg, const std::vector<std::string>& assignments) {
  const net::Stg parsed = *oracle::parse_g(stg);
  std::string ports, text;
  for (const auto& signal : parsed.signals) {
    ports += (ports.empty() ? "" : ", ") + signal->name;
    text +=
        (signal->index < parsed.inputs_end ? "    input " : "    output ") + signal->name + ";\n";
  }
  for (const std::string& assignment : assignments) text += "    assign " + assignment + ";\n";
  return "module m(" + ports + ");\n" + text + "endmodule\n";
}

TEST(Verifier, KnowsTheClassics) {
  const struct {
    const char* name;
    const char* stg;
    std::vector<std::string> assignments;
    const char* answers;
  } cases[] = {
      {"a C-element", c_element_stg, {"c = a & b | c & (a | b)"}, "yyyyy"},
      {"a C-element of four gates",
       c_element_stg,
       {"ab = a & b", "ac = a & c", "bc = b & c", "c = ab | ac | bc"},
       "ynnyy | a+ b+ ab+ c+ a- ab- c-  | a+ b+ ab+ c+ a- "},
      {"an inverted buffer", buffer_stg, {"z = ~a"}, "nnnnn |  | z+  | a+  | a+  | a+ "},
      {"an output that stands still", buffer_stg, {"z = 1'b0"}, "yyynn | a+  | a+ "},
      {"one of two that stands still", two_buffers_stg, {"y = a", "z = 1'b0"}, "yyyny | b+ "},
      {"an arbiter by the choice of the STG", mutex_stg, {"g = r & ~h", "h = s & ~g"}, "yyyyy"},
      {"one that always prefers the same",
       mutex_stg,
       {"g = r & ~h", "h = s & ~g & (h | ~r)"},
       "yynny | s+ r+  | r+ s+ "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Subject subject(*oracle::parse_g(c.stg), module_of(c.stg, c.assignments));
    EXPECT_EQ(subject.answers(), c.answers);
    compare(*verify(subject.stg, subject.circuit), subject);
  }
}

TEST(Verifier, LeavesUndecidedWhatLimitsLeaveOpen) {
  std::vector<std::string> chain{"z = w1"};
  for (int i = 1; i < 30; ++i)
    chain.push_back("w" + std::to_string(i) + " = w" + std::to_string(i + 1));
  chain.push_back("w30 = a");
  const auto answers = [&](int most_events) {
    VerifierOptions limited;
    limited.limits.max_events = most_events;
    return Subject(*oracle::parse_g(buffer_stg), module_of(buffer_stg, chain)).answers(limited);
  };
  EXPECT_EQ(answers(1000), "yyyyy");
  EXPECT_EQ(answers(10), "y????");
  chain.push_back("v = w30 & ~w29");
  EXPECT_EQ(answers(10), "y?n?? | a+ w30+ w29+ ");
}

TEST(Verifier, AgreesWithAllReachableStates) {
  std::array<unsigned, question_count + 1> count{};  // of those with a fault; the last: correct
  support::for_each_seed(300, [&](std::uint64_t seed) {
    oracle::Random random(seed);
    const net::Stg stg = oracle::random_stg(seed, {random.chance(40), random.chance(20), 150});
    if (stg.inputs_end == stg.internals_end) return;
    const auto graph = oracle::explore(stg);
    std::string module =
        verify_testing::random_module(stg, graph, *oracle::find_initial_values(stg, graph), random);
    const auto kind =
        static_cast<oracle::NetlistMutation>(random.below(2 * oracle::netlist_mutation_count));
    // Half of them stay as they are; other initial values than the STG has are refused.
    if (kind != oracle::NetlistMutation::initial_value_flipped)
      module = oracle::mutated(module, kind, {}, random).value_or(module);
    SCOPED_TRACE(module);
    const Subject subject(net::clone_net(stg), module);
    const auto verification = verify(subject.stg, subject.circuit);
    ASSERT_TRUE(verification);
    compare(*verification, subject);
    for (const Finding& finding : verification->findings)
      ++count[static_cast<std::size_t>(finding.question)];
    if (verification->verdict() == Answer::holds) ++count.back();
  });
  for (std::size_t i = 0; i < count.size(); ++i)
    RecordProperty("count" + std::to_string(i), count[i]);
  EXPECT_TRUE(std::ranges::all_of(count, [](unsigned number) { return number > 0; }));
}

}  // namespace
}  // namespace vorel::verify
