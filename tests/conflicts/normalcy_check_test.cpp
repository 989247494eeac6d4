// -N against all pairs of configurations of random prefixes, and against the state graph.
#include "conflicts/normalcy_check.h"

#include <gtest/gtest.h>

#include <set>

#include "conflicts/conflicts_support.h"
#include "oracle/history.h"

namespace vorel::conflicts {
namespace {

using conflicts_support::for_each_encoding;
using conflicts_support::Subject;

class Probe : public NormalcyCheck {
 public:
  Probe(const net::StgPrefix& prefix, const configuration::SearchOptions& options)
      : NormalcyCheck(prefix, options) {
    run();
  }

  std::vector<const NormalcySolution*> results() const {
    std::vector<const NormalcySolution*> list;
    for (const auto& solution : found().solutions) {
      EXPECT_TRUE(validate(*solution));
      list.push_back(static_cast<const NormalcySolution*>(solution.get()));
    }
    return list;
  }
};

bool is_covered(const oracle::Values& small, const oracle::Values& large) {
  return std::ranges::equal(small, large, std::less_equal{});
}

class Comparison {
 public:
  explicit Comparison(const Subject& subject) : subject_{subject} {
    for (std::uint32_t z = subject.prefix.inputs_end; z < subject.prefix.internals_end; ++z) {
      const oracle::Normalcy normalcy = normalcy_of(z);
      if (!normalcy.p && !normalcy.n) violated_.insert(z);
    }
  }

  bool is_violated() const { return !violated_.empty(); }
  std::set<NormalcyViolation> kinds;  // that were reported

  void run() {
    for_each_encoding(subject_, [this](const auto& with) {
      check(Probe(subject_.prefix, with("min_cost", 0)));
      check_least(Probe(subject_.prefix, with("min_cost", 1)));
      check_all(Probe(subject_.prefix, with("all_solutions", -1)));
    });
  }

 private:
  bool next(std::uint32_t state, std::uint32_t z) const {
    return (subject_.codes[state][z] == 1) != subject_.excited[state].contains(z);
  }

  oracle::Normalcy normalcy_of(std::uint32_t z) const {
    oracle::Normalcy result;
    for (const auto& small : subject_.configurations) {
      for (const auto& large : subject_.configurations) {
        if (!is_covered(subject_.codes[small.state], subject_.codes[large.state])) continue;
        if (next(small.state, z) && !next(large.state, z)) result.p = false;
        if (!next(small.state, z) && next(large.state, z)) result.n = false;
      }
    }
    return result;
  }

  void check(const Probe& probe) {
    const auto results = probe.results();
    ASSERT_EQ(results.size(), is_violated() ? 1u : 0u);
    for (const auto* solution : results) check_solution(*solution);
  }

  void check_solution(const NormalcySolution& solution) {
    kinds.insert(solution.kind());
    const std::uint32_t z = subject_.signal_named(solution.signal());
    EXPECT_TRUE(violated_.contains(z));
    std::set<bool> same_sign;
    for (std::size_t i = 0; i < solution.triggers().size(); ++i) {
      if (!has_dummies()) check_evidence(z, solution.traces[i], solution.triggers()[i], same_sign);
    }
    if (has_dummies()) return;
    const bool by_triggers = solution.kind() == NormalcyViolation::mixed_triggers ||
                             solution.kind() == NormalcyViolation::contradictory_hypotheses;
    EXPECT_EQ(same_sign.size(), by_triggers ? 2u : solution.triggers().size());
    if (solution.kind() != NormalcyViolation::other) return;
    EXPECT_EQ(same_sign.contains(true), solution.first_not_p);
  }

  bool has_dummies() const {
    return subject_.prefix.internals_end != subject_.prefix.signals.size();
  }

  // The next value of the signal changes with each trigger.
  void check_evidence(std::uint32_t z, const results::Trace& trace, const results::Trace& triggers,
                      std::set<bool>& same_sign) const {
    configuration::EventSet past =
        configuration::event_set(configuration::events_of<net::StgPrefix>(subject_.prefix, trace));
    past = configuration::set_difference(past, {{trace.back().event}});
    const std::uint32_t after = subject_.state_after(past);
    for (const results::TraceStep& trigger : triggers) {
      const std::uint32_t before =
          subject_.state_after(configuration::set_difference(past, {{trigger.event}}));
      EXPECT_NE(next(before, z), next(after, z));
      const std::uint32_t x = subject_.prefix.events[trigger.event]->transition->signal->index;
      same_sign.insert((subject_.codes[after][x] == 1) == next(after, z));
    }
  }

  void check_least(const Probe& probe) {
    check(probe);
    for (const auto* solution : probe.results()) {
      const std::size_t count = solution->traces.size();
      if (solution->triggers().size() == count) continue;
      const bool is_csc = solution->kind() == NormalcyViolation::csc_conflict;
      EXPECT_EQ(is_csc, least_pair(true) != SIZE_MAX);
      EXPECT_EQ(solution->traces[count - 2].size() + solution->traces[count - 1].size(),
                least_pair(is_csc));
    }
  }

  // The least total size of a pair with equal codes, or with any, that refutes a hypothesis.
  std::size_t least_pair(bool equal_codes) const {
    const configuration::StateStructure<net::StgPrefix> structure(subject_.prefix);
    NormalcyHypothesis hypothesis(structure);
    EXPECT_TRUE(hypothesis.make());
    std::size_t least = SIZE_MAX;
    for (const auto& small : subject_.configurations) {
      for (const auto& large : subject_.configurations) {
        const auto &code = subject_.codes[small.state], &large_code = subject_.codes[large.state];
        if (equal_codes ? code != large_code : !is_covered(code, large_code)) continue;
        for (std::uint32_t z = subject_.prefix.inputs_end; z < subject_.prefix.internals_end; ++z) {
          const bool falls = next(small.state, z) && !next(large.state, z);
          const bool rises = !next(small.state, z) && next(large.state, z);
          if (hypothesis.is_p({z}) ? falls : rises)
            least = std::min(least, small.events.size() + large.events.size());
        }
      }
    }
    return least;
  }

  void check_all(const Probe& probe) {
    const auto results = probe.results();
    EXPECT_EQ(results.empty(), !is_violated());
    std::set<std::uint32_t> signals;
    bool by_pairs = true;
    for (const auto* solution : results) {
      check_solution(*solution);
      signals.insert(subject_.signal_named(solution->signal()));
      by_pairs &= solution->triggers().size() < solution->traces.size();
    }
    if (by_pairs) {
      EXPECT_EQ(signals, violated_);
    }
  }

  const Subject& subject_;
  std::set<std::uint32_t> violated_;
};

// Some event of the signal must tell of its type: not so if all that the prefix has of the signal
// are alternatives of what is possible at the start.
bool has_evidence(const Subject& subject, std::uint32_t z) {
  const bool is_excited_initially = subject.excited[0].contains(z);
  return std::ranges::any_of(subject.prefix.events, [&](const auto& event) {
    if (event->transition->signal->index != z) return false;
    const auto past = oracle::local_configuration<net::Stg>(*event);
    return !is_excited_initially || std::ranges::any_of(past, [&](const auto* cause) {
      return cause != event.get() && cause->transition->signal->index == z;
    });
  });
}

TEST(NormalcyCheck, AgreesWithAllPairsOfConfigurations) {
  for (const auto& params : conflicts_support::kinds_of_stgs) {
    std::size_t compared = 0, violated = 0;
    std::set<NormalcyViolation> kinds;
    const auto compare = [&](const Subject& subject, std::uint64_t) {
      for (std::uint32_t z = subject.prefix.inputs_end; z < subject.prefix.internals_end; ++z)
        if (!has_evidence(subject, z)) return;
      Comparison comparison(subject);
      comparison.run();
      kinds.merge(comparison.kinds);
      ++compared;
      violated += comparison.is_violated() ? 1 : 0;
    };
    const std::size_t tried = conflicts_support::on_subjects(30, params, compare);
    EXPECT_GT(compared, tried / 4);
    EXPECT_GT(violated, compared / 10);
    EXPECT_LT(violated, compared);
    EXPECT_GE(kinds.size(), 3u);
  }
}

}  // namespace
}  // namespace vorel::conflicts
