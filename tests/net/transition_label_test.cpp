#include "net/transition_label.h"

#include <gtest/gtest.h>

#include "support/legacy_files.h"

namespace vorel::net {
namespace {

Stg stg_with(std::initializer_list<std::string> transition_names) {
  Stg stg;
  for (const std::string& name : transition_names) base::append_new(stg.transitions).name = name;
  return stg;
}

TEST(TransitionLabel, ANameGivesKindSignalAndSignAndLosesItsPrefix) {
  // What remains of the name, the signal, the first letters of its kind and the sign.
  const std::pair<std::string, std::string> rows[] = {{"O.x-/1", "x-/1 x out-"},
                                                      {"I.csc+/1", "csc+/1 csc int+"},
                                                      {"i.a-", "a- a inp-"},
                                                      {"i.b~/2", "b~/2 b inp~"},
                                                      {"d.dum/1", "dum/1 dum dum~"},
                                                      {"O.", "  out~"},
                                                      {"O", "O O dum~"},
                                                      {"", "  dum~"},
                                                      {".x", ".x .x dum~"},
                                                      {"o.x", "o.x o.x dum~"},
                                                      {"i.O.x+", "O.x+ O.x inp+"},
                                                      {"O.a/+", "a/+ a out~"},
                                                      {"O.a+b-/c", "a+b-/c a out+"}};
  const std::string kinds[] = {"inp", "out", "int", "dum"};
  for (const auto& [full, expected] : rows) {
    Stg stg = stg_with({full});
    const support::CaughtMessages messages;
    ASSERT_TRUE(label_transitions(stg)) << full;
    const StgTransition& t = *stg.transitions[0];
    EXPECT_EQ(t.name + " " + t.signal->name + " " + kinds[int(t.signal->kind)] + "+-~"[int(t.sign)],
              expected);
    EXPECT_EQ(without_kind_prefix(full), t.name);
    EXPECT_EQ(messages.text(), "") << full;
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
    const support::CaughtMessages messages;
    EXPECT_FALSE(label_transitions(stg)) << row.error;
    EXPECT_EQ(messages.text(), "\nError: " + std::string(row.error) + "\n");
  }
}

TEST(TransitionLabel, ASignOnADummyIsDroppedWithAWarning) {
  Stg stg = stg_with({"d.x+/1"});
  const support::CaughtMessages messages;
  ASSERT_TRUE(label_transitions(stg));
  EXPECT_EQ(stg.transitions[0]->sign, Sign::toggle);
  EXPECT_EQ(messages.text(), "\nWarning: dummy transition x+/1 cannot have sign\n");
}

}  // namespace
}  // namespace vorel::net
