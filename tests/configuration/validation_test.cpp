#include "configuration/validation.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/process_builder.h"

namespace vorel::configuration {
namespace {

TEST(Validation, NamesTheConditionAtWhichAReplayFails) {
  const auto process = support::process_from<net::NetPrefix>("t: p -> q; u: q -> r; v!: q -> s");
  const auto &first = *process->events[0], &second = *process->events[1],
             &rival = *process->events[2];
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
    EXPECT_EXIT(outcome(check_safe_run<net::NetPrefix>(*process, row.sequence)),
                testing::ExitedWithCode(row.message.empty() ? 0 : 1), row.message);
  }
  EXPECT_EXIT(outcome(check_deadlock<net::NetPrefix>(*process, Sequence{&first, &second})),
              testing::ExitedWithCode(0), "");
  EXPECT_EXIT(outcome(check_deadlock<net::NetPrefix>(*process, Sequence{&first})),
              testing::ExitedWithCode(1), "\nError: deadlock check failed\n");
}

}  // namespace
}  // namespace vorel::configuration
