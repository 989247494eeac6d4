#include "resolution/transition_locks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/run_state.h"
#include "net/clone_net.h"
#include "net/edit.h"
#include "oracle/history.h"
#include "oracle/prefix_checks.h"
#include "oracle/random.h"
#include "resolution/resolution_support.h"
#include "support/caught_messages.h"

namespace vorel::resolution {
namespace {

using net::StgPrefix;
using net::StgTransition;
using Event = StgPrefix::Event;
using Past = oracle::EventSet<net::Stg>;
using resolution_support::unfold_example;
using Locks = std::vector<std::vector<bool>>;

int count(const Past& past, std::uint32_t transition) {
  return static_cast<int>(std::ranges::count_if(
      past, [transition](const Event* e) { return e->transition->index == transition; }));
}

// The rules by which pairs are crossed out, one event after the other.
Locks plain_locks(const StgPrefix& prefix) {
  const std::size_t size = prefix.transitions.size();
  Locks locks(size, std::vector<bool>(size, true));
  std::vector<bool> is_dead(size, true);
  for (const auto& event : prefix.events) {
    const Past past = oracle::local_configuration<net::Stg>(*event);
    const std::uint32_t a = event->transition->index;
    is_dead[a] = false;
    for (std::uint32_t b = 0; b < size; ++b) {
      if (count(past, a) != count(past, b) + 1) locks[a][b] = false;
      if (count(past, b) != count(past, a)) locks[b][a] = false;
    }
    if (!event->is_cut_off()) continue;
    auto others = oracle::causes_of<net::Stg>({});
    for (const auto* other : event->cut_off.correspondents()) {
      others.merge(oracle::local_configuration<net::Stg>(*other));
    }
    for (std::uint32_t p = 0; p < size; ++p) {
      for (std::uint32_t q = 0; q < size; ++q) {
        if (count(past, p) - count(others, p) != count(past, q) - count(others, q)) {
          locks[p][q] = false;
        }
      }
    }
  }
  for (std::uint32_t p = 0; p < size; ++p) {
    for (std::uint32_t q = 0; q < size; ++q) {
      if (p == q || is_dead[p] || is_dead[q]) locks[p][q] = false;
    }
  }
  return locks;
}

// Whether one new transition can come before all of them and after (before, with a star) each
// source.
bool can_wait(const StgPrefix& prefix, const Locks& locks, const net::General& insertion,
              const std::vector<const StgTransition*>& targets) {
  return std::ranges::all_of(targets, [&](const StgTransition* target) {
    if (!prefix.driven_signals().contains(base::id_of(*target->signal))) return false;
    for (std::size_t i = 0; i < insertion.sources.size(); ++i) {
      const std::uint32_t source = insertion.sources[i]->index;
      const bool follows =
          insertion.starred[i] ? locks[target->index][source] : locks[source][target->index];
      if (!follows) return false;
    }
    return std::ranges::none_of(
        targets, [&](const auto* other) { return locks[target->index][other->index]; });
  });
}

void expect_good_edit(const StgPrefix& prefix, const net::General& insertion) {
  StgPrefix edited = net::clone_prefix(prefix);
  net::Signal& signal = net::insert_signal(edited, "x", net::SignalKind::dummy, net::unknown_value);
  net::insert_transition(edited, insertion, signal, net::Sign::toggle);
  net::finish_edit(edited);
  EXPECT_EQ(oracle::branching_fault<net::Stg>(edited), "");
  EXPECT_EQ(oracle::completeness_fault(edited, oracle::explore<net::Stg>(edited, 5'000)), "");
}

std::size_t expect_destinations(std::uint64_t seed, const StgPrefix& prefix,
                                const TransitionRelation& relation, const Locks& locks) {
  oracle::Random random(seed);
  std::size_t found = 0;
  for (int tries = 0; tries < 10; ++tries) {
    std::vector<const StgTransition*> sources;
    for (const auto& t : prefix.transitions) {
      if (sources.size() < 3 && random.chance(15)) sources.push_back(t.get());
    }
    if (sources.empty()) continue;
    for (const net::Insertion& insertion : max_destination_cliques(sources, relation)) {
      SCOPED_TRACE(to_text(insertion));
      const auto& general = std::get<net::General>(insertion);
      EXPECT_EQ(general.sources, sources);
      EXPECT_TRUE(can_wait(prefix, locks, general, general.targets));
      for (const auto& t : prefix.transitions) {
        std::vector<const StgTransition*> more = general.targets;
        if (std::ranges::count(more, t.get()) != 0) continue;
        more.push_back(t.get());
        EXPECT_FALSE(can_wait(prefix, locks, general, more)) << t->name << " can wait, too";
      }
      expect_good_edit(prefix, general);
      ++found;
    }
  }
  return found;
}

TEST(TransitionLocks, RandomPrefixesAgreeWithTheRules) {
  std::size_t locked = 0, found = 0;
  resolution_support::on_prefixes(60, [&](const StgPrefix& prefix, std::uint64_t seed) {
    const TransitionRelation relation = transition_lock_relation(prefix);
    const auto expected = plain_locks(prefix);
    for (std::uint32_t a = 0; a < relation.size(); ++a) {
      EXPECT_EQ(relation[a].item, prefix.transitions[a].get());
      for (std::uint32_t b = 0; b < relation.size(); ++b) {
        EXPECT_EQ(has_edge(relation, a, b), expected[a][b]);
        EXPECT_EQ(std::ranges::binary_search(relation[b].pre, a), expected[a][b]);
        locked += expected[a][b] ? 1 : 0;
      }
    }
    found += expect_destinations(seed, prefix, relation, expected);
  });
  EXPECT_GT(locked, 60u);
  EXPECT_GT(found, 20u);
}

TEST(TransitionLocks, WhatCanWaitForAForkIsToldWithItsRelations) {
  const StgPrefix prefix = unfold_example("dummy_fork");
  const StgTransition& fork = resolution_support::transition_of(prefix, "fork");
  const StgTransition& last = resolution_support::transition_of(prefix, "done-");
  const TransitionRelation relation = transition_lock_relation(prefix);
  const support::CaughtMessages caught;
  base::run_state().verbosity = 5;
  std::string texts;
  for (const auto& sources : {std::vector{&fork}, std::vector{&fork, &last}}) {
    for (const auto& insertion : max_destination_cliques(sources, relation)) {
      texts += to_text(insertion) + " ";
    }
  }
  base::run_state().verbosity = 0;
  EXPECT_EQ(texts,
            "{fork}-$->{xa+,xb+} {fork}-$->{xa+,xb-} {fork}-$->{xa-,xb+} {fork}-$->{xa-,xb-} "
            "{fork,done-*}-$->{xa+,xb+} {fork,done-*}-$->{xa+,xb-} {fork,done-*}-$->{xa-,xb+} "
            "{fork,done-*}-$->{xa-,xb-} {fork,done-*}-$->{done+} ");
  EXPECT_NE(caught.text().find("\n6 cliques in the compatibility relation computed:"),
            std::string::npos);
}

TEST(TransitionLocks, NothingIsKnownWhereACorrespondentIsNot) {
  StgPrefix prefix = unfold_example("celement");
  const auto edges = [&prefix] {
    std::size_t sum = 0;
    for (const auto& vertex : transition_lock_relation(prefix)) sum += vertex.post.size();
    return sum;
  };
  EXPECT_GT(edges(), 0u);
  (*std::ranges::find_if(prefix.events, [](const auto& e) {
    return e->is_cut_off();
  }))->mark_cut_off();
  EXPECT_EQ(edges(), 0u);
}

}  // namespace
}  // namespace vorel::resolution
