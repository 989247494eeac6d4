// The verifier against all reachable states of circuit and STG, and hand-made classics.
#include "verify/verifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

#include "oracle/coding.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "support/seeds.h"
#include "verify/random_circuit.h"

namespace vorel::verify {
namespace {

using verify_testing::TableCircuit;

// Two outputs between which the STG chooses: an arbiter is no fault, which the oracle does not
// know.
bool has_choice_of_outputs(const net::Stg& stg, const oracle::StateGraph<net::Stg>& graph) {
  return std::ranges::any_of(oracle::disabled_signals(stg, graph),
                             [&](const auto& pair) { return pair.second >= stg.inputs_end; });
}

// The question that the oracle's first fault belongs to.
Question question_of(const std::string& fault) {
  const std::map<std::string, Question> texts{{"is not at rest", Question::initial_state},
                                              {"where the STG", Question::conformance},
                                              {"is disabled by", Question::hazard},
                                              {"never changes", Question::progress}};
  for (const auto& [text, question] : texts)
    if (fault.find(text) != std::string::npos) return question;
  ADD_FAILURE() << "the oracle says: " << fault;
  return Question::deadlock;
}

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
    EXPECT_EQ(Subject(c.stg, c.gates).answers(), c.answers);
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
  EXPECT_EQ(subject.answers().substr(0, 5), "yynyy");
  const std::pair pair(subject.wire("gm"), subject.wire("hm"));
  subject.circuit.mutexes = {pair, {subject.wire("g"), subject.wire("r")}};
  const auto verification = verify(subject.stg, subject.circuit);
  ASSERT_TRUE(verification);
  EXPECT_EQ(verification->verdict(), Answer::holds);
  EXPECT_EQ(verification->arbiters, std::vector{pair});
}

TEST(Verifier, AgreesWithAllReachableStates) {
  std::map<std::string, unsigned> count;
  const auto seeds = support::seeds(300);
  for (std::uint64_t seed = seeds.first; seed < seeds.end; ++seed) {
    SCOPED_TRACE(seed);
    oracle::Random random(seed);
    net::Stg stg = oracle::random_stg(seed, {random.chance(40), random.chance(20), 150});
    ASSERT_TRUE(oracle::assign_initial_values(stg));
    const auto graph = oracle::explore(stg);
    const auto initial = *oracle::find_initial_values(stg, graph);
    if (stg.inputs_end == stg.internals_end || has_choice_of_outputs(stg, graph)) continue;
    TableCircuit table = verify_testing::random_circuit(stg, graph, initial, random);
    for (std::uint32_t i = random.below(4); i > 0; --i) verify_testing::split(table, random);
    if (random.chance(40)) verify_testing::mutate(table, random);
    const std::string fault =
        oracle::find_fault(stg, graph, initial, verify_testing::oracle_circuit(table));
    const auto verification = verify(stg, verify_testing::circuit_of(table, stg, initial));
    ASSERT_TRUE(verification);
    if (fault.empty()) {
      EXPECT_EQ(verification->verdict(), Answer::holds)
          << (verification->findings.empty() ? "" : verification->findings.front().message);
      ++count["right"];
    } else {
      const Question question = question_of(fault);
      EXPECT_EQ(verification->answers[static_cast<std::size_t>(question)], Answer::fails) << fault;
      ++count[fault.substr(fault.find(' ') + 1, 9)];
    }
  }
  for (const auto& [text, number] : count) std::printf("%s: %u\n", text.c_str(), number);
}

}  // namespace
}  // namespace vorel::verify
