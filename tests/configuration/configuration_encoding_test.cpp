#include "configuration/configuration_encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>

#include "configuration/decoding.h"
#include "configuration/implied_conflicts.h"
#include "configuration/validation.h"
#include "oracle/random.h"
#include "oracle/random_net.h"
#include "sat/enumeration.h"
#include "support/process_builder.h"

namespace vorel::configuration {
namespace {

using EventNumbers = std::set<std::uint32_t>;

// All sets of events that the clauses allow.
std::set<EventNumbers> models_of(
    const net::StgPrefix& process,
    const std::function<void(ConfigurationEncoding<net::StgPrefix>&)>& encode_more) {
  sat::CnfFormula formula({});
  ConfigurationVars<net::StgPrefix> vars(process, formula);
  ConfigurationEncoding<net::StgPrefix> encoding(vars);
  encoding.encode_causality();
  encoding.encode_conflicts();
  encode_more(encoding);
  sat::Lits lits;
  for (const auto& event : process.events) {
    if (!event->is_cut_off()) lits.push_back(vars.event_lit(*event));
  }
  std::set<EventNumbers> models;
  const auto record = [&](const sat::LiteralCube&) {
    EventNumbers numbers;
    for (const auto* event : decode_events(vars)) numbers.insert(event->index);
    EXPECT_TRUE(models.insert(numbers).second) << "a model is listed twice";
  };
  sat::enumerate(formula, lits, formula.group(0), record, 100'000);
  return models;
}

TEST(ConfigurationEncoding, ADummyIsFollowedByAnEventThatIsNoCutOff) {
  support::ProcessBuilder<net::StgPrefix> b;
  auto& p = b.condition("p");
  auto& q = b.condition("q");
  auto& r = b.condition("r");
  auto& s = b.condition("s");
  b.event("d.k", {&p}, {&q});
  b.event("a+", {&q}, {&b.condition("p")}, true);  // only a cut-off follows the first dummy
  b.event("d.l", {&r}, {&s});
  b.event("b+", {&s}, {&b.condition("t")});
  b.finish();
  const auto models =
      models_of(*b.process, [](auto& encoding) { encoding.encode_no_max_dummies(); });
  EXPECT_EQ(models, (std::set<EventNumbers>{{}, {2, 3}}));
}

// Initial conditions and events that consume some of them, each by the bits of a random number.
std::unique_ptr<net::NetPrefix> random_conflicts(oracle::Random& random) {
  support::ProcessBuilder<net::NetPrefix> b;
  for (int i = 0; i < 6; ++i) b.condition("p" + std::to_string(i));
  for (int i = 0; i < 8; ++i) {
    auto& event = b.event("t" + std::to_string(i), {}, {}, random.below(5) == 0);
    const std::uint64_t preset = 1 + random.below(63);
    for (const auto& condition : b.process->conditions) {
      if ((preset >> condition->index & 1u) != 0) net::add_link(*condition, event);
    }
  }
  b.finish();
  return std::move(b.process);
}

TEST(SkippableConditions, AreThoseWhoseConflictsAreAmongThoseOfAnother) {
  oracle::Random random(61);
  for (int round = 0; round < 300; ++round) {
    const auto prefix = random_conflicts(random);
    const auto consumers = [](const net::NetPrefix::Condition& condition) {
      EventNumbers numbers;
      for (const auto* event : condition.postset) {
        if (!event->is_cut_off()) numbers.insert(event->index);
      }
      return numbers;
    };
    const auto skip = skippable_conditions(*prefix);
    for (const auto& c : prefix->conditions) {
      const EventNumbers own = consumers(*c);
      const bool covered = std::ranges::any_of(prefix->conditions, [&](const auto& d) {
        const EventNumbers others = consumers(*d);
        return std::ranges::includes(others, own) && (others != own || d->index < c->index);
      });
      EXPECT_EQ(skip[*c], own.size() < 2 || covered) << "round " << round << ", c" << c->index;
    }
  }
}

TEST(Validation, NamesTheConditionAtWhichAReplayFails) {
  support::ProcessBuilder<net::NetPrefix> b;
  auto& p = b.condition("p");
  auto& q = b.condition("q");
  auto& first = b.event("t", {&p}, {&q});
  auto& second = b.event("u", {&q}, {&b.condition("r")});
  auto& rival = b.event("v", {&q}, {&b.condition("s")}, true);
  b.finish();
  using Sequence = std::vector<const net::NetPrefix::Event*>;
  struct Row {
    Sequence sequence;
    std::string message;
  };
  const Row table[] = {{{&first, &second}, ""},
                       {{&second, &first}, "\nError: the safe run check failed on c1\n"},
                       {{&first, &first}, "\nError: the safe run check failed on c0\n"},
                       {{&first, &second, &rival}, "\nError: the safe run check failed on c1\n"}};
  // A failed check raises the severity, which never falls again: each runs in a process of its own.
  const auto outcome = [](bool passes) { std::exit(passes ? 0 : 1); };
  for (const Row& row : table) {
    EXPECT_EXIT(outcome(check_safe_run<net::NetPrefix>(*b.process, row.sequence)),
                testing::ExitedWithCode(row.message.empty() ? 0 : 1), row.message);
  }
  EXPECT_EXIT(outcome(check_deadlock<net::NetPrefix>(*b.process, Sequence{&first, &second})),
              testing::ExitedWithCode(0), "");
  EXPECT_EXIT(outcome(check_deadlock<net::NetPrefix>(*b.process, Sequence{&first})),
              testing::ExitedWithCode(1), "\nError: deadlock check failed\n");
}

}  // namespace
}  // namespace vorel::configuration
