#include "configuration/validation.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/process_builder.h"

namespace vorel::configuration {
namespace {

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
