#include "formats/mp_reader.h"

#include <gtest/gtest.h>

#include "support/legacy_files.h"

namespace vorel::formats {
namespace {

std::string syntax_error(std::uint64_t line) {
  return support::deprecation("*.mp") + "\nError: syntax error (file FILE, line " +
         std::to_string(line) + ")\n";
}

TEST(MpReader, EverythingKeepsTheOrderOfTheFile) {
  const auto [process, messages] = support::read_bytes(read_mp_net,
                                                       "4 3 3 2\n"
                                                       "2 1 1\n1 1 0\n1 2 0\n3 1 2\n"
                                                       "2 0 2 2 3 0 2 1\n1 1 1 0 1\n2 0 1 1 0 2\n"
                                                       "3\n"
                                                       "p10\np9\np9\n"
                                                       "t2\nt1");
  ASSERT_NE(process, nullptr);
  EXPECT_EQ(messages, support::deprecation("*.mp"));
  EXPECT_EQ(support::describe(*process),
            "place p10 marked 0 <- 1 1 -> 0\n"
            "place p9 marked 1 <- -> 1\n"
            "place p9 marked 2 <- -> 1\n"
            "transition t2 <- 0 ->\n"
            "transition t1 <- 1 2 -> 0 0\n"
            "condition p9 depth 1 marked 1 <- -> 0 2\n"
            "condition p10 depth 1 marked 0 <- 0 -> 1\n"
            "condition p10 depth 2 marked 0 <- 0 2 ->\n"
            "condition p9 depth 1 marked 2 <- -> 0\n"
            "event t1 <- 3 0 -> 2 1\n"
            "event t2 <- 1 -> cut-off\n"
            "event t1 <- 0 -> 2\n");
}

TEST(MpReader, RecordsEndInAnyLineEndButNamesOnlyInLf) {
  const auto process =
      support::read_bytes(read_mp_net, "\t1 1  2 1\r1 1\t1\r\n 1 0 1 0 0\r007\r\na\r\n\nx\r y \n")
          .process;
  ASSERT_NE(process, nullptr);
  EXPECT_EQ(process->places[0]->name, "a\r");
  EXPECT_EQ(process->places[1]->name, "");
  EXPECT_EQ(process->transitions[0]->name, "x\r y ");
}

TEST(MpReader, AFaultIsReportedWithTheLineOfItsRecord) {
  const struct {
    const char* text;
    std::uint64_t line;
  } rows[] = {
      {"", 1},
      {"0 0 0 0 0\n0\n", 1},
      {"0 0 0 0 \n0\n", 1},
      {"0 0 0 4294967296\n0\n", 1},
      {"0 0 0\v0\n0\n", 1},
      {"0 0 0 0\n", 2},
      {"0 0 0 0\n1x", 2},
      {"0 0 1 1\n1\np\n", 4},
      {"2 1 1 1\n0 1 0", 2},                                   // place 0
      {"2 1 1 1\n2 1 0", 2},                                   // place beyond the table
      {"2 1 1 1\n1 0 0", 2},                                   // depth 0
      {"2 1 1 1\n1 2147483648 0", 2},                          // depth not a signed word
      {"2 1 1 1\n1 2 1", 2},                                   // marked at depth 2
      {"2 1 1 1\n1 1 1\n1 2", 3},                              // record ends early
      {"2 1 1 1\n1 1 1\r1 2 0\r\n0 0 1 0 0\n", 4},             // transition 0
      {"2 1 1 1\n1 1 1\n1 2 0\n2 0 1 0 0\n", 4},               // transition beyond the table
      {"2 1 1 1\n1 1 1\n1 2 0\n1 2 1 0 0\n", 4},               // cut-off neither 0 nor 1
      {"2 1 1 1\n1 1 1\n1 2 0\n1 0 0 1 0\n", 4},               // empty preset
      {"2 1 1 1\n1 1 1\n1 2 0\n1 0 1 0 2\n", 4},               // condition beyond the table
      {"2 1 1 1\n1 1 1\n1 2 0\n1 0 1 1 0\n1\np\nt\n", 4},      // too few conditions
      {"2 1 1 1\n1 1 1\n1 2 0\n1 0 1 1 0 1 1\n1\np\nt\n", 4},  // too many conditions
      {"2 1 1 1\n1 1 1\n1 2 0\n1 0 4294967295 4294967295 0\n", 4},
      {"4294967295 4294967295 4294967295 4294967295\n1 1 1\n", 3},
  };
  for (const auto& row : rows) {
    const auto [process, messages] = support::read_bytes(read_mp_net, row.text);
    EXPECT_EQ(process, nullptr) << row.text;
    EXPECT_EQ(messages, syntax_error(row.line)) << row.text;
  }
}

}  // namespace
}  // namespace vorel::formats
