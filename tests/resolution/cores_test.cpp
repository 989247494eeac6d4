// Cores from step to step, against all pairs of configurations of random prefixes.
#include <gtest/gtest.h>

#include <set>

#include "conflicts/conflicts_support.h"
#include "oracle/random.h"
#include "resolution/core_adjacency.h"
#include "resolution/core_computation.h"
#include "resolution/core_update.h"

namespace vorel::resolution {
namespace {

using configuration::EventSet;
using conflicts::Core;
using conflicts_support::set_of;
using conflicts_support::Subject;
using Sums = std::set<EventSet>;

bool is_usc_conflict(const Subject& s, const Core& core) {
  return s.is_usc_conflict(s.state_after(core.first), s.state_after(core.second));
}

bool is_csc_conflict(const Subject& s, const Core& core) {
  return s.is_csc_conflict(s.state_after(core.first), s.state_after(core.second));
}

Sums sums_of(const std::vector<Core>& cores) {
  Sums sums;
  for (const Core& core : cores) EXPECT_TRUE(sums.insert(core.sum).second) << "one core twice";
  return sums;
}

template <class Check>
void on_seeds(const oracle::RandomStgParams& params, Check check) {
  conflicts_support::on_subjects(40, params, [&](const Subject& subject, std::uint64_t seed) {
    oracle::Random random(seed);
    check(subject, random);
  });
}

struct UpdateOracle {
  const Subject& subject;
  net::SignalId newest;

  bool is_edge(configuration::StgEventId id) const {
    return base::id_of(*base::element(subject.prefix.events, id).transition->signal) == newest;
  }
  EventSet without_edges(EventSet set) const {
    std::erase_if(set, [this](auto id) { return is_edge(id); });
    return set;
  }
  // The smallest configuration that includes the set.
  EventSet completed(const EventSet& set) const {
    EventSet best;
    bool is_first = true;
    for (const auto& configuration : subject.configurations) {
      const EventSet events = set_of(configuration);
      if (!configuration::includes(events, set)) continue;
      if (is_first || events.size() < best.size()) best = events;
      is_first = false;
    }
    return best;
  }
  std::vector<EventSet> variants(const EventSet& set) const {
    std::vector<EventSet> result{set};
    const auto last = std::find_if(set.rbegin(), set.rend(), [&](auto id) { return is_edge(id); });
    EventSet largest;
    for (const auto& configuration : subject.configurations) {
      const EventSet events = set_of(configuration);
      const EventSet more = configuration::set_difference(events, set);
      if (configuration::includes(events, set) && more.size() == 1 && is_edge(more.front()))
        result.push_back(events);
      if (last == set.rend() || !configuration::includes(set, events)) continue;
      if (!std::ranges::binary_search(events, *last) && events.size() > largest.size())
        largest = events;
    }
    if (last != set.rend()) result.push_back(largest);
    return result;
  }
  Sums expected(const Core& core) const {
    const EventSet one = completed(core.first), other = completed(core.second);
    if (one != other && is_usc_conflict(subject, Core(one, other))) return {Core(one, other).sum};
    Sums sums;
    for (const EventSet& a : variants(one)) {
      for (const EventSet& b : variants(other)) {
        if (a != b && is_usc_conflict(subject, Core(a, b))) sums.insert(Core(a, b).sum);
      }
    }
    return sums;
  }
};

TEST(Cores, AreCarriedOverASignalByItsEdgesMoreOrLess) {
  std::size_t kept = 0, changed = 0, dropped = 0;
  on_seeds({}, [&](const Subject& subject, oracle::Random& random) {
    for (int i = 0; i < 25; ++i) {
      const UpdateOracle oracle{subject, {random.below(subject.prefix.internals_end)}};
      const auto pick = [&] {
        const std::uint32_t number = random.below(subject.configurations.size());
        return oracle.without_edges(set_of(subject.configurations[number]));
      };
      const Core core(pick(), pick());
      if (core.sum.empty()) continue;
      const std::vector<Core> cores{core};
      const Sums sums =
          sums_of(updated_cores(subject.prefix, cores, oracle.newest, [&](const Core& found) {
            return is_usc_conflict(subject, found);
          }));
      EXPECT_EQ(sums, oracle.expected(core));
      ++(sums.empty() ? dropped : sums.contains(core.sum) ? kept : changed);
    }
  });
  EXPECT_GT(kept, 0u);
  EXPECT_GT(changed, 0u);
  EXPECT_GT(dropped, 0u);
}

void check_computation(const Subject& subject, oracle::Random& random) {
  bool has_conflict = false;
  std::vector<Core> arbitrary;
  for (const auto& one : subject.configurations) {
    for (const auto& other : subject.configurations) {
      if (one.events == other.events) continue;
      const Core core(set_of(one), set_of(other));
      has_conflict |= is_csc_conflict(subject, core);
      if (random.below(subject.configurations.size()) == 0) arbitrary.push_back(core);
    }
  }
  const auto compute = [&](std::vector<Core> cores) {
    EXPECT_TRUE(compute_cores(subject.prefix,
                              configuration::SearchOptions::of(support::default_params(
                                  {{"solver", random.below(2) == 0 ? 0 : 1}})),
                              conflicts::Notes::left_out, cores));
    return cores;
  };
  const auto is_csc = [&](const Core& core) { return is_csc_conflict(subject, core); };
  const std::vector<Core> cores = compute({});
  EXPECT_EQ(cores.empty(), !has_conflict);
  EXPECT_EQ(std::ranges::any_of(cores, is_csc), has_conflict);
  for (const Core& core : cores) EXPECT_TRUE(is_usc_conflict(subject, core));

  const Sums again = sums_of(compute(cores));  // those that are known come back
  for (const Core& core : cores) EXPECT_TRUE(again.contains(core.sum));

  const std::vector<Core> mixed = compute(arbitrary);  // only conflicts come back
  EXPECT_EQ(mixed.empty(), !has_conflict);
  const Sums sums = sums_of(mixed);
  for (const Core& core : arbitrary) {
    if (!has_conflict || !is_usc_conflict(subject, core)) continue;
    EXPECT_TRUE(sums.contains(core.sum));
  }
  for (const Core& core : mixed) EXPECT_TRUE(is_usc_conflict(subject, core));
}

TEST(Cores, AreThereAsLongAsTheCodingIsNotCompleteAndAreConflicts) {
  for (const bool dummies : {false, true}) on_seeds({.dummies = dummies}, check_computation);
}

bool are_disjoint(const EventSet& a, const EventSet& b) {
  return configuration::set_difference(a, b) == a;
}

bool has_arc(const Subject& subject, const Core& a, const Core& b) {
  if (!configuration::includes(b.second, b.first)) return false;
  if (!are_disjoint(b.sum, a.first) || !are_disjoint(b.sum, a.second)) return false;
  if (are_disjoint(a.sum, b.second)) return false;
  return std::ranges::any_of(subject.configurations, [&](const auto& reached) {
    const EventSet events = set_of(reached);
    const auto fits = [&](const EventSet& start, const EventSet& rest) {
      if (events != configuration::set_union(start, b.sum)) return false;
      const Core pair(events, rest);
      return is_usc_conflict(subject, pair) && !is_csc_conflict(subject, pair);
    };
    return fits(a.first, a.second) || fits(a.second, a.first);
  });
}

TEST(Cores, HaveArcsToThoseThatCanFollowThem) {
  std::size_t found = 0;
  on_seeds({}, [&](const Subject& subject, oracle::Random& random) {
    std::vector<Core> cores;
    for (const auto& one : subject.configurations) {
      for (const auto& other : subject.configurations) {
        if (one.events == other.events) break;
        Core core(set_of(one), set_of(other));
        if (is_usc_conflict(subject, core)) cores.push_back(std::move(core));
      }
    }
    random.shuffle(cores);
    if (cores.size() > 25) cores.erase(cores.begin() + 25, cores.end());
    std::vector<UscArc> expected;
    for (std::uint32_t a = 0; a < cores.size(); ++a) {
      for (std::uint32_t b = 0; b < cores.size(); ++b) {
        if (a != b && has_arc(subject, cores[a], cores[b])) expected.push_back({a, b});
      }
    }
    EXPECT_EQ(
        usc_arcs(
            subject.prefix, cores, [&](const Core& core) { return is_usc_conflict(subject, core); },
            [&](const Core& core) { return is_csc_conflict(subject, core); }),
        expected);
    found += expected.size();
  });
  EXPECT_GT(found, 0u);
}

}  // namespace
}  // namespace vorel::resolution
