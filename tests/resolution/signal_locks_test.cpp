#include "resolution/signal_locks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "base/run_state.h"
#include "oracle/history.h"
#include "oracle/net_builder.h"
#include "oracle/random.h"
#include "oracle/state_graph.h"
#include "resolution/resolution_support.h"
#include "support/caught_messages.h"

namespace vorel::resolution {
namespace {

using net::StgPrefix;
using resolution_support::unfold_example;
using Pairs = std::set<std::pair<std::string, std::string>>;
using Event = StgPrefix::Event;

Pairs pairs_of(const RelationGraph<net::Signal>& graph) {
  Pairs pairs;
  for (std::uint32_t a = 0; a < graph.size(); ++a) {
    EXPECT_TRUE(graph[a].pre.empty() && std::ranges::is_sorted(graph[a].post));
    for (const std::uint32_t b : graph[a].post) {
      EXPECT_TRUE(has_edge(graph, b, a));
      pairs.insert(std::minmax(graph[a].item->name, graph[b].item->name));
    }
  }
  return pairs;
}

// The definition, pair of events by pair of events.
class PlainLocks {
 public:
  explicit PlainLocks(const StgPrefix& prefix) : prefix_{prefix} {
    for (const auto& event : prefix.events) {
      pasts_.push_back(oracle::local_configuration<net::Stg>(*event));
    }
  }

  Pairs pairs() const {
    Pairs pairs;
    for (std::uint32_t a = 0; a < prefix_.internals_end; ++a) {
      for (std::uint32_t b = a + 1; b < prefix_.internals_end; ++b) {
        if (!holds(a, b) || !holds(b, a)) continue;
        pairs.insert(std::minmax(prefix_.signals[a]->name, prefix_.signals[b]->name));
      }
    }
    return pairs;
  }

 private:
  bool holds(std::uint32_t a, std::uint32_t b) const {
    std::set<int> differences;
    for (const auto& e : prefix_.events) {
      if (e->transition->signal->index != a) continue;
      int d = 0;
      for (const Event* cause : pasts_[e->index]) {
        d += cause->transition->signal->index == b ? 1 : 0;
        d -= cause->transition->signal->index == a ? 1 : 0;
      }
      differences.insert(d);
      if (d < -1 || d > 1) return false;
      for (const auto& f : prefix_.events) {
        if (f->transition->signal->index == b && are_concurrent(*e, *f)) return false;
      }
    }
    return differences.size() <= 1;
  }
  bool are_concurrent(const Event& e, const Event& f) const {
    auto both = pasts_[e.index];
    if (both.contains(&f) || pasts_[f.index].contains(&e)) return false;
    both.insert(pasts_[f.index].begin(), pasts_[f.index].end());
    return oracle::is_conflict_free<net::Stg>(both);
  }

  const StgPrefix& prefix_;
  std::vector<oracle::EventSet<net::Stg>> pasts_;  // by event
};

void expect_numbers(const StgPrefix& prefix, const RelationGraph<net::Signal>& graph) {
  LockNumbers expected;
  for (std::uint32_t a = 0; a < graph.size(); ++a) {
    std::uint64_t alone = 0;
    for (std::uint32_t b = 0; b < graph.size(); ++b) {
      const std::uint64_t b_counts = b < prefix.inputs_end ? 1 : 2;
      const std::uint64_t weight = (a < prefix.inputs_end ? 1 : 2) * b_counts;
      const bool is_locked = has_edge(graph, a, b);
      if (a < b) (is_locked ? expected.locked : expected.unlocked) += weight;
      if (a != b && !is_locked) alone += 2 * b_counts;
    }
    EXPECT_EQ(unlocked_weight(prefix, *prefix.signals[a]), alone);
  }
  const LockNumbers numbers = lock_numbers(prefix);
  EXPECT_EQ(numbers.locked, expected.locked);
  EXPECT_EQ(numbers.unlocked, expected.unlocked);
}

TEST(SignalLocks, RandomPrefixesAgreeWithTheDefinition) {
  std::size_t locked = 0, unlocked = 0;
  resolution_support::on_prefixes(100, [&](const StgPrefix& prefix, std::uint64_t) {
    const Pairs expected = PlainLocks(prefix).pairs();
    const auto graph = signal_lock_relation(prefix);
    EXPECT_EQ(pairs_of(graph), expected);
    expect_numbers(prefix, graph);
    locked += expected.size();
    unlocked += prefix.internals_end * (prefix.internals_end - 1) / 2 - expected.size();
  });
  EXPECT_GT(locked, 100u);
  EXPECT_GT(unlocked, 100u);
}

// The events of the prefix as the transitions of a net, with the new place: it runs as the prefix
// does after the reduction.
net::Stg occurrence_net(const StgPrefix& prefix, const Reduction& reduction) {
  oracle::NetBuilder<net::Stg> book;
  std::vector<net::Signal*> signals;
  for (const auto& signal : prefix.signals) {
    signals.push_back(&book.add_signal(signal->name, signal->kind));
  }
  const auto name = [](const auto& node) { return "n" + std::to_string(node.index); };
  for (const auto& condition : prefix.conditions) {
    if (condition->is_initial()) book.mark(name(*condition));
  }
  if (reduction.marked) book.mark("token");
  for (const auto& event : prefix.events) {
    const auto* transition = event->transition;
    book.add_transition("e" + std::to_string(event->index));
    book.label(*signals[transition->signal->index], transition->sign);
    for (const auto* condition : event->preset) book.consume(name(*condition));
    for (const auto* condition : event->postset) book.produce(name(*condition));
    if (std::ranges::count(reduction.sources, transition) != 0) book.produce("token");
    if (transition == reduction.target) book.consume("token");
  }
  return book.finish();
}

Reduction random_reduction(const StgPrefix& prefix, oracle::Random& random) {
  Reduction reduction;
  reduction.target = prefix.transitions[random.below(prefix.transitions.size())].get();
  reduction.marked = random.chance(40);
  const auto& example = prefix.transitions[random.below(prefix.transitions.size())];
  for (const auto& transition : prefix.transitions) {
    const bool is_alike =
        transition->signal == example->signal && transition->sign == example->sign;
    if (transition.get() != reduction.target && random.chance(is_alike ? 90 : 5)) {
      reduction.sources.push_back(transition.get());
    }
  }
  return reduction;
}

TEST(SignalLocks, AfterAReductionAreThoseOfAllThatThePrefixCanStillDo) {
  std::size_t checked = 0, changed = 0, with_choice = 0;
  resolution_support::on_prefixes(40, [&](const StgPrefix& prefix, std::uint64_t seed) {
    if (prefix.events.size() > 60) return;
    const Pairs before = PlainLocks(prefix).pairs();
    oracle::Random random(seed);
    for (int i = 0; i < 40; ++i) {
      const Reduction reduction = random_reduction(prefix, random);
      if (reduction.sources.empty()) continue;
      SCOPED_TRACE(to_text(reduction));
      const net::Stg net = occurrence_net(prefix, reduction);
      if (oracle::explore(net, 5'000).outcome != oracle::Exploration::complete) continue;
      const auto after = oracle::unfold(net, 500);
      if (!after) continue;
      const auto locks = pairs_of(signal_lock_relation(prefix, &reduction));
      const Pairs expected = PlainLocks(*after).pairs();
      EXPECT_EQ(locks, expected);
      ++checked;
      changed += expected != before ? 1 : 0;
      with_choice += after->events.size() > prefix.events.size() ? 1 : 0;
    }
  });
  EXPECT_GT(checked, 40u);
  EXPECT_GT(changed, 10u);
  EXPECT_GT(with_choice, 4u);
}

// p+ q+ p- q- p+ ..., 700 of each; the last p does not wait for the last q, or does.
StgPrefix long_alternation(bool is_whole) {
  support::ProcessBuilder<StgPrefix> book;
  auto* token = &book.condition("s");
  auto* last_of_p = token;
  for (int i = 0; i < 1400; ++i) {
    const bool is_p = i % 2 == 0, is_last_p = i == 1398;
    auto& next = book.condition("s" + std::to_string(i));
    auto& beside = book.condition("r" + std::to_string(i));
    const std::string name = (is_p ? "p" : "q") + std::string(i % 4 < 2 ? "+/" : "-/");
    book.event(name + std::to_string(i), {is_last_p && !is_whole ? last_of_p : token},
               {&next, &beside});
    if (is_p) last_of_p = &beside;
    if (!is_last_p || is_whole) token = &next;
  }
  return std::move(book.finish());
}

TEST(SignalLocks, ManyEventsOfASignalAreComparedInChunks) {
  EXPECT_EQ(pairs_of(signal_lock_relation(long_alternation(true))), (Pairs{{"p", "q"}}));
  EXPECT_EQ(pairs_of(signal_lock_relation(long_alternation(false))), Pairs{});
}

TEST(SignalLocks, AreToldWithTheirNumbers) {
  const StgPrefix prefix = unfold_example("vme_read");
  const Reduction reduction{{&resolution_support::transition_of(prefix, "lds-")},
                            true,
                            &resolution_support::transition_of(prefix, "dsr+")};
  const support::CaughtMessages caught;
  base::run_state().verbosity = 4;
  EXPECT_EQ(lock_numbers(prefix).unlocked, 15u);
  EXPECT_EQ(lock_numbers(prefix, &reduction).unlocked, 13u);
  base::run_state().verbosity = 0;
  EXPECT_EQ(caught.text(),
            "\nLocked signals of the STG:\n\ndsr d\ndsr dtack\nldtack lds\nd dtack"
            "\nLock/Unlock numbers: 10/15"
            "\nLock relation after concurrency reduction lds- -*-> dsr+"
            "\ndsr d\ndsr lds\ndsr dtack\nldtack lds\nd dtack"
            "\nLock/Unlock numbers: 12/13");
}

}  // namespace
}  // namespace vorel::resolution
