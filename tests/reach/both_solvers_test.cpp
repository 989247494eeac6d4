#include <gtest/gtest.h>

#include <set>
#include <string>

#include "base/messages.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "reach/deadlock_check.h"
#include "support/seeds.h"

namespace vorel {
namespace {

using EventSets = std::set<std::set<std::uint32_t>>;

struct Question {
  const char* option;
  int value;
};

// The configurations that are found, as sets of events.
template <Process P>
class Answers : public DeadlockCheck<P> {
 public:
  Answers(const P& process, const Params& params) : DeadlockCheck<P>(process, params) {
    this->run();
    for (const auto& solution : this->found().solutions) {
      EXPECT_TRUE(this->validate(*solution));
      std::set<std::uint32_t> events;
      for (const TraceStep& step : solution->traces.at(0)) events.insert(step.event);
      EXPECT_TRUE(sets.insert(events).second) << "a solution is listed twice";
    }
  }
  EventSets sets;
};

template <Process P>
EventSets answers(const P& process, int solver, Question question) {
  Params params;
  for (const char* key : {"restrict_branching", "store_cnf_formula", "output_configurations",
                          "all_solutions", "method", "min_cost"})
    params.set(key, 0);
  params.set("solver", solver);
  for (const char* key : {"no_max_dummies", "enable_via_dummies"}) params.set(key, 1);
  params.set(question.option, question.value);
  return Answers<P>(process, params).sets;
}

template <Process P>
void expect_same_answers(const P& process) {
  const auto both = [&](Question question) {
    return std::pair(answers(process, 0, question), answers(process, 1, question));
  };
  for (const Question question : {Question{"restrict_branching", 0}, {"restrict_branching", 1}}) {
    const auto [own, other] = both(question);
    EXPECT_EQ(own.size(), other.size());
  }
  const auto [shortest, others_shortest] = both({"min_cost", 1});
  ASSERT_EQ(shortest.size(), others_shortest.size());
  if (!shortest.empty()) {
    EXPECT_EQ(shortest.begin()->size(), others_shortest.begin()->size());
  }
  constexpr int limit = 500;
  const auto [all, others_all] = both({"all_solutions", limit});
  EXPECT_EQ(all.size(), others_all.size());
  if (all.size() < limit) {
    EXPECT_EQ(all, others_all);
  }
}

TEST(DeadlockCheck, HasTheSameAnswersWithBothSolvers) {
  const auto [first, end] = seeds(60);
  testing::internal::CaptureStderr();  // warnings of prefixes without cut-offs
  for (std::uint64_t seed = first; seed < end && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    if (const auto prefix = oracle::unfold(oracle::random_net(seed))) expect_same_answers(*prefix);
    if (const auto prefix = oracle::unfold(oracle::random_stg(seed))) expect_same_answers(*prefix);
  }
  testing::internal::GetCapturedStderr();
  EXPECT_FALSE(run_failed());
}

}  // namespace
}  // namespace vorel
