#include "net/transition_label.h"

#include <gtest/gtest.h>

#include "support/legacy_files.h"

namespace vorel {
namespace {

constexpr SignalKind in = SignalKind::input, out = SignalKind::output,
                     internal = SignalKind::internal, dummy = SignalKind::dummy;

Stg stg_with(std::initializer_list<std::string> transition_names) {
  Stg stg;
  for (const std::string& name : transition_names) append_new(stg.transitions).name = name;
  return stg;
}

TEST(TransitionLabel, ANameGivesKindSignalAndSignAndLosesItsPrefix) {
  const struct {
    const char *full, *name, *signal;
    SignalKind kind;
    Sign sign;
  } rows[] = {
      {"O.x-/1", "x-/1", "x", out, Sign::minus},
      {"I.csc+/1", "csc+/1", "csc", internal, Sign::plus},
      {"i.a-", "a-", "a", in, Sign::minus},
      {"i.b~/2", "b~/2", "b", in, Sign::toggle},
      {"d.dum/1", "dum/1", "dum", dummy, Sign::toggle},
      {"t1", "t1", "t1", dummy, Sign::toggle},
      {"O.", "", "", out, Sign::toggle},
      {"O", "O", "O", dummy, Sign::toggle},
      {"", "", "", dummy, Sign::toggle},
      {".x", ".x", ".x", dummy, Sign::toggle},
      {"o.x", "o.x", "o.x", dummy, Sign::toggle},
      {"i.O.x+", "O.x+", "O.x", in, Sign::plus},
      {"O.a/+", "a/+", "a", out, Sign::toggle},
      {"O.a+b-/c", "a+b-/c", "a", out, Sign::plus},
  };
  for (const auto& row : rows) {
    Stg stg = stg_with({row.full});
    const CaughtMessages messages;
    ASSERT_TRUE(label_transitions(stg)) << row.full;
    const StgTransition& transition = *stg.transitions[0];
    EXPECT_EQ(transition.name, row.name);
    EXPECT_EQ(transition.signal->name, row.signal) << row.full;
    EXPECT_EQ(transition.signal->kind, row.kind) << row.full;
    EXPECT_EQ(transition.sign, row.sign) << row.full;
    EXPECT_EQ(without_kind_prefix(row.full), row.name);
    EXPECT_EQ(messages.text(), "") << row.full;
  }
}

TEST(TransitionLabel, NamesThatContradictEachOtherAreRefused) {
  const struct {
    std::initializer_list<std::string> names;
    const char* error;
  } rows[] = {
      {{"O.x+", "x+"}, "removing prefix from a transition name causes a collision: x+"},
      {{"x", "x"}, "removing prefix from a transition name causes a collision: x"},
      {{"O.", ""}, "removing prefix from a transition name causes a collision: "},
      {{"O.+"}, "transition has empty signal name: +"},
      {{"/1"}, "transition has empty signal name: /1"},
      {{"d.~a"}, "transition has empty signal name: ~a"},
      {{"O.x+", "I.x-"}, "signal x- is declared with multiple type modifiers"},
      {{"x/1", "i.x/2"}, "signal x/2 is declared with multiple type modifiers"},
  };
  for (const auto& row : rows) {
    Stg stg = stg_with(row.names);
    const CaughtMessages messages;
    EXPECT_FALSE(label_transitions(stg)) << row.error;
    EXPECT_EQ(messages.text(), "\nError: " + std::string(row.error) + "\n");
  }
}

TEST(TransitionLabel, ASignOnADummyIsDroppedWithAWarning) {
  Stg stg = stg_with({"d.x+/1"});
  const CaughtMessages messages;
  ASSERT_TRUE(label_transitions(stg));
  EXPECT_EQ(stg.transitions[0]->sign, Sign::toggle);
  EXPECT_EQ(messages.text(), "\nWarning: dummy transition x+/1 cannot have sign\n");
}

TEST(TransitionLabel, TransitionsOfOneSignalShareItAndSignalsGroupByKind) {
  Stg stg = stg_with({"t", "I.c+", "O.bb-", "i.a+/1", "O.b+", "i.a-", "i.a+/2"});
  ASSERT_TRUE(label_transitions(stg));
  ASSERT_EQ(stg.signals.size(), 5u);
  EXPECT_EQ(stg.signals[0]->name, "a");
  EXPECT_EQ(stg.signals[1]->name, "b");
  EXPECT_EQ(stg.inputs_end, 1u);
  EXPECT_EQ(stg.outputs_end, 3u);
  EXPECT_EQ(stg.internals_end, 4u);
  EXPECT_EQ(stg.transitions[3]->signal, stg.signals[0].get());
  EXPECT_EQ(stg.transitions[6]->signal, stg.signals[0].get());
}

}  // namespace
}  // namespace vorel
