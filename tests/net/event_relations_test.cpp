#include "net/event_relations.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "oracle/history.h"
#include "oracle/random.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "support/seeds.h"

namespace vorel::net {
namespace {

using Event = StgPrefix::Event;
using Condition = StgPrefix::Condition;
using Events = oracle::EventSet<Stg>;

Events joined(Events a, const Events& b) {
  a.insert(b.begin(), b.end());
  return a;
}

EventRelation relation(const Event& chosen, const Event& other) {
  if (&chosen == &other) return EventRelation::same;
  const Events past = oracle::local_configuration<Stg>(chosen);
  const Events others = oracle::local_configuration<Stg>(other);
  if (past.contains(&other)) return EventRelation::cause;
  if (others.contains(&chosen)) return EventRelation::effect;
  return oracle::is_conflict_free<Stg>(joined(past, others)) ? EventRelation::concurrent
                                                             : EventRelation::conflict;
}

void expect_relations(const StgPrefix& prefix) {
  EventRelations relations(prefix);
  for (const auto& a : prefix.events) {
    relations.choose(*a);
    for (const auto& b : prefix.events) {
      ASSERT_EQ(relations.relation_of(*b), relation(*a, *b)) << a->index << " " << b->index;
    }
  }
  for (const auto& c : prefix.conditions) {
    relations.choose(*c);
    for (const auto& d : prefix.conditions) {
      if (c == d) continue;
      Condition* const pair[] = {c.get(), d.get()};
      ASSERT_EQ(relations.is_concurrent(*d), oracle::is_co_set<Stg>(pair))
          << c->index << " " << d->index;
    }
  }
}

void expect_co_sets(const StgPrefix& prefix, oracle::Random& random) {
  std::vector<const StgPlace*> places;
  for (const auto& place : prefix.places) places.push_back(place.get());
  random.shuffle(places);
  places.resize(std::min<std::size_t>(places.size(), random.between(1, 3)));
  std::vector<CoSet> expected = {{}};
  for (const StgPlace* place : places) {
    std::vector<CoSet> longer;
    for (const CoSet& set : expected) {
      for (const auto& condition : prefix.conditions) {
        const bool is_last = !condition->is_initial() && condition->pre_event->is_cut_off();
        if (condition->place != place || is_last) continue;
        CoSet with_it = set;
        with_it.push_back(condition.get());
        if (oracle::is_co_set<Stg>(with_it)) longer.push_back(with_it);
      }
    }
    expected = longer;
  }
  EXPECT_EQ(co_sets(prefix, places), expected);
}

TEST(EventRelations, AreThoseOfTheConfigurationsOfRandomPrefixes) {
  std::size_t compared = 0;
  const std::uint64_t tried = support::for_each_seed(60, [&](std::uint64_t seed) {
    const auto prefix = oracle::unfold(oracle::random_stg(seed, {.dummies = seed % 2 == 0}), 50);
    if (!prefix || prefix->events.empty()) return;
    ++compared;
    oracle::Random random(seed);
    expect_relations(*prefix);
    expect_co_sets(*prefix, random);
  });
  EXPECT_GT(compared, tried / 2);
}

}  // namespace
}  // namespace vorel::net
