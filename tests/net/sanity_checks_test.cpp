#include "net/sanity_checks.h"

#include <gtest/gtest.h>

#include <string>

#include "base/run_state.h"
#include "support/caught_messages.h"
#include "support/process_builder.h"

namespace vorel::net {
namespace {

template <Process P>
std::string check(const P& process, bool expected) {
  const support::CaughtMessages messages;
  EXPECT_EQ(passes_sanity_checks(process), expected);
  return messages.text();
}

// Passes if no error is expected.
template <Process P>
void expect_error(const P& process, const char* error) {
  const std::string messages = check(process, error == nullptr);
  if (error == nullptr) return;
  EXPECT_TRUE(messages.starts_with(std::string("\nError: ") + error + "\n")) << messages;
}

TEST(SanityChecks, ASoundPrefixPassesWithoutAWord) {
  EXPECT_EQ(check(*support::process_from<NetPrefix>("t: p -> q; u!: q -> p'"), true), "");
}

TEST(SanityChecks, ContradictingLinksRefuseSilentlyButForANoteToThoseWhoAsk) {
  using Condition = NetMergedProcess::Condition;
  using Event = NetMergedProcess::Event;
  void (*const damages[])(Condition&, Condition&, Event&) = {
      [](Condition& p, Condition&, Event& e) { add_link(p, e); },  // once more
      [](Condition&, Condition& q, Event&) { q.preset.clear(); },
      [](Condition&, Condition&, Event& e) { e.postset.clear(); },
      [](Condition& p, Condition& q, Event&) { std::swap(p.index, q.index); },
  };
  for (const auto damage : damages) {
    const auto process = support::process_from<NetMergedProcess>("marked p; t: p -> q");
    damage(*process->conditions[0], *process->conditions[1], *process->events[0]);
    const std::string silent = check(*process, false);
    base::run_state().verbosity = 1;
    const std::string asked = check(*process, false);
    base::run_state().verbosity = 0;
    EXPECT_EQ(asked, "\nthe input is not read: its links contradict each other\n" + silent);
    EXPECT_EQ(silent.find("Error"), std::string::npos);
  }
}

TEST(SanityChecks, ACausalCycleOfAPrefixIsRefusedWithItsEvents) {
  EXPECT_EQ(check(*support::process_from<NetPrefix>("s: i -> o; t: p -> q; u: q -> p"), false),
            "\nError: the prefix contains 2 event(s) on or after a causal cycle: e1, e2\n");
}

TEST(SanityChecks, AnEventThatDisagreesWithItsTransitionIsRefused) {
  const std::string consumes = "event e1 does not consume from the places of its transition t",
                    produces = "event e1 does not produce on the places of its transition t";
  const std::pair<const char*, const char*> rows[] = {
      {"t: p -> r; t: q -> r'", consumes.c_str()},
      {"t: p -> r; t: p' -> q", produces.c_str()},
      {"t: p -> r; t!: p' -> q", produces.c_str()},
      {"t: p -> r; t: p' ->", produces.c_str()},
      {"t: p -> r; t!: p' ->", nullptr},  // what a cut-off produces may have been left out
  };
  for (const auto& [text, error] : rows) {
    expect_error(*support::process_from<NetPrefix>(text), error);
  }
}

TEST(SanityChecks, OccurrencesOfAPlaceThatAreOutOfOrderAreRefused) {
  const struct {
    int depths[3];  // of the conditions of p: before the event, after it, alone
    int marked;     // which of them
    const char* message;
  } rows[] = {
      {{1, 2, 3}, 0, nullptr},
      {{2, 3, 4}, 0, nullptr},  // counted from 2
      {{2, 2, 1}, 2, "place p has two conditions at occurrence depth 2"},
      {{1, 2, 4}, 0, "place p has a condition at occurrence depth 4 and none at 3: c2"},
      {{2, 3, 4}, 3, "place p has a condition at occurrence depth 2 and none at 1: c0"},
      {{1, 2, 3}, 1, "place p is initially marked at occurrence depth 2, not at its first: c1"},
      {{1, 3, 2},
       0,
       "event e0 enters place p at occurrence depth 3, which is not the next after it leaves it"},
      {{3, 1, 2}, 1, nullptr},  // on a cycle: it never fires
  };
  for (const auto& row : rows) {
    support::ProcessBuilder<NetMergedProcess> b;
    NetMergedProcess::Condition* c[3];
    for (int i = 0; i < 3; ++i) c[i] = &b.condition("p", row.marked == i, row.depths[i]);
    b.event("t", {c[0]}, {c[1]});
    expect_error(b.finish(), row.message);
  }
}

TEST(SanityChecks, EmptyPresetsAndUnsafeMarkingsAreErrorsAndTheOtherChecksStillRun) {
  const auto process = support::process_from<NetMergedProcess>(
      "marked p p r alone alone alone; t: -> q; u: p ->; v: r ->; w: ->");
  EXPECT_EQ(check(*process, false),
            "\nError: the initial marking is not safe: place(s) c0, c2\n"
            "\nError: the net contains 2 transition(s) with empty preset: e0, e3\n"
            "\nWarning: the net contains 3 transition(s) with empty postset: e1, e2, e3\n"
            "\nWarning: *T<T* for transition e0; the net may be unbounded\n"
            "\nWarning: *T=T* for transition e3; |*T|=0\n"
            "\nWarning: the net contains 1 isolated place(s): c2\n");
}

TEST(SanityChecks, SelfLoopsAndPlacesWithoutRealProducersAreWarnedOf) {
  const auto process =
      support::process_from<NetMergedProcess>("marked p; t: p -> p; u: p -> p q; v: q r -> r");
  EXPECT_EQ(check(*process, true),
            "\nWarning: *T=T* for transition e0; |*T|=1\n"
            "\nWarning: *T<T* for transition e1; the net may be unbounded\n"
            "\nWarning: the net contains 1 unmarked place(s) with no producing arcs: c2\n");
}

}  // namespace
}  // namespace vorel::net
