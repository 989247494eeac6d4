#include "net/sanity_checks.h"

#include <gtest/gtest.h>

#include <string>

#include "base/run_state.h"
#include "support/caught_messages.h"
#include "support/process_builder.h"

namespace vorel::net {
namespace {

template <Process P>
std::string check(const support::ProcessBuilder<P>& builder, bool expected) {
  const support::CaughtMessages messages;
  EXPECT_EQ(passes_sanity_checks(*builder.process), expected);
  return messages.text();
}

// Passes if no error is expected.
template <Process P>
void expect_error(const support::ProcessBuilder<P>& builder, const char* error) {
  const std::string messages = check(builder, error == nullptr);
  if (error == nullptr) return;
  EXPECT_TRUE(messages.starts_with(std::string("\nError: ") + error + "\n")) << messages;
}

TEST(SanityChecks, ASoundPrefixPassesWithoutAWord) {
  support::ProcessBuilder<NetPrefix> b;
  auto& p = b.condition("p");
  auto& q = b.condition("q");
  auto& p2 = b.condition("p");
  b.event("t", {&p}, {&q});
  b.event("u", {&q}, {&p2}, true);
  b.finish();
  EXPECT_EQ(check(b, true), "");
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
    support::ProcessBuilder<NetMergedProcess> b;
    auto &p = b.condition("p", 1), &q = b.condition("q");
    auto& e = b.event("t", {&p}, {&q});
    b.finish();
    damage(p, q, e);
    const std::string silent = check(b, false);
    base::run_state().verbosity = 1;
    const std::string asked = check(b, false);
    base::run_state().verbosity = 0;
    EXPECT_EQ(asked, "\nthe input is not read: its links contradict each other\n" + silent);
    EXPECT_EQ(silent.find("Error"), std::string::npos);
  }
}

TEST(SanityChecks, ACausalCycleOfAPrefixIsRefusedWithItsEvents) {
  support::ProcessBuilder<NetPrefix> b;
  auto& i = b.condition("i");
  auto& o = b.condition("o");
  auto& p = b.condition("p");
  auto& q = b.condition("q");
  b.event("s", {&i}, {&o});
  b.event("t", {&p}, {&q});
  b.event("u", {&q}, {&p});
  b.finish();
  EXPECT_EQ(check(b, false),
            "\nError: the prefix contains 2 event(s) on or after a causal cycle: e1, e2\n");
}

TEST(SanityChecks, AnEventThatDisagreesWithItsTransitionIsRefused) {
  const struct {
    const char *consumed, *produced;  // by the second event of t, the first one goes from p to r
    bool produces, is_cut_off;
    const char* message;
  } rows[] = {
      {"q", "r", true, false, "event e1 does not consume from the places of its transition t"},
      {"p", "q", true, false, "event e1 does not produce on the places of its transition t"},
      {"p", "q", true, true, "event e1 does not produce on the places of its transition t"},
      {"p", "", false, false, "event e1 does not produce on the places of its transition t"},
      {"p", "", false, true, nullptr},  // what a cut-off produces may have been left out
  };
  for (const auto& row : rows) {
    support::ProcessBuilder<NetPrefix> b;
    b.event("t", {&b.condition("p")}, {&b.condition("r")});
    auto& consumed = b.condition(row.consumed);
    if (row.produces) {
      b.event("t", {&consumed}, {&b.condition(row.produced)}, row.is_cut_off);
    } else {
      b.event("t", {&consumed}, {}, row.is_cut_off);
    }
    b.finish();
    expect_error(b, row.message);
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
    b.finish();
    expect_error(b, row.message);
  }
}

TEST(SanityChecks, EmptyPresetsAndUnsafeMarkingsAreErrorsAndTheOtherChecksStillRun) {
  support::ProcessBuilder<NetMergedProcess> b;
  auto& p = b.condition("p", 2);
  auto& q = b.condition("q");
  auto& r = b.condition("r", 1);
  b.condition("alone", 3);
  b.event("t", {}, {&q});
  b.event("u", {&p}, {});
  b.event("v", {&r}, {});
  b.event("w", {}, {});
  b.finish();
  EXPECT_EQ(check(b, false),
            "\nError: the initial marking is not safe: place(s) c0, c3\n"
            "\nError: the net contains 2 transition(s) with empty preset: e0, e3\n"
            "\nWarning: the net contains 3 transition(s) with empty postset: e1, e2, e3\n"
            "\nWarning: *T<T* for transition e0; the net may be unbounded\n"
            "\nWarning: *T=T* for transition e3; |*T|=0\n"
            "\nWarning: the net contains 1 isolated place(s): c3\n");
}

TEST(SanityChecks, SelfLoopsAndPlacesWithoutRealProducersAreWarnedOf) {
  support::ProcessBuilder<NetMergedProcess> b;
  auto& p = b.condition("p", 1);
  auto& q = b.condition("q");
  b.event("t", {&p}, {&p});
  b.event("u", {&p}, {&p, &q});
  auto& r = b.condition("r");
  b.event("v", {&q, &r}, {&r});
  b.finish();
  EXPECT_EQ(check(b, true),
            "\nWarning: *T=T* for transition e0; |*T|=1\n"
            "\nWarning: *T<T* for transition e1; the net may be unbounded\n"
            "\nWarning: the net contains 1 unmarked place(s) with no producing arcs: c2\n");
}

}  // namespace
}  // namespace vorel::net
