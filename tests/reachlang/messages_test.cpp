// What the user is told of texts that are no properties, and of properties without a value.
#include <gtest/gtest.h>

#include <string>

#include "reachlang/expansion.h"
#include "reachlang/parser.h"
#include "support/caught_messages.h"
#include "support/process_builder.h"

namespace vorel::reachlang {
namespace {

TEST(ReachSyntax, ErrorsTellWhatWasFoundAndWhere) {
  struct Row {
    std::string text, message;
    int line, column;
  };
  const std::string syntax = "incorrect syntax of the expression: syntax error, unexpected ";
  const std::string number = "incorrect syntax of the expression: the number ";
  const Row table[] = {
      {"", syntax + "end of file", 1, 1},
      {"// nothing", syntax + "end of file", 1, 11},
      {"true true", syntax + "TOK_TRUE, expecting end of file", 1, 6},
      {"{1, } = {1}", syntax + "'}'", 1, 5},
      {"{1 2} = {1}", syntax + "TOK_NUM, expecting ',' or '}'", 1, 4},
      {"1 < 1 >= 1", syntax + "TOK_GEQ", 1, 7},
      {"1 in {1} in {true}", syntax + "TOK_IN", 1, 10},
      {"1 in {1} = true & (1 in {1}) = true", "", 0, 0},
      {"forall 1 in {1} { true }", syntax + "TOK_NUM, expecting TOK_ID", 1, 8},
      {"forall x = {1} { true }", syntax + "'=', expecting TOK_IN", 1, 10},
      {"gather x in {1}, y in {1} { 1 } = {1}", syntax + "',', expecting '{'", 1, 16},
      {"threshold true", syntax + "TOK_TRUE, expecting TOK_ID or '('", 1, 11},
      {"\"a\"[..] = \"\"", syntax + "']'", 1, 7},
      {"$P\n\r\n  1\r\r& /* \n */ )", syntax + "')'", 6, 5},
      {std::string("true \0", 6), syntax + "'\\x00', expecting end of file", 1, 6},
      {"\xc3\xa4", syntax + "'\\xc3'", 1, 1},
      {"\xef\xbb\xbftrue & ~false", "", 0, 0},
      {"\xef\xbb\xbftrue &", syntax + "end of file", 1, 7},
      {"true \xef\xbb\xbf", syntax + "'\\xef', expecting end of file", 1, 6},
      {"s .t.", "incorrect syntax of the expression: Undeclared identifier: s", 1, 1},
      {"true & /* no end", "run-away comment: /* no end...", 1, 8},
      {"9223372036854775808 = 1", number + "9223372036854775808 ... is too large", 1, 1},
      {"\"two\nlines\"", "run-away quoted name: \"two...", 1, 1},
      {"\"a\\", "run-away quoted name: \"a\\...", 1, 1},
      {"$P 1 &\n  $$P", syntax + "end of file", 2, 6}};
  for (const Row& row : table) {
    const support::CaughtMessages messages;
    const bool is_property = parse_reach(row.text) != nullptr;
    std::string expected = "\nError: " + row.message + " (located at line " +
                           std::to_string(row.line) + ", column " + std::to_string(row.column) +
                           ")\n";
    if (row.line == 0) expected.clear();
    EXPECT_EQ(is_property, row.line == 0);
    EXPECT_EQ(messages.text(), expected) << row.text;
  }
}

// x+ with prefixes of two kinds, the dummy d.k between them; i.x+ is a cut-off.
std::unique_ptr<net::StgPrefix> small_stg() {
  auto process = support::process_from<net::StgPrefix>("O.x+: p -> q; d.k: q -> r; i.x+!: r -> p2");
  for (const auto& signal : process->signals) signal->initial_value = signal->index == 0 ? 1 : 0;
  return process;
}

// "true", "false" or "depends", or why there is no value.
template <net::Process P>
std::string value_of(const std::string& text, const P& process) {
  const support::CaughtMessages messages;
  const auto property = parse_reach(text);
  if (property == nullptr) return messages.text();
  std::string fault;
  const auto normal = normalise(*property, process, fault);
  if (!normal) return fault;
  if (!normal->formula.is_constant(normal->root)) return "depends";
  return normal->formula.is_true(normal->root) ? "true" : "false";
}

TEST(ReachValues, ErrorsOfEvaluationShowTheExpression) {
  const auto stg = small_stg();
  struct Row {
    std::string text, expected;
  };
  const Row table[] = {
      {"forall n in {0, 1} { 7 % n < 1 }", "Division by 0: 7 % 0"},
      {"(-9223372036854775807 - 1) / -1 = 1", "Arithmetic overflow: -9223372036854775808 / -1"},
      {"(-9223372036854775807 - 1) % -1 = 0", "true"},
      {"$E (-1)", "There is no node -1 (located at line 1, column 2)"},
      {"\"abc\"[-1..] = \"\"", "Index out of range: \"abc\"[-1..]"},
      {"\"abc\"[..3] = \"\"", "Index out of range: \"abc\"[..3]"},
      {"\"abc\"[2..0] = \"\"", "Index out of range: \"abc\"[2..0]"},
      {"exists x in PLACES { is_init x ? fail \"initial\" : $x }",
       "Non-static fail: fail \"initial\""},
      {"false & (true ? fail \"no\" : true)", "false"},
      {"let x = 1 / 0 { $P x }", "Division by 0: 1 / 0"},
      {"let x = $P 9 { true }", "true"},
      {"let x = $P 9, y = ~x & $P 1 { $P 1 | false & y }", "depends"},
      {"let x = $P 1,\n  y = $P 1 & $P 9 { x | ~y }",
       "There is no node 9 (located at line 2, column 15)"},
      {"let x = true ? fail \"no\" : $P 1 { $P 1 -> x }", "Non-static fail: fail \"no\""},
      {"(1 > 0 ? fail \"first\" : 1) + 1 / 0 = 1", "first"}};
  for (const Row& row : table) EXPECT_EQ(value_of(row.text, *stg), row.expected) << row.text;
  for (const std::string pattern : {"(", "[z-a]", "a{2,1}", "*"}) {
    const std::string fault = value_of("card PP\"" + pattern + "\" = 0", *stg);
    EXPECT_TRUE(fault.starts_with("Error in a regular expression \"" + pattern)) << fault;
  }
}

TEST(ReachValues, PlainNetsHaveNoSignals) {
  const auto net = support::process_from<net::NetPrefix>("t: p -> q");
  for (const std::string set : {"SIGNALS", "INPUTS", "OUTPUTS", "INTERNAL", "DUMMY", "LOCAL"}) {
    EXPECT_EQ(value_of("card " + set + " = 0", *net), "Can refer to signals only in STGs: " + set);
  }
  const std::pair<std::string, std::string> table[] = {{"$S\"x\"", "S\"x\""},
                                                       {"@S 1", "S 1"},
                                                       {"card SS\".*\" = 0", "SS \".*\""},
                                                       {"is_input sig T 1", "sig T\"t\""},
                                                       {"is_plus E 1", "is_plus E 1"}};
  for (const auto& [text, shown] : table) {
    EXPECT_EQ(value_of(text, *net), "Valid only in STGs: " + shown);
  }
  EXPECT_EQ(value_of("false & $S 1 | card ev T 1 = 1", *net), "true");
}

}  // namespace
}  // namespace vorel::reachlang
