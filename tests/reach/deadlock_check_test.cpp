#include "reach/deadlock_check.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "base/messages.h"
#include "net/initial_values.h"
#include "oracle/net_text.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "support/process_builder.h"
#include "support/seeds.h"

namespace vorel {
namespace {

using oracle::Marking;

template <Process P>
class Probe : public DeadlockCheck<P> {
 public:
  Probe(const P& process, const Params& params) : DeadlockCheck<P>(process, params) {
    this->run();
    for (const auto& solution : this->found().solutions) {
      EXPECT_TRUE(this->validate(*solution));
      traces.push_back(solution->traces.at(0));
    }
  }
  std::vector<Trace> traces;
};

// What the explicit state graph says of a net.
struct Truth {
  std::set<Marking> deadlocks;
  std::optional<std::uint32_t> shortest;
};

template <class N>
Truth truth_of(const N& net) {
  const auto graph = oracle::explore(net);
  EXPECT_EQ(graph.outcome, oracle::Exploration::complete);
  return {graph.deadlocks(), graph.shortest_deadlock()};
}

// Replays a trace by the names of its transitions; the marking that it ends in.
template <Process P>
Marking end_of(const P& process, const Trace& trace) {
  std::vector<std::string> names;
  for (const TraceStep& step : trace) names.push_back(*step.transition);
  const auto marking = oracle::replay<typename P::NetType>(process, names);
  EXPECT_TRUE(marking.has_value()) << "a trace that does not replay";
  return marking.value_or(Marking{});
}

template <Process P>
std::set<Marking> ends_of(const P& process, const std::vector<Trace>& traces) {
  std::set<Marking> ends;
  for (const Trace& trace : traces) ends.insert(end_of(process, trace));
  return ends;
}

std::set<std::set<std::uint32_t>> event_sets_of(const std::vector<Trace>& traces) {
  std::set<std::set<std::uint32_t>> sets;
  for (const Trace& trace : traces) {
    std::set<std::uint32_t> events;
    for (const TraceStep& step : trace) events.insert(step.event);
    sets.insert(events);
  }
  return sets;
}

// The number of configurations without cut-offs that enable nothing, by trying all of them; events
// are numbered after their causes.
template <Process P>
std::size_t count_dead_configurations(const P& process) {
  std::vector<bool> marked(process.conditions.size());
  for (const auto& c : process.conditions) marked[c->index] = c->is_initial();
  const auto enabled = [&marked](const typename P::Event& event) {
    return std::ranges::all_of(event.preset, [&](const auto* c) { return marked[c->index]; });
  };
  std::function<std::size_t(std::size_t)> count = [&](std::size_t next) -> std::size_t {
    if (next == process.events.size()) {
      return std::ranges::none_of(process.events, [&](const auto& e) { return enabled(*e); });
    }
    std::size_t found = count(next + 1);
    const auto& event = *process.events[next];
    if (event.is_cut_off() || !enabled(event)) return found;
    for (const auto* c : event.preset) marked[c->index] = false;
    for (const auto* c : event.postset) marked[c->index] = true;
    found += count(next + 1);
    for (const auto* c : event.postset) marked[c->index] = false;
    for (const auto* c : event.preset) marked[c->index] = true;
    return found;
  };
  return count(0);
}

Params params_with(std::initializer_list<std::pair<const char*, int>> options) {
  Params params;
  for (const char* key : {"restrict_branching", "store_cnf_formula", "output_configurations",
                          "all_solutions", "method", "min_cost"}) {
    params.set(key, 0);
  }
  for (const char* key : {"solver", "no_max_dummies", "enable_via_dummies"}) params.set(key, 1);
  for (const auto& [key, value] : options) params.set(key, value);
  return params;
}

template <Process P>
void expect_right_answers(const P& process, const Truth& truth) {
  const bool has_deadlock = !truth.deadlocks.empty();
  for (const int method : {0, 1, 2}) {
    for (const int restrict_branching : {0, 1}) {
      const auto with = [&](int min_cost) {
        return params_with({{"method", method},
                            {"restrict_branching", restrict_branching},
                            {"min_cost", min_cost}});
      };
      const Probe<P> one(process, with(0));
      EXPECT_EQ(!one.traces.empty(), has_deadlock) << "method " << method;
      for (const Trace& trace : one.traces) {
        EXPECT_TRUE(truth.deadlocks.contains(end_of(process, trace)));
      }
      const Probe<P> shortest(process, with(1));
      ASSERT_EQ(!shortest.traces.empty(), has_deadlock);
      if (has_deadlock) {
        EXPECT_EQ(shortest.traces[0].size(), truth.shortest);
      }
    }
  }
}

template <Process P>
void expect_all_solutions(const P& process, const Truth& truth) {
  const std::size_t expected = count_dead_configurations(process);
  for (const int method : {1, 2}) {
    for (const int restrict_branching : {0, 1}) {
      const Probe<P> all(process, params_with({{"method", method},
                                               {"restrict_branching", restrict_branching},
                                               {"all_solutions", -1}}));
      EXPECT_EQ(all.traces.size(), expected);
      EXPECT_EQ(event_sets_of(all.traces).size(), expected) << "a solution is listed twice";
      EXPECT_EQ(ends_of(process, all.traces), truth.deadlocks);
    }
    const Probe<P> some(process, params_with({{"method", method}, {"all_solutions", 2}}));
    EXPECT_EQ(some.traces.size(), std::min<std::size_t>(2, expected));
  }
}

template <class N>
void compare_with_state_graph(const N& net, std::size_t& with_deadlock) {
  const Truth truth = truth_of(net);
  auto prefix = oracle::unfold(net);
  ASSERT_TRUE(prefix.has_value());
  with_deadlock += truth.deadlocks.empty() ? 0 : 1;
  expect_right_answers(*prefix, truth);
  const auto lasting =
      std::ranges::count_if(prefix->events, [](const auto& event) { return !event->is_cut_off(); });
  if (lasting <= 16) expect_all_solutions(*prefix, truth);
  EXPECT_FALSE(run_failed());
}

template <class Make>
void compare_on_seeds(Make make) {
  const auto [first, end] = seeds(100);
  testing::internal::CaptureStderr();  // warnings of prefixes without cut-offs
  std::size_t with_deadlock = 0;
  for (std::uint64_t seed = first; seed < end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    compare_with_state_graph(make(seed), with_deadlock);
    if (testing::Test::HasFailure()) break;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("check failed"), std::string::npos);
  EXPECT_GT(with_deadlock, (end - first) / 50);
  EXPECT_LT(with_deadlock, end - first);
}

TEST(DeadlockCheck, AgreesWithTheStateGraphOfRandomNets) {
  compare_on_seeds([](std::uint64_t seed) { return oracle::random_net(seed); });
}

TEST(DeadlockCheck, AgreesWithTheStateGraphWhereShortcutsGoWrong) {
  testing::internal::CaptureStderr();
  std::size_t with_deadlock = 0;
  for (const auto& trap : oracle::trap_nets()) {
    SCOPED_TRACE(trap.name);
    compare_with_state_graph(oracle::net_from(trap.text), with_deadlock);
  }
  compare_with_state_graph(oracle::philosophers(4), with_deadlock);
  compare_with_state_graph(oracle::token_ring(3, 3), with_deadlock);
  testing::internal::GetCapturedStderr();
}

// So many rivals that their constraints share what they have in common.
TEST(DeadlockCheck, AgreesWithTheStateGraphOfAWideChoice) {
  ProcessBuilder<NetPrefix> b;
  auto& choice = b.condition("choice");
  auto& other = b.condition("other");
  for (int i = 0; i < 40; ++i) {
    const std::string number = std::to_string(i);
    auto& own = b.condition("own" + number);
    auto& chosen = b.condition("chosen" + number);
    b.event("choose" + number, {&choice, &own}, {&chosen});
    if (i % 8 == 0) b.event("take" + number, {&other, &chosen}, {&b.condition("end" + number)});
  }
  b.finish();
  testing::internal::CaptureStderr();  // no cut-offs
  const Truth truth = truth_of<Net>(*b.process);
  EXPECT_EQ(truth.deadlocks.size(), 40u);
  expect_right_answers(*b.process, truth);
  expect_all_solutions(*b.process, truth);
  testing::internal::GetCapturedStderr();
}

TEST(DeadlockCheck, AgreesWithTheStateGraphOfRandomStgs) {
  compare_on_seeds([](std::uint64_t seed) {
    return oracle::random_stg(seed, {.dummies = seed % 3 == 0, .toggles = seed % 4 == 0});
  });
}

}  // namespace
}  // namespace vorel
