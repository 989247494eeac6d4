// The verifier against all reachable states of circuit and STG, and hand-made classics.
#include "verify/verifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "oracle/coding.h"
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
