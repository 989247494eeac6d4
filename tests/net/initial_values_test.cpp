#include "net/initial_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "net/causality.h"
#include "net/edge_history.h"
#include "net/event_relations.h"
#include "oracle/random.h"
#include "support/process_builder.h"
#include "support/seeds.h"

namespace vorel::net {
namespace {

using Builder = support::ProcessBuilder<StgPrefix>;

// Independent chains of events, each named by its transition; "*" before a name joins the chains
// that came before it.
Builder chains(const std::vector<std::vector<std::string>>& rows) {
  Builder b;
  int place = 0;
  const auto condition = [&]() -> auto& { return b.condition("p" + std::to_string(place++)); };
  for (const auto& row : rows) {
    auto* here = &condition();
    for (const auto& name : row) {
      auto* next = &condition();
      b.event(name, {here}, {next});
      here = next;
    }
  }
  b.finish();
  return b;
}

// Adds an event that needs the last condition of each chain.
void join(Builder& b, const std::string& name) {
  std::vector<StgPrefix::Condition*> ends;
  for (const auto& c : b.process->conditions) {
    if (c->postset.empty()) ends.push_back(c.get());
  }
  auto& after = b.condition("after_" + name);
  auto& event = b.event(name, {}, {&after});
  for (auto* end : ends) add_link(*end, event);
  b.finish();
}

struct Outcome {
  bool consistent;
  std::string messages;
  std::map<std::string, int> values;
};

Outcome find_values(Builder& b) {
  testing::internal::CaptureStderr();
  Outcome outcome;
  outcome.consistent = find_initial_values(*b.process);
  outcome.messages = testing::internal::GetCapturedStderr();
  for (const auto& signal : b.process->signals) {
    outcome.values[signal->name] = signal->initial_value;
  }
  return outcome;
}

TEST(InitialValues, FollowFromTheSignsOfTheEvents) {
  Builder b = chains({{"a-", "b+", "a+/1", "b-/1"}, {"c~", "c+/1"}, {"d.k"}});
  const Outcome outcome = find_values(b);
  EXPECT_TRUE(outcome.consistent);
  EXPECT_EQ(outcome.messages, "");
  EXPECT_EQ(outcome.values, (std::map<std::string, int>{{"a", 1}, {"b", 0}, {"c", 1}, {"d.k", 2}}));
}

TEST(InitialValues, TogglesAndDeadSignalsAreTakenAsZeroWithAWarning) {
  Builder b = chains({{"a~", "b~", "a~/1", "b+/1"}});
  add_signal(*b.process, "z", SignalKind::input);
  sort_signals(*b.process);
  const Outcome outcome = find_values(b);
  EXPECT_TRUE(outcome.consistent);
  EXPECT_EQ(outcome.messages,
            "\nWarning: signal a is assigned initial value 0\n\nWarning: signal z is dead\n");
  EXPECT_EQ(outcome.values, (std::map<std::string, int>{{"a", 0}, {"b", 1}, {"z", 0}}));
}

TEST(InitialValues, DummiesLoseSignsAndValuesWithAWarning) {
  Builder b = chains({{"d.k+", "a+"}});
  for (const auto& signal : b.process->signals) signal->initial_value = signal->is_dummy() ? 1 : 0;
  const Outcome outcome = find_values(b);
  EXPECT_TRUE(outcome.consistent);
  EXPECT_EQ(outcome.messages,
            "\nWarning: dummy signal d.k has an initial value distinct from '?'\n"
            "\nWarning: dummy transition d.k+ cannot have sign\n");
  EXPECT_EQ(outcome.values, (std::map<std::string, int>{{"a", 0}, {"d.k", 2}}));
}

TEST(InitialValues, InconsistencyIsAnErrorWithATraceThatLeadsToIt) {
  struct Row {
    std::vector<std::vector<std::string>> chains;
    std::string joined_by;
    int given_value;
    std::string message;
  };
  const Row table[] = {
      {{{"b+", "a+", "a+/1"}}, "", unknown_value, "signal a; trace:\nb+, a+, a+/1"},
      {{{"a+", "b+", "a~", "a-/1"}}, "", unknown_value, "signal a; trace:\na+, b+, a~, a-/1"},
      {{{"b+", "a-"}}, "", 0, "signal a; trace:\nb+, a-"},
      // Concurrent edges of one signal, seen where their histories meet.
      {{{"a+"}, {"b+", "a+/1"}}, "c+", unknown_value, "signal a; trace:\nb+, a+/1, a+"},
      {{{"a+"}, {"a~"}}, "c+", unknown_value, "signal a; trace:\na~, a+"},
      {{{"a+", "a-"}, {"a+/1", "a-/1"}}, "c+", unknown_value, "signal a; trace:"},
      // Though concurrent toggles of another signal are met first.
      {{{"b~", "a+"}, {"b~/1", "a+/1"}}, "c+", unknown_value, "signal a; trace:"},
      // The same where nothing follows both.
      {{{"a+"}, {"b+", "a+/1"}}, "", unknown_value, "signal a; trace:\nb+, a+/1, a+"},
      {{{"a~"}, {"b~", "a~/1", "a+"}}, "", unknown_value, "signal a; trace:\na~, b~, a~/1, a+"},
      {{{"b+", "a+", "a-"}, {"b-/1"}}, "", unknown_value, "signal b; trace:"},
  };
  for (const Row& row : table) {
    Builder b = chains(row.chains);
    if (!row.joined_by.empty()) join(b, row.joined_by);
    for (const auto& signal : b.process->signals) {
      if (signal->name == "a") signal->initial_value = static_cast<std::uint8_t>(row.given_value);
    }
    const Outcome outcome = find_values(b);
    EXPECT_FALSE(outcome.consistent) << row.message;
    EXPECT_NE(outcome.messages.find("\nError: the STG is inconsistent, " + row.message),
              std::string::npos)
        << outcome.messages;
  }
}

// Random trees of choices, with some forks in them and events that join the branches; each edge has
// the sign that fits those before it.
class RandomBranches {
 public:
  explicit RandomBranches(std::uint64_t seed) : random_{seed} {}

  StgPrefix& run() {
    ends_.push_back(&condition());
    const bool is_large = random_.chance(20);
    const unsigned events = is_large ? random_.between(150, 300) : random_.between(5, 44);
    for (unsigned i = 0; i < events; ++i) add_event(i, random_.chance(is_large ? 1 : 10));
    return builder_.finish();
  }

 private:
  using Condition = StgPrefix::Condition;
  Condition& condition() { return builder_.condition("p" + std::to_string(ends_.size())); }

  void add_event(unsigned number, bool is_fork) {
    Condition* const first = ends_[random_.below(ends_.size())];
    std::vector<Condition*> preset{first};
    if (random_.chance(30)) {
      EventRelations relations(*builder_.process);
      relations.choose(*first);
      Condition* const second = ends_[random_.below(ends_.size())];
      if (second != first && relations.is_concurrent(*second)) preset.push_back(second);
    }
    auto& event = builder_.event(label(preset, number), {}, {});
    for (Condition* needed : preset) add_link(*needed, event);
    for (int i = 0; i < (is_fork ? 2 : 1); ++i) {
      ends_.push_back(&condition());
      add_link(event, *ends_.back());
    }
  }

  std::string label(const std::vector<Condition*>& preset, unsigned number) {
    const std::string signal(1, "abc"[random_.below(3)]);
    if (random_.chance(50)) return "d.k~/" + std::to_string(number);
    if (signal == "c" && random_.chance(70)) return "c~/" + std::to_string(number);
    std::vector<StgPrefix::Event*> producers;
    for (const Condition* c : preset) std::ranges::copy(c->producers(), back_inserter(producers));
    const auto past = causal_past(*builder_.process, producers);
    const auto edges = std::ranges::count_if(
        past, [&signal](const auto* event) { return event->transition->name.starts_with(signal); });
    return signal + (edges % 2 == 0 ? "+/" : "-/") + std::to_string(number);
  }

  oracle::Random random_;
  Builder builder_;
  std::vector<Condition*> ends_;
};

TEST(InitialValues, ConcurrentEdgesAreFoundWhereverTheyAre) {
  std::array<std::size_t, 2> count{};
  const std::uint64_t tried = support::for_each_seed(300, [&](std::uint64_t seed) {
    RandomBranches branches(seed);
    StgPrefix& prefix = branches.run();
    EventRelations relations(prefix);
    const auto is_beside_chosen = [&](const auto& chosen, const auto& other) {
      const auto is_signed = [](const auto& e) { return e->transition->sign != Sign::toggle; };
      return chosen->transition->signal == other->transition->signal &&
             (is_signed(chosen) || is_signed(other)) &&
             relations.relation_of(*other) == EventRelation::concurrent;
    };
    const bool has_any = std::ranges::any_of(prefix.events, [&](const auto& event) {
      if (event->transition->signal->is_dummy()) return false;
      relations.choose(*event);
      return std::ranges::any_of(prefix.events,
                                 [&](const auto& other) { return is_beside_chosen(event, other); });
    });
    testing::internal::CaptureStderr();
    const auto found = settle_initial_values(prefix);
    testing::internal::GetCapturedStderr();
    ASSERT_EQ(found.has_value(), has_any);
    ++count[has_any ? 1 : 0];
    if (!found) return;
    const auto* last = found->trace.back();
    EXPECT_EQ(found->signal, last->transition->signal);
    relations.choose(*last);
    EXPECT_TRUE(std::ranges::any_of(
        found->trace, [&](const auto* event) { return is_beside_chosen(last, event); }));
  });
  EXPECT_GT(std::ranges::min(count), tried / 6);
}

// The forked branch has the last edge, too.
TEST(InitialValues, ConcurrentEdgesAreFoundAmongManyBranches) {
  constexpr int none = 2000;
  for (const int forked : {3, 600, 1190, none}) {
    Builder b;
    auto& start = b.condition("start");
    StgPrefix::Condition *half = nullptr, *spare = nullptr;
    std::vector<StgPrefix::Condition*> ends;
    for (int i = 0; i < 1200; ++i) {
      const auto number = "/" + std::to_string(i);
      if (i % 600 == 0) {
        half = &b.condition("half" + number);
        b.event("d.h" + number, {&start}, {half});
      }
      ends.push_back(&b.condition("end" + number));
      auto& event = b.event("d.k" + number, {half}, {ends.back()});
      if (i == forked) add_link(event, *(spare = &b.condition("spare")));
    }
    if (spare != nullptr) ends.push_back(spare);
    for (std::size_t i = 0; i < ends.size(); ++i) b.event("a+/" + std::to_string(i), {ends[i]}, {});
    b.finish();
    EXPECT_EQ(find_values(b).consistent, forked == none);
  }
}

// Random causality and signals, without regard for signs: only the counting is judged.
TEST(EdgeHistory, CountsTheEdgesOfEachLocalConfiguration) {
  std::mt19937 random(1);
  for (int round = 0; round < 200; ++round) {
    Builder b;
    // Some rounds have more concurrent edges of a signal than are counted at a time.
    const bool is_large = round % 50 == 0;
    const auto signals = 1 + random() % (is_large ? 2 : 40);
    const auto events = is_large ? 2000 : 1 + random() % 60;
    std::vector<StgPrefix::Condition*> conditions;
    for (int i = 0; i < 4; ++i) conditions.push_back(&b.condition("p"));
    for (std::size_t i = 0; i < events; ++i) {
      auto& event = b.event("s" + std::to_string(random() % signals) + "~", {}, {});
      for (std::size_t k = 0; k <= random() % 3; ++k) {
        auto* condition = conditions[random() % conditions.size()];
        if (condition->postset.empty()) add_link(*condition, event);
      }
      for (std::size_t k = 0; k <= random() % 2; ++k) {
        conditions.push_back(&b.condition("p"));
        add_link(event, *conditions.back());
      }
    }
    b.finish();
    const auto order = topological_order(*b.process);
    const EdgeHistory history(*b.process, order);
    for (auto* event : order) {
      std::uint32_t expected = 0;
      for (const auto* past : causal_past(*b.process, std::array{event})) {
        expected += past != event && past->transition->signal == event->transition->signal;
      }
      EXPECT_EQ(history.edges_before(*event), expected) << "round " << round;
    }
  }
}

}  // namespace
}  // namespace vorel::net
