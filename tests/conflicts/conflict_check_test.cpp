// -C and -U against all pairs of configurations of random prefixes, and against the state graph.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "base/messages.h"
#include "base/run_state.h"
#include "conflicts/conflict_solution.h"
#include "conflicts/conflicts_support.h"
#include "conflicts/csc_check.h"
#include "conflicts/usc_check.h"
#include "oracle/parse_g.h"
#include "support/caught_messages.h"

namespace vorel::conflicts {
namespace {

using conflicts_support::drop_output;
using conflicts_support::for_each_encoding;
using conflicts_support::set_of;
using conflicts_support::Subject;

struct Found {
  configuration::EventSet first, second;
  std::string signal;
};

template <class Check>
class Probe : public Check {
 public:
  Probe(const net::StgPrefix& prefix, const configuration::SearchOptions& options)
      : Check(prefix, options) {
    this->run();
    for (const auto& solution : this->found().solutions) {
      EXPECT_TRUE(this->validate(*solution));
      const auto& pair = static_cast<const ConflictSolution&>(*solution);
      const auto events = [&](int i) {
        return configuration::event_set(
            configuration::events_of<net::StgPrefix>(prefix, pair.traces.at(i)));
      };
      results.push_back({events(0), events(1), pair.signal()});
    }
  }
  std::vector<Found> results;
};

// What a mode calls a conflict, by the state graph.
struct CscTruth {
  static constexpr bool names_signals = true;
  using Check = CscCheck;
  static constexpr auto is_conflict = &Subject::is_csc_conflict;
};
struct UscTruth {
  static constexpr bool names_signals = false;
  using Check = UscCheck;
  static constexpr auto is_conflict = &Subject::is_usc_conflict;
};

configuration::EventSet visible(const Subject& subject, const configuration::EventSet& set) {
  configuration::EventSet result;
  for (const configuration::StgEventId id : set) {
    if (!base::element(subject.prefix.events, id).transition->signal->is_dummy())
      result.push_back(id);
  }
  return result;
}

template <class Truth>
class Comparison {
 public:
  explicit Comparison(const Subject& subject) : subject_{subject} {
    for (const auto& one : subject.configurations) {
      for (const auto& other : subject.configurations) {
        if (subject.codes[one.state] == subject.codes[other.state]) enter(one, other);
      }
    }
  }

  bool has_conflict() const { return !conflicts_.empty(); }

  void run() {
    for_each_encoding(subject_, [this](const auto& with) {
      check(Probe<typename Truth::Check>(subject_.prefix, with("min_cost", 0)), false);
      check(Probe<typename Truth::Check>(subject_.prefix, with("min_cost", 1)), true);
      check_all(Probe<typename Truth::Check>(subject_.prefix, with("all_solutions", -1)));
      const Probe<typename Truth::Check> some(subject_.prefix, with("all_solutions", 2));
      EXPECT_EQ(some.results.empty(), !has_conflict());
    });
  }

 private:
  void enter(const oracle::Configuration& one, const oracle::Configuration& other) {
    const configuration::EventSet sum =
        visible(subject_, configuration::symmetric_difference(set_of(one), set_of(other)));
    equal_codes_.insert(sum);
    if (!(subject_.*Truth::is_conflict)(one.state, other.state)) return;
    conflicts_.insert(sum);
    least_cost_ = std::min(least_cost_, one.events.size() + other.events.size());
  }

  void check(const Probe<typename Truth::Check>& probe, bool least) const {
    ASSERT_EQ(probe.results.size(), has_conflict() ? 1u : 0u);
    for (const Found& found : probe.results) {
      check_pair(found);
      if (!least) continue;
      EXPECT_EQ(found.first.size() + found.second.size(), least_cost_);
    }
  }

  void check_pair(const Found& found) const {
    const std::uint32_t one = subject_.state_after(found.first);
    const std::uint32_t other = subject_.state_after(found.second);
    EXPECT_TRUE((subject_.*Truth::is_conflict)(one, other));
    if constexpr (!Truth::names_signals) return;
    const std::uint32_t signal = subject_.signal_named(found.signal);
    EXPECT_NE(subject_.excited[one].contains(signal), subject_.excited[other].contains(signal));
  }

  void check_all(const Probe<typename Truth::Check>& probe) {
    const auto keep = [&](const Core& core) { return probe.is_conflict(core.first, core.second); };
    sums_.clear();
    for (const Found& found : probe.results) check_pair(found);
    std::set<configuration::EventSet> full;
    for (const Core& core : probe.seen_pairs()) {
      EXPECT_TRUE(full.insert(core.sum).second) << "two pairs with one core";
      sums_.insert(visible(subject_, core.sum));
      for (const Core& known : probe.seen_pairs()) {
        EXPECT_TRUE(is_composite_due_to(subject_.prefix, core, known, keep).empty());
      }
    }
    explained_.clear();
    for (const configuration::EventSet& sum : conflicts_) EXPECT_TRUE(is_explained(sum));
  }

  // A core that was found, or one next to a difference that is explained or makes no conflict.
  bool is_explained(const configuration::EventSet& sum) {
    if (sum.empty() || sums_.contains(sum)) return true;
    const auto [known, is_new] = explained_.emplace(sum, false);
    if (!is_new) return known->second;
    return known->second = std::ranges::any_of(sums_, [&](const configuration::EventSet& part) {
             if (!configuration::includes(sum, part)) return false;
             const configuration::EventSet rest = configuration::set_difference(sum, part);
             return equal_codes_.contains(rest) &&
                    (!conflicts_.contains(rest) || is_explained(rest));
           });
  }

  const Subject& subject_;
  std::set<configuration::EventSet> equal_codes_, conflicts_, sums_;
  std::map<configuration::EventSet, bool> explained_;
  std::size_t least_cost_ = SIZE_MAX;
};

struct Tally {
  std::size_t with_csc = 0, with_usc = 0;
};

void compare(const Subject& subject, Tally& tally) {
  Comparison<CscTruth> csc(subject);
  csc.run();
  Comparison<UscTruth> usc(subject);
  usc.run();
  // The state graph knows nothing of prefixes: what it says of all states.
  const auto signals = subject.csc_conflicts_that_no_dummy_decides();
  EXPECT_TRUE(signals.empty() || csc.has_conflict());
  EXPECT_TRUE(!csc.has_conflict() || !subject.csc_conflicts().empty());
  tally.with_csc += csc.has_conflict() ? 1 : 0;
  tally.with_usc += usc.has_conflict() ? 1 : 0;
}

TEST(ConflictCheck, AgreesWithAllPairsOfConfigurations) {
  for (const auto& params : conflicts_support::kinds_of_stgs) {
    Tally tally;
    const std::size_t compared = conflicts_support::on_subjects(
        30, params, [&](const Subject& subject, std::uint64_t) { compare(subject, tally); });
    EXPECT_GT(tally.with_csc, compared / 10);
    EXPECT_LT(tally.with_usc, compared);
  }
}

// So many rivals that they share what they have in common.
TEST(ConflictCheck, AgreesWithAllPairsOfConfigurationsOfAWideChoice) {
  std::string signals, arcs;
  for (int i = 0; i < 40; ++i) {
    const std::string z = "z" + std::to_string(i);
    signals += " " + z;
    arcs += "s " + z + "+\n" + z + "+ " + z + "-\n" + z + "- e\n";
  }
  const auto stg =
      oracle::parse_g(".outputs" + signals + "\n.graph\n" + arcs + ".marking { s }\n.end\n");
  testing::internal::CaptureStdout();
  Tally tally;
  compare(Subject::make(stg.value()).value(), tally);
  drop_output();
  EXPECT_EQ(tally.with_csc, 1u);
  EXPECT_FALSE(base::run_failed());
}

// Of a+ a- b+ b-: both handshakes are cores, and so is what they make together.
TEST(MinimalCores, TakeOutWhatTurnsOutToBeCompositeUnlessItIsSeeded) {
  const auto stg = oracle::parse_g(
      ".outputs a b\n.graph\np a+\na+ a-\na- b+\nb+ b-\nb- q\n.marking { p }\n.end\n");
  const auto prefix = oracle::unfold(stg.value()).value();
  const support::CaughtMessages out(std::cout), messages;
  base::run_state().verbosity = 6;
  const Core part({}, {{0}, {1}}), rest({{0}, {1}}, {{0}, {1}, {2}, {3}});
  const Core both({}, {{0}, {1}, {2}, {3}});
  const auto sums_with = [&](bool is_seeded) {
    MinimalCores cores(prefix, [](const Core&) { return true; });
    is_seeded ? static_cast<void>(cores.seed(both)) : static_cast<void>(cores.add(both));
    EXPECT_FALSE(cores.seed(both)) << "known";
    cores.add(part);
    std::set<configuration::EventSet> sums;
    for (const Core& core : cores.cores()) sums.insert(core.sum);
    return sums;
  };
  EXPECT_EQ(sums_with(false), (std::set{part.sum, rest.sum}));
  EXPECT_EQ(sums_with(true), (std::set{part.sum, both.sum}));
  base::run_state().verbosity = 0;
  EXPECT_EQ(out.text(), "");
  EXPECT_TRUE(messages.text().starts_with(
      "\nChecking if the core\n{}, {0, 1}\nis composite due to\n{}, {0, 1, 2, 3}"))
      << messages.text();
}

// What one check has found is not lost when the other starts from it.
TEST(ConflictCheck, GivesBackTheCoresThatItStartsFrom) {
  std::size_t compared = 0;
  const std::uint64_t tried = support::for_each_seed(60, [&](std::uint64_t seed) {
    const auto subject = Subject::make(oracle::random_stg(seed));
    if (!subject) return;
    const auto options =
        configuration::SearchOptions::of(support::default_params({{"all_solutions", -1}}));
    const support::CaughtMessages out(std::cout), messages;
    CscCheck csc(subject->prefix, options, Notes::left_out);
    csc.run();
    if (csc.seen_pairs().size() < 2) return;
    UscCheck usc(subject->prefix, options, Notes::left_out);
    for (const Core& core : csc.seen_pairs()) usc.seed(core);
    usc.run();
    const auto same = [](const Core& a, const Core& b) { return a.sum == b.sum; };
    EXPECT_TRUE(std::ranges::mismatch(csc.seen_pairs(), usc.seen_pairs(), same).in1 ==
                csc.seen_pairs().end());
    EXPECT_EQ(out.text() + messages.text(), "") << "notes are left out";
    ++compared;
  });
  EXPECT_GT(compared, tried / 12);
}

}  // namespace
}  // namespace vorel::conflicts
