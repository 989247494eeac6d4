#include "reach/reach_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "base/messages.h"
#include "configuration/dummy_cutoffs.h"
#include "net/merge.h"
#include "oracle/coding.h"
#include "oracle/random_net.h"
#include "oracle/random_property.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "support/default_params.h"
#include "support/seeds.h"

namespace vorel::reach {
namespace {

using Configuration = oracle::EventNumbers;
using oracle::PropertyState;
using oracle::StateKind;

enum class Search { one, shortest, all };

// Both solvers shall have the same answers.
base::Params params_for(Search search) {
  return support::default_params({{"method", 2},
                                  {"solver", search == Search::shortest ? 1 : 0},
                                  {"all_solutions", search == Search::all ? -1 : 0},
                                  {"min_cost", search == Search::shortest ? 1 : 0}});
}

template <net::Process P>
class Probe : public ReachCheck<P> {
 public:
  Probe(const P& process, const std::string& property, configuration::Enabledness enabledness,
        Search search)
      : ReachCheck<P>(process, configuration::SearchOptions::of(params_for(search)), property,
                      enabledness) {
    if (base::run_failed()) return;
    this->run();
    for (const auto& solution : this->found().solutions) {
      EXPECT_TRUE(this->validate(*solution));
      Configuration events;
      for (const results::TraceStep& step : solution->traces.at(0)) events.insert(step.event);
      EXPECT_EQ(events.size(), solution->traces[0].size());
      configurations.push_back(events);
    }
  }
  std::vector<Configuration> configurations;
};

// What became of the comparisons: a test that only sees one kind of answer shows little.
struct Tally {
  std::size_t properties = 0, reachable = 0, merged = 0;
  std::size_t unreliable = 0, hidden = 0;  // prefixes with dummy cut-offs, with hidden states
};

// One net, and its states by both explorations.
template <class N>
class Comparison {
 public:
  using P = net::PrefixOf<N>;

  Comparison(const N& net, configuration::Enabledness enabledness)
      : prefix_{oracle::unfold(net).value()},
        enabledness_{enabledness},
        kind_{enabledness == configuration::Enabledness::direct ? StateKind::all
                                                                : StateKind::no_dummies},
        model_{oracle::model_of(prefix_)},
        states_{oracle::states_of(net, kind_)},
        configurations_{oracle::configuration_states(prefix_, kind_, 600)} {}

  const P& prefix() const { return prefix_; }

  // Whether some state after a run without maximal dummies has no such configuration: an edge that
  // is a cut-off leads to where a dummy leads, too. Only the configurations count then.
  bool hides_states() const {
    const auto lists = [this](const PropertyState& state) {
      return std::ranges::any_of(*configurations_, [&](const auto& entry) {
        return entry.second.holds[oracle::place] == state.holds[oracle::place] &&
               entry.second.holds[oracle::signal] == state.holds[oracle::signal];
      });
    };
    return configurations_ && !std::ranges::all_of(states_, lists);
  }

  void run(std::uint64_t seed, Tally& tally) {
    const bool hides = hides_states();
    const bool tells_instances = configurations_.has_value() && seed % 2 == 0;
    const auto property = oracle::random_property(
        seed, model_,
        {.depth = 3 + static_cast<int>(seed / 2 % 4), .tells_instances = tells_instances});
    SCOPED_TRACE("property " + property.text);
    text_ = property.text;
    std::optional<std::uint32_t> least;
    const auto count = [&](const PropertyState& state) {
      if (property.holds(state)) least = std::min(least.value_or(~0u), state.distance);
    };
    if (tells_instances || hides) {
      for (const auto& [events, state] : *configurations_) count(state);
    } else {
      for (const PropertyState& state : states_) count(state);
    }
    ++tally.properties;
    tally.reachable += least ? 1 : 0;
    if constexpr (!N::has_signals) {
      if (!names_instances(property.text)) {
        ++tally.merged;
        expect_of_merged(least);
      }
    }
    const Probe<P> one(prefix_, text_, enabledness_, Search::one);
    ASSERT_FALSE(base::run_failed());
    EXPECT_EQ(!one.configurations.empty(), least.has_value());
    expect_to_hold(one.configurations, property.holds);
    const Probe<P> shortest(prefix_, text_, enabledness_, Search::shortest);
    expect_to_hold(shortest.configurations, property.holds);
    if (least && !shortest.configurations.empty()) {
      EXPECT_EQ(shortest.configurations[0].size(), *least);
    }
    if (configurations_) expect_all(property.holds);
  }

 private:
  using Holds = std::function<bool(const PropertyState&)>;

  // Whether a text has anything to do with conditions and events.
  static bool names_instances(const std::string& text) {
    const auto sources = {"C ", "E ", "C(", "E(", "CONDITIONS", "EVENTS", "CUTOFFS", "cond", "ev"};
    return std::ranges::any_of(
        sources, [&text](const char* source) { return text.find(source) != std::string::npos; });
  }

  // What names no instances has the same answers on the merged process.
  void expect_of_merged(std::optional<std::uint32_t> least) const {
    const auto merged = net::merge(prefix_);
    const Probe<net::MergedProcessOf<N>> one(merged, text_, enabledness_, Search::one);
    EXPECT_EQ(!one.configurations.empty(), least.has_value());
    const Probe<net::MergedProcessOf<N>> shortest(merged, text_, enabledness_, Search::shortest);
    ASSERT_EQ(!shortest.configurations.empty(), least.has_value());
    EXPECT_TRUE(!least || shortest.configurations[0].size() == *least);
  }

  void expect_to_hold(const std::vector<Configuration>& found, const Holds& holds) const {
    if (!configurations_) return;
    for (const Configuration& events : found) {
      const auto known = std::ranges::find(*configurations_, events,
                                           [](const auto& entry) { return entry.first; });
      ASSERT_NE(known, configurations_->end());
      EXPECT_TRUE(holds(known->second));
    }
  }

  void expect_all(const Holds& holds) const {
    std::set<Configuration> expected;
    for (const auto& [events, state] : *configurations_) {
      if (holds(state)) expected.insert(events);
    }
    const Probe<P> all(prefix_, text_, enabledness_, Search::all);
    EXPECT_EQ(std::set(all.configurations.begin(), all.configurations.end()), expected);
    EXPECT_EQ(all.configurations.size(), expected.size()) << "a solution is listed twice";
  }

  P prefix_;
  configuration::Enabledness enabledness_;
  StateKind kind_;
  oracle::ProcessModel model_;
  std::string text_;  // of the property
  std::vector<PropertyState> states_;
  std::optional<std::vector<std::pair<Configuration, PropertyState>>> configurations_;
};

template <class Make>
Tally compare_on_seeds(Make make, configuration::Enabledness enabledness) {
  testing::internal::CaptureStderr();  // prefixes without cut-offs are warned of
  testing::internal::CaptureStdout();  // trivial cases are told
  Tally tally;
  support::for_each_seed(40, [&](std::uint64_t seed) {
    Comparison comparison(make(seed), enabledness);
    if constexpr (std::is_same_v<decltype(make(seed)), net::Stg>) {
      if (enabledness == configuration::Enabledness::via_dummies &&
          configuration::has_dummy_cutoffs(comparison.prefix())) {
        ++tally.unreliable;
        return;
      }
      const bool hides = comparison.hides_states();
      tally.hidden += hides ? 1 : 0;
      if (hides && enabledness == configuration::Enabledness::via_dummies) {
        EXPECT_TRUE(configuration::has_edges_cut_at_dummies(comparison.prefix()));
      }
    }
    for (std::uint64_t i = 0; i < 6 && !testing::Test::HasFailure(); ++i) {
      comparison.run(seed * 6 + i, tally);
    }
  });
  const std::string out = testing::internal::GetCapturedStdout();
  const std::string messages = testing::internal::GetCapturedStderr();
  if (testing::Test::HasFailure()) std::cerr << out;
  EXPECT_EQ(messages.find("Error"), std::string::npos) << messages;
  EXPECT_GT(tally.reachable * 5, tally.properties);
  EXPECT_LT(tally.reachable * 5, tally.properties * 4);
  return tally;
}

net::Stg stg_for(std::uint64_t seed, bool dummies) {
  net::Stg stg = oracle::random_stg(
      seed,
      {.dummies = dummies, .toggles = seed % 4 == 0, .max_states = seed % 3 == 0 ? 300u : 40u});
  EXPECT_TRUE(oracle::assign_initial_values(stg));
  return stg;
}

TEST(ReachCheck, AgreesWithTheStateGraphOfRandomNets) {
  const Tally tally = compare_on_seeds(
      [](std::uint64_t seed) {
        return oracle::random_net(seed, {.max_states = seed % 3 == 0 ? 300u : 40u});
      },
      configuration::Enabledness::direct);
  EXPECT_GT(tally.merged * 10, tally.properties) << "too few were asked of merged processes";
}

// Behind a cut-off of a merged process what is enabled need not have an event: some of these nets
// would look stuck there.
TEST(ReachCheck, FindsMergedProcessesStuckExactlyWhereTheirNetsAre) {
  testing::internal::CaptureStderr();  // processes without cut-offs are warned of
  const auto [first, end] = support::seeds(100);
  std::vector<std::uint64_t> cases{479};  // one of those
  for (std::uint64_t seed = first; seed < end; ++seed) cases.push_back(seed);
  for (const std::uint64_t seed : cases) {
    const net::Net net = oracle::random_net(seed);
    const auto merged = net::merge(oracle::unfold(net).value());
    const Probe<net::NetMergedProcess> stuck(merged, "forall t in TRANSITIONS { ~@t }",
                                             configuration::Enabledness::direct, Search::one);
    EXPECT_EQ(!stuck.configurations.empty(), oracle::explore(net).has_deadlock()) << seed;
  }
  testing::internal::GetCapturedStderr();
}

// How many of something there are at a time: the largest number in any state can be had, one more
// cannot. Many of these exclude each other.
template <class N>
void compare_largest_counts(const N& net, configuration::Enabledness enabledness) {
  const auto prefix = oracle::unfold(net).value();
  const auto merged = net::merge(prefix);
  const StateKind kind =
      enabledness == configuration::Enabledness::direct ? StateKind::all : StateKind::no_dummies;
  const auto configurations = oracle::configuration_states(prefix, kind, 600);
  if (!configurations) return;
  if constexpr (N::has_signals) {
    if (kind != StateKind::all && configuration::has_dummy_cutoffs(prefix)) return;
  }
  const struct {
    const char* text;
    std::vector<bool> (*of)(const PropertyState&);
    bool tells_instances;
  } table[] = {
      {"t in TRANSITIONS {@t}", [](const auto& s) { return s.enabled[oracle::transition]; }, false},
      {"p in PLACES {$p}", [](const auto& s) { return s.holds[oracle::place]; }, false},
      {"c in CONDITIONS {$c}", [](const auto& s) { return s.holds[oracle::condition]; }, true},
      {"e in EVENTS {@e}", [](const auto& s) { return s.enabled[oracle::event]; }, true}};
  for (const auto& [text, of, tells_instances] : table) {
    std::ptrdiff_t largest = 0;
    for (const auto& [events, state] : *configurations)
      largest = std::max(largest, std::ranges::count(of(state), true));
    for (const std::ptrdiff_t count : {largest, largest + 1}) {
      const std::string property = "threshold[" + std::to_string(count) + "] " + text;
      const Probe<net::PrefixOf<N>> one(prefix, property, enabledness, Search::one);
      EXPECT_EQ(!one.configurations.empty(), count == largest) << property;
      if constexpr (!N::has_signals) {
        if (tells_instances) continue;
        const Probe<net::MergedProcessOf<N>> other(merged, property, enabledness, Search::one);
        EXPECT_EQ(!other.configurations.empty(), count == largest) << property;
      }
    }
  }
}

TEST(ReachCheck, CountsAsManyAtATimeAsThereAre) {
  testing::internal::CaptureStderr();  // prefixes without cut-offs are warned of
  testing::internal::CaptureStdout();  // trivial cases are told
  support::for_each_seed(200, [&](std::uint64_t seed) {
    compare_largest_counts(oracle::random_net(seed), configuration::Enabledness::direct);
    compare_largest_counts(stg_for(seed, true), configuration::Enabledness::direct);
    compare_largest_counts(stg_for(seed, true), configuration::Enabledness::via_dummies);
  });
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
}

TEST(ReachCheck, AgreesWithTheStateGraphOfRandomStgs) {
  compare_on_seeds([](std::uint64_t seed) { return stg_for(seed, seed % 2 == 0); },
                   configuration::Enabledness::direct);
}

TEST(ReachCheck, AgreesOnStgStatesWithoutDummies) {
  compare_on_seeds([](std::uint64_t seed) { return stg_for(seed, false); },
                   configuration::Enabledness::via_dummies);
}

TEST(ReachCheck, AgreesOnStgStatesThatDummiesLeadTo) {
  const Tally tally = compare_on_seeds([](std::uint64_t seed) { return stg_for(seed, true); },
                                       configuration::Enabledness::via_dummies);
  EXPECT_LT(tally.unreliable * 6, tally.properties);
  EXPECT_LT(tally.hidden * 30, tally.properties);
}

}  // namespace
}  // namespace vorel::reach
