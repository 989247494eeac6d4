#include "net/insert_transition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <set>

#include "net/clone_net.h"
#include "net/edit.h"
#include "oracle/book_insertion.h"
#include "oracle/edit_rules.h"
#include "oracle/prefix_checks.h"
#include "oracle/random.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "support/seeds.h"

namespace vorel::net {
namespace {

using Event = StgPrefix::Event;
using Names = std::set<std::string>;

// A net by names.
struct NamedNet {
  explicit NamedNet(const Stg& stg) {
    for (const auto& place : stg.places) tokens[place->name] = place->initial_marking;
    for (const auto& transition : stg.transitions) {
      auto& [preset, postset] = arcs[transition->name];
      for (const auto* place : transition->preset) preset.insert(place->name);
      for (const auto* place : transition->postset) postset.insert(place->name);
    }
  }
  bool operator==(const NamedNet&) const = default;

  std::map<std::string, std::uint32_t> tokens;
  std::map<std::string, std::pair<Names, Names>> arcs;
};

std::vector<const StgPlace*> random_places(const base::PtrList<StgPlace>& list,
                                           oracle::Random& random) {
  std::vector<const StgPlace*> places;
  for (const StgPlace* place : list) {
    if (random.chance(60)) places.push_back(place);
  }
  if (places.empty() && !list.empty()) places.push_back(list.front());
  return places;
}

// With further sources and targets: few alternate with others, so look for them.
General with_more(const StgPrefix& prefix, const Concurrent& first, oracle::Random& random) {
  General insertion;
  for (const auto& transition : prefix.transitions) {
    const StgTransition* const t = transition.get();
    const bool is_starred = t == first.source ? first.marked : random.chance(50);
    if (t == first.target ||
        (t != first.source && random.chance(50) &&
         oracle::keeps_prefix_complete(prefix, Concurrent{first.source, first.marked, t}))) {
      insertion.targets.push_back(t);
    } else if (t == first.source ||
               (random.chance(50) &&
                oracle::keeps_prefix_complete(prefix, Concurrent{t, is_starred, first.target}))) {
      insertion.sources.push_back(t);
      insertion.starred.push_back(is_starred);
    }
  }
  return insertion;
}

Insertion random_insertion(const StgPrefix& prefix, oracle::Random& random) {
  const auto pick = [&] {
    return prefix.transitions[random.below(prefix.transitions.size())].get();
  };
  const StgTransition* const t = pick();
  const Concurrent both{t, random.chance(40), pick()};
  switch (random.below(4)) {
    case 0:
      return SeqBefore{t, random_places(t->preset, random)};
    case 1:
      return SeqAfter{t, random_places(t->postset, random)};
    case 2:
      if (t != both.target && oracle::keeps_prefix_complete(prefix, both))
        return with_more(prefix, both, random);
      return both;
    default:
      return both;
  }
}

bool is_possible(const StgPrefix& prefix, const Insertion& insertion) {
  if (const auto* after = std::get_if<SeqAfter>(&insertion)) {
    if (after->places.empty()) return false;
  }
  if (const auto* both = std::get_if<Concurrent>(&insertion)) {
    if (both->source == both->target) return false;
  }
  return oracle::keeps_prefix_complete(prefix, insertion);
}

using Kept = base::OwnedList<StgPrefix::Condition>;

// Takes the conditions after cut-offs out of the list.
Kept leave_out_last_conditions(StgPrefix& prefix) {
  const auto is_listed = [](const auto& condition) {
    return condition->is_initial() || !condition->pre_event->is_cut_off();
  };
  const auto last =
      std::stable_partition(prefix.conditions.begin(), prefix.conditions.end(), is_listed);
  Kept kept(std::make_move_iterator(last), std::make_move_iterator(prefix.conditions.end()));
  prefix.conditions.erase(last, prefix.conditions.end());
  base::renumber(prefix.conditions);
  for (const auto& condition : kept) condition->index = base::no_index;
  return kept;
}

// Against the causal order, and with a map that must lead back.
void shuffle_events(StgPrefix& prefix, oracle::Random& random) {
  random.shuffle(prefix.events);
  base::renumber(prefix.events);
  sort_links(prefix);
}

void finish_and_expect_map(StgPrefix& prefix) {
  std::vector<const Event*> events;
  for (const auto& event : prefix.events) events.push_back(event.get());
  const Renumbering numbers = finish_edit(prefix);
  for (std::uint32_t i = 0; i < events.size(); ++i) {
    EXPECT_EQ(&base::element(prefix.events, numbers.events.at(i)), events[i]);
    for (const auto* condition : events[i]->preset) {
      EXPECT_TRUE(condition->is_initial() || condition->pre_event->index < events[i]->index);
    }
  }
  EXPECT_EQ(std::ranges::count(numbers.conditions, base::Id<StgPrefix::Condition>{}),
            static_cast<std::ptrdiff_t>(numbers.conditions.size()) - std::ssize(prefix.conditions));
}

std::string fault_of(const StgPrefix& prefix) {
  if (std::string fault = oracle::branching_fault<Stg>(prefix); !fault.empty()) return fault;
  const auto graph = oracle::explore<Stg>(prefix, 5'000);
  if (graph.outcome == oracle::Exploration::unsafe) return "the net is not safe";
  if (graph.outcome == oracle::Exploration::too_large) return "";
  return oracle::completeness_fault(prefix, graph);
}

using Counts = std::array<int, std::variant_size_v<Insertion>>;  // by kind

void expect_alternation(const StgPrefix& prefix, const General& insertion,
                        const StgTransition& added) {
  for (std::size_t i = 0; i < insertion.sources.size(); ++i) {
    EXPECT_TRUE(oracle::keeps_prefix_complete(
        prefix, Concurrent{insertion.sources[i], insertion.starred[i], &added}));
  }
  for (const StgTransition* target : insertion.targets) {
    EXPECT_TRUE(oracle::keeps_prefix_complete(prefix, Concurrent{&added, false, target}));
  }
}

// Up to three insertions of a dummy, which no parity tells of, with one numbering or several.
void expect_good_edits(StgPrefix& prefix, oracle::Random& random, Counts& counts) {
  const Kept kept = random.chance(25) ? leave_out_last_conditions(prefix) : Kept{};
  shuffle_events(prefix, random);
  Signal& signal = insert_signal(prefix, "x", SignalKind::dummy, unknown_value);
  Stg book = clone_net<Stg>(prefix);
  Signal& drawn = *book.signals[signal.index];
  const std::uint32_t wanted = random.between(1, 3);
  std::uint32_t done = 0;
  for (int tries = 0; tries < 30 && done < wanted; ++tries) {
    const Insertion insertion = random_insertion(prefix, random);
    if (!is_possible(prefix, insertion)) continue;
    const std::string x = oracle::insert_by_the_book(book, insertion, drawn, Sign::toggle).name;
    const StgTransition& added = insert_transition(prefix, insertion, signal, Sign::toggle);
    EXPECT_EQ(added.name, x);
    if (const auto* general = std::get_if<General>(&insertion)) {
      expect_alternation(prefix, *general, added);
    }
    ++counts[insertion.index()];
    ++done;
    if (random.chance(50)) finish_and_expect_map(prefix);
  }
  finish_and_expect_map(prefix);
  EXPECT_TRUE(NamedNet(prefix) == NamedNet(book));
  EXPECT_EQ(fault_of(prefix), "");
}

TEST(InsertTransition, RandomInsertionsLeaveACompletePrefixOfTheNetThatIsMeant) {
  Counts counts{};
  const std::uint64_t tried = support::for_each_seed(150, [&](std::uint64_t seed) {
    auto prefix = oracle::unfold(oracle::random_stg(seed, {.dummies = seed % 2 == 0}), 150);
    if (!prefix) return;
    oracle::Random random(seed);
    expect_good_edits(*prefix, random, counts);
  });
  for (const int count : counts) EXPECT_GT(count, static_cast<int>(tried) / 8);
}

}  // namespace
}  // namespace vorel::net
