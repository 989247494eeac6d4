// The delay and the logic of a transformation, worked out event by event.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "oracle/history.h"
#include "oracle/random.h"
#include "oracle/random_stg.h"
#include "resolution/critical_path.h"
#include "resolution/logic_complexity.h"
#include "resolution/resolution_support.h"
#include "support/seeds.h"

namespace vorel::resolution {
namespace {

using net::SignalKind;
using net::StgPrefix;
using Event = StgPrefix::Event;
using Past = oracle::EventSet<net::Stg>;

struct PlainPrefix {
  explicit PlainPrefix(std::uint64_t seed)
      : prefix{oracle::unfold(oracle::random_stg(seed, {.dummies = seed % 2 == 0}), 200)} {}

  static Past past_of(const Event& event) {
    Past past = oracle::local_configuration<net::Stg>(event);
    past.erase(&event);
    return past;
  }
  static SignalKind kind_of(const Event& event) { return event.transition->signal->kind; }
  static std::uint32_t weight(const Event& event) {
    constexpr std::uint32_t by_kind[] = {3, 1, 1, 0};
    return by_kind[static_cast<std::size_t>(kind_of(event))];
  }
  static std::uint32_t depth(const Event& event) {
    std::uint32_t longest = 0;
    for (const Event* cause : past_of(event)) longest = std::max(longest, depth(*cause));
    return longest + weight(event);
  }
  // Some chain from the event to one of an input or output has no slack.
  static bool is_critical(const Event& event) {
    if (kind_of(event) == SignalKind::input || kind_of(event) == SignalKind::output) return true;
    return std::ranges::any_of(event.postset, [&](const auto* condition) {
      return std::ranges::any_of(condition->postset, [&](const Event* next) {
        return is_critical(*next) && depth(event) + weight(*next) == depth(*next);
      });
    });
  }

  std::set<std::uint32_t> triggers_of(std::uint32_t signal) const {
    std::set<std::uint32_t> triggers;
    for (const auto& event : prefix->events) {
      if (event->transition->signal->index != signal) continue;
      Past past = past_of(*event);
      std::erase_if(past, [](const Event* e) { return kind_of(*e) == SignalKind::dummy; });
      for (const Event* cause : past) {
        if (std::ranges::none_of(past,
                                 [&](const Event* e) { return past_of(*e).contains(cause); })) {
          triggers.insert(cause->transition->signal->index);
        }
      }
    }
    return triggers;
  }

  std::optional<StgPrefix> prefix;
};

TEST(CostNumbers, RandomPrefixesAgreeWithTheDefinitions) {
  int delaying = 0, harmless = 0;
  const auto [first, end] = support::seeds(60);
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    const PlainPrefix plain(seed);
    if (!plain.prefix || plain.prefix->events.size() > 40) continue;
    const StgPrefix& prefix = *plain.prefix;
    std::uint64_t sum = 0, powers = 0;
    for (std::uint32_t s = prefix.inputs_end; s < prefix.internals_end; ++s) {
      sum += plain.triggers_of(s).size();
      powers += std::uint64_t{1} << plain.triggers_of(s).size();
    }
    EXPECT_EQ(logic_complexity(prefix, false), sum);
    EXPECT_EQ(logic_complexity(prefix, true), powers);

    const CriticalPath path(prefix);
    oracle::Random random(seed);
    for (const auto& event : prefix.events) {
      EXPECT_EQ(path.depth(*event), PlainPrefix::depth(*event));
      EXPECT_EQ(path.is_critical(*event), PlainPrefix::is_critical(*event));
      std::vector<const Event*> causes;
      for (const Event* cause : PlainPrefix::past_of(*event)) {
        if (random.chance(30)) causes.push_back(cause);
      }
      const Event* const followers[] = {event.get()};
      const bool expected =
          PlainPrefix::is_critical(*event) && std::ranges::any_of(causes, [&](const Event* cause) {
            return path.depth(*cause) + 1 + path.weight(*event) > path.depth(*event);
          });
      EXPECT_EQ(
          path.is_delaying(causes, followers),
          expected || (1 + path.weight(*event) > path.depth(*event) && path.is_critical(*event)));
      ++(expected ? delaying : harmless);
    }
  }
  EXPECT_GT(delaying, 100);
  EXPECT_GT(harmless, 100);
}

TEST(CostNumbers, TooManyTriggersShiftThePowerOut) {
  EXPECT_EQ(logic_term(63, true), std::uint64_t{1} << 63);
  EXPECT_EQ(logic_term(64, true), 0u);
  EXPECT_EQ(logic_term(64, false), 64u);
}

}  // namespace
}  // namespace vorel::resolution
