#include "net/event_relations.h"

#include <gtest/gtest.h>

#include "oracle/history.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "support/seeds.h"

namespace vorel::net {
namespace {

using Event = StgPrefix::Event;
using Condition = StgPrefix::Condition;
using Events = oracle::EventSet<Stg>;

EventRelation relation(const Event& chosen, const Event& other) {
  if (&chosen == &other) return EventRelation::same;
  const Events past = oracle::local_configuration<Stg>(chosen);
  const Events others = oracle::local_configuration<Stg>(other);
  if (past.contains(&other)) return EventRelation::cause;
  if (others.contains(&chosen)) return EventRelation::effect;
  Events both = past;
  both.insert(others.begin(), others.end());
  return oracle::is_conflict_free<Stg>(both) ? EventRelation::concurrent : EventRelation::conflict;
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

TEST(EventRelations, AreThoseOfTheConfigurationsOfRandomPrefixes) {
  std::size_t compared = 0;
  const std::uint64_t tried = support::for_each_seed(60, [&](std::uint64_t seed) {
    const auto prefix = oracle::unfold(oracle::random_stg(seed, {.dummies = seed % 2 == 0}), 50);
    if (!prefix || prefix->events.empty()) return;
    ++compared;
    expect_relations(*prefix);
  });
  EXPECT_GT(compared, tried / 2);
}

}  // namespace
}  // namespace vorel::net
