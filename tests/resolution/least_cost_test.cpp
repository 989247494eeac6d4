// The first step of vorel -R -f costs as little as any set of edges that the states allow.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <set>

#include "configuration/final_state.h"
#include "configuration/search_options.h"
#include "conflicts/csc_check.h"
#include "formats/g_writer.h"
#include "formats/process_file.h"
#include "net/causality.h"
#include "net/clone_net.h"
#include "net/edit.h"
#include "oracle/book_insertion.h"
#include "resolution/core_computation.h"
#include "resolution/cost_formula.h"
#include "resolution/insertions.h"
#include "resolution/resolution_support.h"
#include "support/default_params.h"
#include "support/run_program.h"

namespace vorel::resolution {
namespace {

using conflicts::Core;
using Event = net::StgPrefix::Event;

constexpr std::size_t most_edges = 3;

// "8*1[csc] + 4*0[usc] + ...": the sum, and the numbers of edges.
struct ToldCost {
  std::uint64_t total = 0, edges = 0;

  static ToldCost of(const std::string& text) {
    ToldCost cost;
    const char* rest = text.c_str() + text.find("cost: ") + 6;
    for (int term = 0; term < 7; ++term, rest = std::strchr(rest, ']') + 1) {
      while (*rest == ' ' || *rest == '+') ++rest;
      unsigned long weight = 0, number = 0;
      EXPECT_EQ(std::sscanf(rest, "%lu*%lu[", &weight, &number), 2) << text;
      cost.total += std::uint64_t{weight} * number;
      if (term == 4 || term == 5) cost.edges += number;
    }
    return cost;
  }
};

// A prefix with a signal more, and the configurations of the old one in it.
class Edited {
 public:
  Edited(const net::StgPrefix& old, const SignalInsertion& edges,
         const std::vector<net::Sign>& signs)
      : prefix{net::clone_prefix(old)} {
    signal = &net::insert_signal(prefix, "x", net::SignalKind::internal, 0);
    for (std::size_t i = 0; i < edges.size(); ++i)
      net::insert_transition(prefix, edges[i], *signal, signs[i]);
    numbers_ = net::finish_edit(prefix);
  }

  // Where the new signal stands after a configuration of old events, before it moves on.
  struct Stand {
    bool value;
    std::set<std::uint32_t> enabled;  // its events, without dummies before them
  };
  Stand stand_after(const configuration::EventSet& set) const {
    std::vector<Event*> events;
    for (const auto id : set) events.push_back(&base::element(prefix.events, numbers_.events[id]));
    const std::vector<Event*> past = net::causal_past<net::Stg>(prefix, events);
    const configuration::FinalState<net::StgPrefix> state(
        structure_, configuration::event_set({past.begin(), past.end()}));
    Stand stand{state.code()[base::id_of(*signal)], {}};
    const auto is_marked = [&](const auto* condition) { return state.is_marked(*condition); };
    for (const auto& event : prefix.events)
      if (event->transition->signal == signal && std::ranges::all_of(event->preset, is_marked))
        stand.enabled.insert(event->index);
    return stand;
  }

  net::StgPrefix prefix;
  net::Signal* signal = nullptr;

 private:
  net::Renumbering numbers_;
  configuration::StateStructure<net::StgPrefix> structure_{prefix};
};

class Step {
 public:
  explicit Step(const std::string& file) : input_{formats::read_stg_prefix(file)} {
    net::finish_edit(prefix());
    EXPECT_TRUE(compute_cores(prefix(), options_, conflicts::Notes::left_out, cores_));
  }
  net::StgPrefix& prefix() { return std::get<net::StgPrefix>(*input_); }
  bool has_conflicts() const { return !cores_.empty(); }

  // Of the sets with few edges that resolve something and make no core a conflict for good.
  std::uint64_t least_cost() {
    const Candidates candidates(prefix(), insertions(prefix(), 0));
    const resolution_support::OldHazards old_hazards(prefix());
    SignalInsertion all;
    for (const CandidateId id : candidates.all()) all.push_back(candidates.insertion(id));
    find_irreducible(candidates);
    std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
    oracle::for_each_set(prefix(), all, most_edges, [&](std::span<const std::size_t> set) {
      SignalInsertion edges;
      Choice choice(candidates.size(), false);
      for (const std::size_t number : set) {
        edges.push_back(all[number]);
        choice[CandidateId{static_cast<std::uint32_t>(number)}] = true;
      }
      const oracle::BookStep step = oracle::insert_signal_by_the_book(prefix(), edges);
      const bool is_good = step.fault.empty() || old_hazards.explain(step.fault);
      if (is_good && step.has_one_code)
        least = std::min(least, cost_of(candidates, edges, step.signs, choice));
    });
    return least;
  }

 private:
  // The cores that no edge lies in an odd number of times.
  void find_irreducible(const Candidates& candidates) {
    const CoreEffects effects(candidates);
    for (const Core& core : cores_) irreducible_.push_back(effects.of(core).togglers.empty());
  }

  std::uint64_t cost_of(const Candidates& candidates, const SignalInsertion& edges,
                        const std::vector<net::Sign>& signs, const Choice& choice) {
    const Edited edited(prefix(), edges, signs);
    ResolutionCost cost(coefficients_, edges);
    evaluate_result(edited.prefix, *edited.signal, 0, cost);
    cost.delay = static_cast<std::uint64_t>(std::ranges::count_if(
        delaying_candidates(candidates), [&](CandidateId id) { return choice[id]; }));
    cost.csc_cores = cost.usc_cores = 0;
    bool resolves = false;
    const conflicts::CscCheck csc(prefix(), options_, conflicts::Notes::left_out);
    for (std::size_t i = 0; i < cores_.size(); ++i) {
      const auto one = edited.stand_after(cores_[i].first);
      const auto other = edited.stand_after(cores_[i].second);
      const bool is_broken = one.enabled != other.enabled;
      const bool is_csc = csc.is_conflict(cores_[i].first, cores_[i].second);
      if (irreducible_[i] && (is_csc || is_broken)) return unknown_cost;
      if (!is_broken && one.value != other.value) {
        resolves = true;
      } else {
        ++(is_csc || is_broken ? cost.csc_cores : cost.usc_cores);
      }
    }
    return resolves ? cost.total() : unknown_cost;
  }

  const base::Params params_ = support::default_params({{"solver", 1}});
  const configuration::SearchOptions options_ = configuration::SearchOptions::of(params_);
  const CostCoefficients coefficients_ = CostCoefficients::of(params_);
  std::unique_ptr<net::StgPrefixVariant> input_;
  std::vector<Core> cores_;
  std::vector<bool> irreducible_;  // by core
};

TEST(LeastCost, IsThatOfTheBestOfAllSets) {
  const auto [first, end] = support::seeds(12);
  unsigned compared = 0;
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const support::TemporaryFolder folder;
    const std::string g = folder.path("stg.g"), prefix = folder.path("stg.pnml");
    ASSERT_TRUE(formats::save_g(
        oracle::random_stg(seed,
                           {.dummies = seed % 3 == 1, .toggles = seed % 3 == 2, .max_states = 30}),
        g));
    ASSERT_LT(support::run_vorel_unfold({g, prefix}).exit_code, 2);
    Step step(prefix);
    if (!step.has_conflicts()) continue;
    // The coefficients by default, as Params has them.
    const auto run = support::run_vorel({"-R", "-f", "-ccsc=8", "-cusc=4", "-cdel=2", "-ctrig=1",
                                         "-cseq=4", "-cconc=4", "-clock=50", prefix},
                                        {.directory = folder.path()});
    const std::uint64_t least = step.least_cost();
    if (run.out.find("cost: ") == std::string::npos) {
      EXPECT_EQ(least, unknown_cost);
      continue;
    }
    const ToldCost told = ToldCost::of(run.out);
    EXPECT_LE(told.total, least);
    if (told.edges <= most_edges) {
      EXPECT_EQ(told.total, least);
    }
    ++compared;
  }
  EXPECT_GT(compared, 1u);
}

}  // namespace
}  // namespace vorel::resolution
