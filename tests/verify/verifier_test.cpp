// The verifier against all reachable states of circuit and STG, and hand-made classics.
#include "verify/verifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>

#include "oracle/coding.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "support/seeds.h"
#include "verify/random_circuit.h"

namespace vorel::verify {
namespace {

using verify_testing::TableCircuit;

using Function = std::function<bool(const std::vector<bool>& inputs, bool output)>;

verify_testing::TableGate gate(const std::string& output, const std::vector<std::string>& inputs,
                               const Function& next) {
  verify_testing::TableGate result{output, inputs, {}};
  for (std::size_t row = 0; row < std::size_t{2} << inputs.size(); ++row) {
    std::vector<bool> values;
    for (std::size_t i = 0; i < inputs.size(); ++i) values.push_back((row >> i & 1u) != 0);
    result.next.push_back(next(values, (row >> inputs.size() & 1u) != 0));
  }
  return result;
}
bool all_of(const std::vector<bool>& inputs, bool) {
  return std::ranges::all_of(inputs, std::identity{});
}
bool any_of(const std::vector<bool>& inputs, bool) {
  return std::ranges::any_of(inputs, std::identity{});
}
bool c_element(const std::vector<bool>& inputs, bool now) {
  return now ? any_of(inputs, now) : all_of(inputs, now);
}
bool first_only(const std::vector<bool>& inputs, bool) { return inputs[0] && !inputs[1]; }

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

struct Subject {
  net::Stg stg;
  Circuit circuit;

  Subject(const char* text, const TableCircuit& gates) : stg{*oracle::parse_g(text)} {
    EXPECT_TRUE(oracle::assign_initial_values(stg));
    const auto graph = oracle::explore(stg);
    circuit = verify_testing::circuit_of(gates, stg, *oracle::find_initial_values(stg, graph));
  }
  WireId wire(const std::string& name) const {
    const auto found = std::ranges::find(circuit.wires, name, &Wire::name);
    return {static_cast<std::uint32_t>(found - circuit.wires.begin())};
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
void compare(const Verification& verification, const Circuit& circuit,
             const oracle::CircuitStates& states) {
  EXPECT_EQ(states.faults().obstacle, "");
  for (std::size_t q = 0; q < question_count; ++q)
    EXPECT_EQ(verification.answers[q],
              states.faults().faults[q].empty() ? Answer::holds : Answer::fails)
        << q << ": " << states.faults().faults[q];
  const auto name_of = [&](WireId wire) { return circuit.wires[wire.value].name; };
  for (const Finding& finding : verification.findings) {
    std::vector<oracle::CircuitEdge> trace;
    for (const TraceEdge& edge : finding.trace) trace.push_back({name_of(edge.wire), edge.rises});
    const auto question = static_cast<oracle::CircuitQuestion>(finding.question);
    EXPECT_EQ(states.refute(question, name_of(finding.wire), trace), "") << finding.message;
  }
}

TEST(Verifier, KnowsTheClassics) {
  const auto buffer = [](const char* output, const char* input) {
    return gate(output, {input}, all_of);
  };
  const Function zero = [](const auto&, bool) { return false; };
  const struct {
    const char* name;
    const char* stg;
    TableCircuit gates;
    const char* answers;
  } cases[] = {
      {"a C-element", c_element_stg, {gate("c", {"a", "b"}, c_element)}, "yyyyy"},
      {"a C-element of four gates",
       c_element_stg,
       {gate("ab", {"a", "b"}, all_of), gate("ac", {"a", "c"}, all_of),
        gate("bc", {"b", "c"}, all_of), gate("c", {"ab", "ac", "bc"}, any_of)},
       "ynnyy | a+ b+ ab+ c+ a- ab- c-  | a+ b+ ab+ c+ a- "},
      {"an inverted buffer",
       buffer_stg,
       {gate("z", {"a"}, [](const auto& inputs, bool) { return !inputs[0]; })},
       "nnnnn |  | z+  | a+  | a+  | a+ "},
      {"an output that stands still", buffer_stg, {gate("z", {"a"}, zero)}, "yyynn | a+  | a+ "},
      {"one of two that stands still",
       two_buffers_stg,
       {buffer("y", "a"), gate("z", {}, zero)},
       "yyyny | b+ "},
      {"an arbiter by the choice of the STG",
       mutex_stg,
       {gate("g", {"r", "h"}, first_only), gate("h", {"s", "g"}, first_only)},
       "yyyyy"},
      {"one that always prefers the same",
       mutex_stg,
       {gate("g", {"r", "h"}, first_only), gate("h", {"s", "g", "r"},
                                                [](const auto& inputs, bool now) {
                                                  return inputs[0] && !inputs[1] &&
                                                         (now || !inputs[2]);
                                                })},
       "yynny | s+ r+  | r+ s+ "},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Subject subject(c.stg, c.gates);
    EXPECT_EQ(subject.answers(), c.answers);
    const oracle::Circuit explored = verify_testing::oracle_circuit(c.gates);
    const auto graph = oracle::explore(subject.stg);
    const auto initial = *oracle::find_initial_values(subject.stg, graph);
    compare(*verify(subject.stg, subject.circuit), subject.circuit,
            {subject.stg, graph, initial, explored});
  }
}

TEST(Verifier, LeavesUndecidedWhatLimitsLeaveOpen) {
  TableCircuit chain{gate("z", {"w1"}, all_of)};
  for (int i = 1; i < 30; ++i)
    chain.push_back(gate("w" + std::to_string(i), {"w" + std::to_string(i + 1)}, all_of));
  chain.push_back(gate("w30", {"a"}, all_of));
  VerifierOptions limited;
  limited.limits.max_events = 10;
  const Subject right(buffer_stg, chain);
  EXPECT_EQ(right.answers(), "yyyyy");
  EXPECT_EQ(right.answers(limited), "y????");
  chain.push_back(gate("v", {"w30", "w29"}, first_only));
  EXPECT_EQ(Subject(buffer_stg, chain).answers(limited), "y?n?? | a+ w30+ w29+ ");
}

TEST(Verifier, LetsDeclaredMutexesArbitrate) {
  Subject subject(mutex_stg,
                  {gate("g", {"gm", "h"}, first_only), gate("h", {"hm", "g"}, first_only),
                   gate("gm", {"r", "hm"}, first_only), gate("hm", {"s", "gm"}, first_only)});
  EXPECT_EQ(subject.answers().substr(0, 5), "yynny");
  const std::pair pair(subject.wire("gm"), subject.wire("hm"));
  subject.circuit.mutexes = {pair, {subject.wire("g"), subject.wire("r")}};
  const auto verification = verify(subject.stg, subject.circuit);
  ASSERT_TRUE(verification);
  EXPECT_EQ(verification->verdict(), Answer::holds);
  EXPECT_EQ(verification->arbiters, std::vector{pair});
}

TEST(Verifier, AgreesWithAllReachableStates) {
  std::array<unsigned, question_count + 1> count{};  // of those with a fault; the last: correct
  const auto seeds = support::seeds(300);
  for (std::uint64_t seed = seeds.first; seed < seeds.end; ++seed) {
    SCOPED_TRACE(seed);
    oracle::Random random(seed);
    net::Stg stg = oracle::random_stg(seed, {random.chance(40), random.chance(20), 150});
    ASSERT_TRUE(oracle::assign_initial_values(stg));
    const auto graph = oracle::explore(stg);
    const auto initial = *oracle::find_initial_values(stg, graph);
    if (stg.inputs_end == stg.internals_end) continue;
    TableCircuit table = verify_testing::random_circuit(stg, graph, initial, random);
    for (std::uint32_t i = random.below(4); i > 0; --i) verify_testing::split(table, random);
    if (random.chance(40)) verify_testing::mutate(table, random);
    const oracle::Circuit explored = verify_testing::oracle_circuit(table);
    const oracle::CircuitStates states(stg, graph, initial, explored);
    const Circuit circuit = verify_testing::circuit_of(table, stg, initial);
    const auto verification = verify(stg, circuit);
    ASSERT_TRUE(verification);
    compare(*verification, circuit, states);
    for (const Finding& finding : verification->findings)
      ++count[static_cast<std::size_t>(finding.question)];
    if (verification->verdict() == Answer::holds) ++count.back();
  }
  for (std::size_t i = 0; i < count.size(); ++i)
    RecordProperty("count" + std::to_string(i), count[i]);
  EXPECT_TRUE(std::ranges::all_of(count, [](unsigned number) { return number > 0; }));
}

}  // namespace
}  // namespace vorel::verify
