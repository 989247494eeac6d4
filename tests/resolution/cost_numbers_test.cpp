// The delay and the logic of a transformation, worked out event by event.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "oracle/history.h"
#include "oracle/random.h"
#include "resolution/critical_path.h"
#include "resolution/logic_complexity.h"
#include "resolution/resolution_support.h"

namespace vorel::resolution {
namespace {

using net::SignalKind;
using net::StgPrefix;
using Event = StgPrefix::Event;
using Past = oracle::EventSet<net::Stg>;

Past past_of(const Event& event) {
  Past past = oracle::local_configuration<net::Stg>(event);
  past.erase(&event);
  return past;
}
SignalKind kind_of(const Event& event) { return event.transition->signal->kind; }
std::uint32_t weight(const Event& event) {
  constexpr std::uint32_t by_kind[] = {3, 1, 1, 0};
  return by_kind[static_cast<std::size_t>(kind_of(event))];
}
std::uint32_t depth(const Event& event) {
  std::uint32_t longest = 0;
  for (const Event* cause : past_of(event)) longest = std::max(longest, depth(*cause));
  return longest + weight(event);
}
// Some chain from the event to one of an input or output has no slack.
bool is_critical(const Event& event) {
  if (kind_of(event) == SignalKind::input || kind_of(event) == SignalKind::output) return true;
  return std::ranges::any_of(event.postset, [&](const auto* condition) {
    return std::ranges::any_of(condition->postset, [&](const Event* next) {
      return is_critical(*next) && depth(event) + weight(*next) == depth(*next);
    });
  });
}

std::size_t trigger_count(const StgPrefix& prefix, net::SignalId signal) {
  std::set<std::uint32_t> triggers;
  for (const auto& event : prefix.events) {
    if (base::id_of(*event->transition->signal) != signal) continue;
    Past past = past_of(*event);
    std::erase_if(past, [](const Event* e) { return kind_of(*e) == SignalKind::dummy; });
    for (const Event* cause : past) {
      const auto hides = [cause](const Event* e) { return past_of(*e).contains(cause); };
      if (std::ranges::none_of(past, hides)) triggers.insert(cause->transition->signal->index);
    }
  }
  return triggers.size();
}

TEST(CostNumbers, RandomPrefixesAgreeWithTheDefinitions) {
  int delaying = 0, harmless = 0;
  resolution_support::on_prefixes(40, [&](const StgPrefix& prefix, std::uint64_t seed) {
    if (prefix.events.size() > 30) return;
    std::uint64_t sum = 0, powers = 0;
    for (const net::SignalId signal : prefix.driven_signals()) {
      sum += trigger_count(prefix, signal);
      powers += std::uint64_t{1} << trigger_count(prefix, signal);
    }
    EXPECT_EQ(logic_complexity(prefix, false), sum);
    EXPECT_EQ(logic_complexity(prefix, true), powers);

    const CriticalPath path(prefix);
    oracle::Random random(seed);
    for (const auto& event : prefix.events) {
      EXPECT_EQ(path.depth(*event), depth(*event));
      EXPECT_EQ(path.is_critical(*event), is_critical(*event));
      std::vector<const Event*> causes;
      std::uint32_t latest = 0;
      for (const Event* cause : past_of(*event)) {
        if (!random.chance(30)) continue;
        causes.push_back(cause);
        latest = std::max(latest, depth(*cause));
      }
      const bool expected = is_critical(*event) && latest + 1 + weight(*event) > depth(*event);
      const Event* const followers[] = {event.get()};
      EXPECT_EQ(path.is_delaying(causes, followers), expected);
      ++(expected ? delaying : harmless);
    }
  });
  EXPECT_GT(delaying, 50);
  EXPECT_GT(harmless, 50);
}

TEST(CostNumbers, TooManyTriggersShiftThePowerOut) {
  EXPECT_EQ(logic_term(63, true), std::uint64_t{1} << 63);
  EXPECT_EQ(logic_term(64, true), 0u);
  EXPECT_EQ(logic_term(64, false), 64u);
}

}  // namespace
}  // namespace vorel::resolution
