#include "reach/deadlock_check.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>

#include "base/messages.h"
#include "net/initial_values.h"
#include "net/merge.h"
#include "oracle/net_builder.h"
#include "oracle/net_text.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "support/default_params.h"
#include "support/seeds.h"

namespace vorel::reach {
namespace {

using oracle::Marking;

template <net::Process P>
class Probe : public DeadlockCheck<P> {
 public:
  Probe(const P& process, const base::Params& params)
      : DeadlockCheck<P>(process, configuration::SearchOptions::of(params)) {
    this->run();
    for (const auto& solution : this->found().solutions) {
      EXPECT_TRUE(this->validate(*solution));
      traces.push_back(solution->traces.at(0));
    }
  }
  std::vector<results::Trace> traces;
};

// What the explicit state graph says of a net.
struct Truth {
  std::set<Marking> deadlocks;
  std::optional<std::uint32_t> shortest;
};

// Replays a trace by the names of its transitions; the marking that it ends in.
template <net::Process P>
Marking end_of(const P& process, const results::Trace& trace) {
  std::vector<std::string> names;
  for (const results::TraceStep& step : trace) names.push_back(*step.transition);
  const auto marking = oracle::replay<typename P::NetType>(process, names);
  EXPECT_TRUE(marking.has_value()) << "a trace that does not replay";
  return marking.value_or(Marking{});
}

template <net::Process P>
std::set<Marking> ends_of(const P& process, const std::vector<results::Trace>& traces) {
  std::set<Marking> ends;
  for (const results::Trace& trace : traces) ends.insert(end_of(process, trace));
  return ends;
}

std::set<std::set<std::uint32_t>> event_sets_of(const std::vector<results::Trace>& traces) {
  std::set<std::set<std::uint32_t>> sets;
  for (const results::Trace& trace : traces) {
    std::set<std::uint32_t> events;
    for (const results::TraceStep& step : trace) events.insert(step.event);
    sets.insert(events);
  }
  return sets;
}

// Tries all configurations without cut-offs, or as many as allowed. In a merged process the
// occurrences of a place follow each other by their depths.
template <net::Process P>
class Configurations {
 public:
  explicit Configurations(const P& process, std::size_t most = 100'000)
      : process_{process}, most_{most} {
    Run start{
        std::vector<bool>(process.events.size()), {}, std::vector<int>(process.places.size())};
    for (const auto& c : process.conditions) {
      if (c->is_initial()) enter(start, *c);
    }
    explore(start);
  }
  std::size_t count() const { return seen_.size(); }
  std::size_t dead_count() const { return dead_count_; }

 private:
  struct Run {
    std::vector<bool> fired;
    std::set<std::uint32_t> cut;
    std::vector<int> depth;  // by place: of its latest condition
  };

  static bool enter(Run& run, const typename P::Condition& condition) {
    run.cut.insert(condition.index);
    const int depth = ++run.depth[condition.place->index];
    if constexpr (P::is_merged) return depth == condition.occurrence_depth;
    return true;
  }

  void explore(const Run& run) {
    if (seen_.size() >= most_ || !seen_.insert(run.fired).second) return;
    Marking marking(process_.places.size());
    for (const std::uint32_t c : run.cut) marking[process_.conditions[c]->place->index] = true;
    dead_count_ += oracle::is_dead<typename P::NetType>(process_, marking) ? 1 : 0;
    for (const auto& event : process_.events) {
      const auto is_there = [&run](const auto* c) { return run.cut.contains(c->index); };
      if (event->is_cut_off() || !std::ranges::all_of(event->preset, is_there)) continue;
      Run next = run;
      next.fired[event->index] = true;
      for (const auto* c : event->preset) next.cut.erase(c->index);
      if (std::ranges::all_of(event->postset, [&](const auto* c) { return enter(next, *c); }))
        explore(next);
    }
  }

  const P& process_;
  const std::size_t most_;
  std::set<std::vector<bool>> seen_;
  std::size_t dead_count_ = 0;
};

// The ways to encode the question that ought to have the same answer.
template <net::Process P>
std::vector<support::Options> encodings() {
  std::vector<support::Options> result;
  for (const int method : {1, 2}) {
    for (const int variant : {0, 1}) {
      if (P::is_merged) {
        result.push_back({{"method", method},
                          {"incremental_acyclic_constraint", variant},
                          {"backward_conflict_constraints", method == 1 ? variant : 1 - variant}});
      } else {
        result.push_back({{"method", method}, {"restrict_branching", variant}});
      }
    }
  }
  result.push_back({{"method", 2}, {"solver", 0}});
  result.push_back({{"method", 1}, {"solver", 0}, {"restrict_branching", 1}});
  return result;
}

template <net::Process P>
void expect_right_answers(const P& process, const Truth& truth) {
  const bool has_deadlock = !truth.deadlocks.empty();
  for (support::Options options : encodings<P>()) {
    const Probe<P> one(process, support::default_params(options));
    EXPECT_EQ(!one.traces.empty(), has_deadlock) << "method " << options[0].second;
    for (const results::Trace& trace : one.traces) {
      EXPECT_TRUE(truth.deadlocks.contains(end_of(process, trace)));
    }
    options.emplace_back("min_cost", 1);
    const Probe<P> shortest(process, support::default_params(options));
    ASSERT_EQ(!shortest.traces.empty(), has_deadlock);
    if (has_deadlock) {
      EXPECT_EQ(shortest.traces[0].size(), truth.shortest);
    }
  }
}

template <net::Process P>
void expect_all_solutions(const P& process, const Truth& truth) {
  const std::size_t expected = Configurations<P>(process).dead_count();
  for (support::Options options : encodings<P>()) {
    options.emplace_back("all_solutions", -1);
    const Probe<P> all(process, support::default_params(options));
    EXPECT_EQ(all.traces.size(), expected);
    EXPECT_EQ(event_sets_of(all.traces).size(), expected) << "a solution is listed twice";
    EXPECT_EQ(ends_of(process, all.traces), truth.deadlocks);
    options.back().second = 2;
    const Probe<P> some(process, support::default_params(options));
    EXPECT_EQ(some.traces.size(), std::min<std::size_t>(2, expected));
  }
}

template <net::Process P>
void compare(const P& process, const Truth& truth) {
  expect_right_answers(process, truth);
  const auto lasting =
      std::ranges::count_if(process.events, [](const auto& event) { return !event->is_cut_off(); });
  constexpr std::size_t few = 500;
  if (lasting <= 16 || Configurations<P>(process, few).count() < few)
    expect_all_solutions(process, truth);
}

template <class N>
void compare_with_state_graph(const N& net, std::size_t& with_deadlock) {
  const auto graph = oracle::explore(net);
  ASSERT_EQ(graph.outcome, oracle::Exploration::complete);
  const Truth truth{graph.deadlocks(), graph.shortest_deadlock()};
  auto prefix = oracle::unfold(net);
  ASSERT_TRUE(prefix.has_value());
  with_deadlock += truth.deadlocks.empty() ? 0 : 1;
  compare(*prefix, truth);
  compare(net::merge(*prefix), truth);
  EXPECT_FALSE(base::run_failed());
}

template <class Make>
void compare_on_seeds(Make make) {
  testing::internal::CaptureStderr();  // warnings of prefixes without cut-offs
  std::size_t with_deadlock = 0;
  const std::uint64_t tried = support::for_each_seed(
      100, [&](std::uint64_t seed) { compare_with_state_graph(make(seed), with_deadlock); });
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("check failed"), std::string::npos);
  EXPECT_GT(with_deadlock, tried / 50);
  EXPECT_LT(with_deadlock, tried);
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

// Nets whose prefixes fold much: an event of the merged process stands for many. Four parts each,
// and either an end or none.
using Builder = oracle::NetBuilder<net::Net>;
std::string numbered(const char* name, int i) { return name + std::to_string(i); }

// Bit i is set when all lower ones are cleared.
net::Net counter(bool ends) {
  Builder b;
  for (int i = 0; i < (ends ? 4 : 5); ++i) {
    b.add_transition(numbered("carry", i));
    if (i < 4) {
      b.mark(numbered("zero", i));
      b.consume(numbered("zero", i)).produce(numbered("one", i));
    }
    for (int j = 0; j < i; ++j) b.consume(numbered("one", j)).produce(numbered("zero", j));
  }
  return b.finish();
}

// Choices in any order, each of them once or again and again.
net::Net choices_in_any_order(bool ends) {
  Builder b;
  b.mark("hub");
  for (int i = 0; i < 4; ++i) {
    b.mark(numbered("off", i));
    b.add_transition(numbered("switch_on", i)).consume("hub").consume(numbered("off", i));
    b.produce("hub").produce(numbered("on", i));
    if (ends) continue;
    b.add_transition(numbered("switch_off", i)).consume(numbered("on", i));
    b.produce(numbered("off", i));
  }
  return b.finish();
}

// A loop of choices that meet again; one that ends remembers them.
net::Net loop_of_choices(bool ends) {
  Builder b;
  b.mark("at0");
  for (int i = 0; i < 4; ++i) {
    b.mark(numbered("free", i));
    for (const char* branch : {"left", "right"}) {
      b.add_transition(numbered(branch, i)).consume(numbered("at", i));
      b.produce(numbered("at", (i + 1) % 4));
      if (ends) b.consume(numbered("free", i)).produce(numbered(branch, i) + "_taken");
    }
    if (!ends) b.consume(numbered("free", i)).produce(numbered("free", i));
  }
  return b.finish();
}

// So many rivals that their constraints share what they have in common.
net::Net wide_choice() {
  Builder b;
  b.mark("choice");
  b.mark("other");
  for (int i = 0; i < 40; ++i) {
    b.mark(numbered("own", i));
    b.add_transition(numbered("choose", i)).consume("choice").consume(numbered("own", i));
    b.produce(numbered("chosen", i));
    if (i % 8 != 0) continue;
    b.add_transition(numbered("take", i)).consume("other").consume(numbered("chosen", i));
  }
  return b.finish();
}

TEST(DeadlockCheck, AgreesWithTheStateGraphWhereMuchIsMerged) {
  testing::internal::CaptureStderr();
  std::size_t with_deadlock = 0;
  for (const bool ends : {false, true}) {
    compare_with_state_graph(counter(ends), with_deadlock);
    compare_with_state_graph(choices_in_any_order(ends), with_deadlock);
    compare_with_state_graph(loop_of_choices(ends), with_deadlock);
  }
  compare_with_state_graph(wide_choice(), with_deadlock);
  EXPECT_EQ(with_deadlock, 4u);
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("check failed"), std::string::npos);
}

// Lists all configurations.
class Lister : public configuration::SearchEngine<net::NetMergedProcess> {
 public:
  Lister(const net::NetMergedProcess& process, const configuration::SearchOptions& options)
      : SearchEngine(process, options, {"some", "none"}) {
    run();
    for (const auto& solution : found().solutions) EXPECT_TRUE(validate(*solution));
  }
  std::size_t count() const { return found().solutions.size(); }

 protected:
  void encode(sat::ClauseGroup) override { instance().add_configuration(); }
};

// Among them are nets with sets of events that can fire, but not in the order of the depths.
TEST(DeadlockCheck, ConfigurationsOfAMergedProcessAreTheSetsThatFireInTheOrderOfTheDepths) {
  testing::internal::CaptureStderr();
  support::for_each_seed(30, [](std::uint64_t seed) {
    const auto merged = net::merge(*oracle::unfold(oracle::random_net(250 + seed)));
    constexpr std::size_t most = 400;
    const std::size_t expected = Configurations<net::NetMergedProcess>(merged, most).count();
    if (expected == most) return;
    for (const int in_steps : {0, 1}) {
      auto options = configuration::SearchOptions::of(support::default_params(
          {{"all_solutions", -1}, {"incremental_acyclic_constraint", in_steps}}));
      options.encoding = options.encoding.without_dummy_rules();
      EXPECT_EQ(Lister(merged, options).count(), expected);
    }
  });
  testing::internal::GetCapturedStderr();
}

TEST(DeadlockCheck, AgreesWithTheStateGraphOfRandomStgs) {
  compare_on_seeds([](std::uint64_t seed) {
    return oracle::random_stg(seed, {.dummies = seed % 3 == 0, .toggles = seed % 4 == 0});
  });
}

}  // namespace
}  // namespace vorel::reach
