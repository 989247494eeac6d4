#include "unfolder/unfolder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "net/clone_net.h"
#include "net/sanity_checks.h"
#include "oracle/net_text.h"
#include "oracle/prefix_checks.h"
#include "oracle/random_net.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "oracle/write_files.h"
#include "support/seeds.h"

namespace vorel::unfolder {
namespace {

template <class N>
struct Unfolding {
  bool succeeded = false;
  net::PrefixOf<N> prefix;
  UnfoldStats stats;
  std::string messages;
};

template <class N>
Unfolding<N> unfold(const N& net, const UnfoldOptions& options = {}) {
  testing::internal::CaptureStderr();
  Unfolding<N> result;
  Unfolder<N> unfolder(net::clone_net(net), options);
  result.succeeded = unfolder.unfold();
  if (result.succeeded) {
    unfolder.warn_if_no_events();
    result.stats = unfolder.stats();
    result.prefix = std::move(unfolder).result();
  }
  result.messages = testing::internal::GetCapturedStderr();
  return result;
}

template <class N>
std::size_t cut_off_count(const net::PrefixOf<N>& prefix) {
  return static_cast<std::size_t>(
      std::ranges::count_if(prefix.events, [](const auto& event) { return event->is_cut_off(); }));
}

template <class N>
void expect_sound_and_complete(const N& net, const net::PrefixOf<N>& prefix) {
  EXPECT_TRUE(passes_sanity_checks(prefix));
  EXPECT_EQ(oracle::branching_fault(prefix), "");
  const auto lasting = prefix.events.size() - cut_off_count(prefix);
  if (lasting <= 18) {
    EXPECT_EQ(oracle::completeness_fault(prefix, oracle::explore(net)), "");
  }
}

template <class N>
void compare_with_reference(const N& net) {
  const auto reference = oracle::unfold(net);
  ASSERT_TRUE(reference.has_value());
  UnfoldOptions options;
  options.dummy_cutoffs = true;  // the reference makes no difference between events
  const auto unfolding = unfold(net, options);
  ASSERT_TRUE(unfolding.succeeded);
  const net::PrefixOf<N>& prefix = unfolding.prefix;
  EXPECT_EQ(prefix.events.size(), reference->events.size());
  EXPECT_EQ(prefix.conditions.size(), reference->conditions.size());
  EXPECT_EQ(cut_off_count(prefix), cut_off_count(*reference));
  expect_sound_and_complete(net, prefix);
}

TEST(Unfolder, MakesPrefixesOfTheSizeOfTheReference) {
  support::for_each_seed(150, [&](std::uint64_t seed) {
    compare_with_reference(oracle::random_net(seed));
    compare_with_reference(
        oracle::random_stg(seed, {.dummies = seed % 3 == 0, .toggles = seed % 4 == 0}));
  });
  for (const auto& trap : oracle::trap_nets()) compare_with_reference(oracle::net_from(trap.text));
  compare_with_reference(oracle::philosophers(4));
}

// The number of runs in which the relation became too large and was dropped.
template <class N>
std::size_t expect_same_text_whatever_the_threads(const N& net) {
  std::size_t dropped = 0;
  UnfoldOptions options;
  const std::string expected = oracle::pnml_text(unfold(net, options).prefix);
  for (const std::uint32_t threads : {1u, 2u, 4u}) {
    for (const std::uint32_t capacity : {0u, 12u, 40000u}) {
      options.number_of_threads = threads;
      options.conc_rel_size = capacity;
      options.history_nodes = 10 * threads;
      const auto unfolding = unfold(net, options);
      EXPECT_EQ(oracle::pnml_text(unfolding.prefix), expected)
          << threads << " threads, relation of " << capacity;
      dropped += unfolding.stats.relation_dropped ? 1 : 0;
    }
  }
  return dropped;
}

TEST(Unfolder, ThreadsAndTheRelationLeaveNoMarkOnTheResult) {
  std::size_t dropped = 0;
  support::for_each_seed(60, [&](std::uint64_t seed) {
    dropped += expect_same_text_whatever_the_threads(oracle::random_net(seed));
    const net::Stg stg = oracle::random_stg(seed, {.dummies = seed % 2 == 0});
    dropped += expect_same_text_whatever_the_threads(stg);
  });
  EXPECT_GT(dropped, 0u);
}

// Automata that go round, and transitions by which two of them go on together: many conditions of
// each place, nearly all in conflict.
net::Net automata_that_meet(std::uint64_t seed) {
  constexpr std::uint32_t automata = 5, states = 6;
  std::mt19937 generator(static_cast<std::uint32_t>(seed));
  const auto random = [&](std::uint32_t end) {
    return static_cast<std::uint32_t>(generator() % end);
  };
  const auto state = [](std::uint32_t a, std::uint32_t number) {
    return " s" + std::to_string(states * a + number % states);
  };
  std::string text = "marked";
  for (std::uint32_t a = 0; a < automata; ++a) text += state(a, 0);
  for (std::uint32_t a = 0; a < automata; ++a) {
    for (std::uint32_t s = 0; s < states; ++s) {
      text += "; t" + std::to_string(a * states + s) + ":" + state(a, s) + " ->" + state(a, s + 1);
    }
  }
  for (int i = 0; i < 16; ++i) {
    const std::uint32_t a = random(automata), b = (a + 1 + random(automata - 1)) % automata;
    text += "; m" + std::to_string(i) + ":" + state(a, random(states)) + state(b, random(states)) +
            " ->" + state(a, random(states)) + state(b, random(states));
  }
  return oracle::net_from(text);
}

TEST(Unfolder, HistoriesTellTheSameAsTheRelationWhereMostIsInConflict) {
  std::size_t events = 0;
  for (auto [seed, end] = support::seeds(6); seed < end; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const net::Net net = automata_that_meet(seed);
    const auto by_relation = unfold(net, {.max_events = 20000});
    // Few nodes: most histories are given up, and restored where they are needed.
    for (const std::uint32_t nodes : {20u, 1000u, UnfoldOptions{}.history_nodes}) {
      const auto by_histories =
          unfold(net, {.conc_rel_size = 0, .history_nodes = nodes, .max_events = 20000});
      ASSERT_EQ(by_relation.succeeded, by_histories.succeeded);
      if (!by_relation.succeeded) continue;
      events += by_relation.prefix.events.size();
      EXPECT_EQ(oracle::pnml_text(by_histories.prefix), oracle::pnml_text(by_relation.prefix));
    }
  }
  EXPECT_GT(events, 2000u);
}

TEST(Unfolder, EveryOrderGivesACompletePrefix) {
  support::for_each_seed(60, [&](std::uint64_t seed) {
    const net::Net net = oracle::random_net(seed);
    for (const auto order : {AdequateOrder::size, AdequateOrder::parikh}) {
      const auto unfolding = unfold(net, {.order = order, .max_events = 3000});
      if (unfolding.succeeded) expect_sound_and_complete(net, unfolding.prefix);
    }
    const auto unfolding = unfold(net, {.order = AdequateOrder::inclusion, .max_events = 500});
    if (unfolding.succeeded) expect_sound_and_complete(net, unfolding.prefix);
  });
}

TEST(Unfolder, NonLocalCorrespondentsCutEarlier) {
  std::size_t local = 0, non_local = 0;
  support::for_each_seed(60, [&](std::uint64_t seed) {
    const net::Net net = oracle::random_net(seed);
    const auto unfolding = unfold(net, {.non_local_correspondents = true});
    ASSERT_TRUE(unfolding.succeeded);
    expect_sound_and_complete(net, unfolding.prefix);
    non_local += unfolding.prefix.events.size();
    local += unfold(net).prefix.events.size();
  });
  EXPECT_LT(non_local, local);
}

TEST(Unfolder, RefusesWhatItCannotUnfoldWithAReason) {
  struct Row {
    std::string net;
    UnfoldOptions options;
    std::string messages;
  };
  const Row table[] = {
      {"marked p; a: p -> q; b: q -> r s; c: r -> t; d: s -> t",
       {},
       "\nError: the net is not safe, place t; trace:\na, b, c, d\n"},
      {"marked p; a: p -> q; b: -> q",
       {},
       "\nError: the net contains 1 transition(s) with empty preset: b\n"},
      {"marked p; a: p -> q; b: q -> r; c: r -> p",
       {.max_events = 2},
       "\nError: the prefix has more than 2 events; so far |B|=3 |E|=2 |C|=0, events queued: 1\n"},
  };
  for (const Row& row : table) {
    const auto unfolding = unfold(oracle::net_from(row.net), row.options);
    EXPECT_FALSE(unfolding.succeeded);
    EXPECT_EQ(unfolding.messages, row.messages);
  }
}

TEST(Unfolder, WarnsWhereThereIsNothingToUnfold) {
  const auto unmarked = unfold(oracle::net_from("marked; a: p -> q"));
  EXPECT_TRUE(unmarked.succeeded);
  EXPECT_EQ(unmarked.messages,
            "\nWarning: the initial marking is empty\n"
            "\nWarning: the prefix contains no non-cut-off events\n");
  const auto loop = unfold(oracle::net_from("marked p; a: p -> p"));
  ASSERT_EQ(loop.prefix.events.size(), 1u);
  EXPECT_TRUE(loop.prefix.events[0]->cut_off.is_initial_marking());
  EXPECT_EQ(loop.messages, "\nWarning: the prefix contains no non-cut-off events\n");
}

// A dummy that closes a cycle with other events is kept, and so is what follows it.
TEST(Unfolder, CutsNoDummyUnlessAllItAddsAreDummies) {
  support::for_each_seed(100, [&](std::uint64_t seed) {
    const net::Stg stg = oracle::random_stg(seed, {.dummies = true});
    const auto unfolding = unfold(stg, {.max_events = 5000});
    if (unfolding.succeeded) expect_sound_and_complete(stg, unfolding.prefix);
  });
}

}  // namespace
}  // namespace vorel::unfolder
