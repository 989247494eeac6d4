// tests/conflicts/conflicts_support.h - a prefix with all that the oracle knows of its states.
#pragma once

#include <algorithm>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "configuration/dummy_cutoffs.h"
#include "configuration/event_set.h"
#include "configuration/search_options.h"
#include "net/initial_values.h"
#include "oracle/coding.h"
#include "oracle/configurations.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "support/default_params.h"
#include "support/seeds.h"

namespace vorel::conflicts_support {

// Ends the capture of the standard output, where failures of tests are told too.
inline void drop_output() {
  const std::string text = testing::internal::GetCapturedStdout();
  if (testing::Test::HasFailure()) std::cout << text;
}

struct Subject {
  net::StgPrefix prefix;
  oracle::StateGraph<net::Stg> graph;
  oracle::Values initial;
  std::vector<oracle::Configuration> configurations;
  // By state.
  std::vector<oracle::Values> codes;
  std::vector<oracle::SignalSet> excited;  // outputs and internal signals, through dummies
  bool conflict_free = true;

  // Nullopt when the prefix has too many configurations to try all pairs.
  static std::optional<Subject> make(const net::Stg& stg) {
    auto prefix = oracle::unfold(stg);
    if (!prefix) return std::nullopt;
    Subject subject;
    subject.prefix = std::move(*prefix);
    net::find_initial_values(subject.prefix);
    subject.graph = oracle::explore<net::Stg>(subject.prefix);
    subject.initial = *oracle::find_initial_values(subject.prefix, subject.graph);
    auto all = oracle::configurations(subject.prefix, subject.graph, 120);
    if (!all) return std::nullopt;
    subject.configurations = std::move(*all);
    for (std::uint32_t i = 0; i < subject.graph.states.size(); ++i) subject.look_at_state(i);
    for (const auto& condition : subject.prefix.conditions) {
      if (condition->postset.size() > 1) subject.conflict_free = false;
    }
    return subject;
  }

  void look_at_state(std::uint32_t state) {
    codes.push_back(oracle::code_of(graph.states[state], initial));
    excited.push_back(oracle::enabled_through_dummies(graph, state));
    std::erase_if(excited.back(), [this](std::uint32_t signal) {
      return signal < prefix.inputs_end || signal >= prefix.internals_end;
    });
  }

  bool is_usc_conflict(std::uint32_t a, std::uint32_t b) const {
    return codes[a] == codes[b] && graph.states[a].marking != graph.states[b].marking;
  }
  bool is_csc_conflict(std::uint32_t a, std::uint32_t b) const {
    return codes[a] == codes[b] && excited[a] != excited[b];
  }

  std::uint32_t state_after(const configuration::EventSet& set) const {
    std::vector<std::uint32_t> events;
    for (const configuration::StgEventId id : set) events.push_back(id.value);
    const auto found = std::ranges::find(configurations, events, &oracle::Configuration::events);
    EXPECT_NE(found, configurations.end()) << "no configuration";
    return found == configurations.end() ? 0 : found->state;
  }

  std::uint32_t signal_named(const std::string& name) const {
    for (const auto& signal : prefix.signals) {
      if (signal->name == name) return signal->index;
    }
    ADD_FAILURE() << "no signal '" << name << "'";
    return 0;
  }

  oracle::SignalSet csc_conflicts() const {
    return oracle::csc_conflict_signals(prefix, graph, initial);
  }

  // Without the signals that some dummy makes impossible for ever: whether such a state counts
  // depends on how it is reached.
  oracle::SignalSet csc_conflicts_that_no_dummy_decides() const {
    oracle::SignalSet signals = csc_conflicts();
    for (const std::uint32_t signal : oracle::signals_that_dummies_disable(graph)) {
      signals.erase(signal);
    }
    return signals;
  }
};

inline configuration::EventSet set_of(const oracle::Configuration& configuration) {
  configuration::EventSet set;
  for (const std::uint32_t event : configuration.events) set.push_back({event});
  return set;
}

// Calls check(subject, seed) for random STGs whose pairs of configurations can be tried, and
// returns for how many.
template <class Check>
std::size_t on_subjects(std::uint64_t usual_count, const oracle::RandomStgParams& params,
                        Check check) {
  testing::internal::CaptureStdout();  // notes on the optimised method
  std::size_t checked = 0;
  const std::uint64_t tried = support::for_each_seed(usual_count, [&](std::uint64_t seed) {
    const auto subject = Subject::make(oracle::random_stg(seed, params));
    if (!subject || configuration::has_dummy_cutoffs(subject->prefix)) return;
    check(*subject, seed);
    ++checked;
  });
  drop_output();
  EXPECT_GT(checked, tried / 4);
  EXPECT_FALSE(base::run_failed());
  return checked;
}

// Plain ones, some with edges without a sign, some with dummies: no configuration that counts ends
// in one of those.
constexpr oracle::RandomStgParams kinds_of_stgs[] = {{}, {.toggles = true}, {.dummies = true}};

// Calls run(with), where with(key, value) are options of one way to encode a question with one
// more, for each way that the prefix allows.
template <class Run>
void for_each_encoding(const Subject& subject, Run run) {
  std::vector<int> inclusions{-1, 0};
  if (subject.conflict_free) inclusions.push_back(1);
  for (const int method : {0, 1, 2}) {
    for (const int inclusion : inclusions) {
      SCOPED_TRACE("method " + std::to_string(method) + " inclusion " + std::to_string(inclusion));
      run([&](const char* key, int value) {
        auto options = configuration::SearchOptions::of(
            support::default_params({{"method", method},
                                     {"inclusion_constraints", inclusion},
                                     {key, value},
                                     {"solver", method == 2 ? 0 : 1}}));
        if (inclusion != 0 || subject.conflict_free) options.local_share = 1;  // small as it is
        return options;
      });
    }
  }
}

}  // namespace vorel::conflicts_support
