// Texts that are huge, nested deeply or broken: each gets an answer or an error, and no run ends in
// a crash or takes all memory.
#include <gtest/gtest.h>

#include <string>

#include "oracle/random.h"
#include "reachlang/expansion.h"
#include "reachlang/parser.h"
#include "support/caught_messages.h"
#include "support/process_builder.h"

namespace vorel::reachlang {
namespace {

std::string repeated(const std::string& text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

std::string outcome_of(const std::string& text, const net::NetPrefix& prefix) {
  const support::CaughtMessages messages;
  const auto property = parse_reach(text);
  std::string fault;
  if (property == nullptr) {
    fault = messages.text();
    return fault.find("memory exhausted") == std::string::npos ? fault.substr(0, 100)
                                                               : "memory exhausted";
  }
  to_string(*property, property->root());
  const auto normal = normalise(*property, prefix, fault);
  if (!normal) return fault.substr(0, 100);
  const ReachNode& root = normal->formula.expr().node(normal->root);
  to_string(normal->formula.expr(), root);
  if (!normal->formula.is_constant(normal->root)) return "depends";
  return normal->formula.is_true(normal->root) ? "true" : "false";
}

class HostileText : public testing::Test {
 protected:
  void SetUp() override {
    auto& p = b_.condition(repeated("a", 3000));
    b_.event("t", {&p}, {&b_.condition("q")});
    b_.finish();
  }
  void expect(const std::string& outcome, const std::string& text) const {
    EXPECT_EQ(outcome_of(text, *b_.process), outcome) << text.substr(0, 60);
  }
  support::ProcessBuilder<net::NetPrefix> b_;
};

TEST_F(HostileText, IsRefusedWhereItIsNestedTooDeeply) {
  struct Row {
    std::string before, inside, after;  // `before` and `after` are repeated
    bool is_flat = false;               // a run that needs no depth
  };
  const Row table[] = {{"(", "true", ")"},
                       {"~", "$P 1", ""},
                       {"-", "1", ""},
                       {"{", "1", "}"},
                       {"# P ", "1", ""},
                       {"", "\"a\"", "[..0]"},
                       {"true ? true : ", "true", ""},
                       {"true ? ", "true", " : false"},
                       {"forall x in {1} { ", "true", " }"},
                       {"forall x in PP\"q\" { ", "$P 1", " }"},
                       {"gather x in ", "PLACES", " { x }"},
                       {"let x = ", "$P 1", " { x }"},
                       {"let x = 1 { ", "true", " }"},
                       {"threshold(", "$P 1", ", true)"},
                       {"threshold[", "1", "](true)"},
                       {"$P 1 & ", "true", "", true},
                       {"", "$P 1", " | $P 2 ^ $P 1 & $P 2", true},
                       {"", "1 = 1", " + 1 - 1"},
                       {"", "true", "->true", true},
                       {"$P 1->", "true", "", true},
                       {"", "$P 1", "<->true", true},
                       {"1 + ", "1 = 1", "", true},
                       {"", "1 = 1", " - 1", true},
                       {"", "1 = 1", " * 1", true},
                       {"", "PLACES = PLACES", " \\ PLACES", true}};
  for (const Row& row : table) {
    for (const std::size_t depth : {100u, 1900u, 10'000u, 100'000u}) {
      const std::string text =
          repeated(row.before, depth) + row.inside + repeated(row.after, depth);
      const std::string outcome = outcome_of(text, *b_.process);
      const bool is_refused = outcome == "memory exhausted";
      const bool is_unlimited = row.is_flat || depth == 100;
      EXPECT_TRUE(is_refused ? !is_unlimited : is_unlimited || depth < 10'000)
          << depth << " " << text.substr(0, 40);
    }
  }
}

TEST_F(HostileText, MayDefineAsMuchAsItLikes) {
  std::string sums = "let x0 = 1", doubles = "let x0 = $P 1";
  for (int i = 1; i <= 10'000; ++i) {
    const std::string last = "x" + std::to_string(i - 1), next = ", x" + std::to_string(i) + " = ";
    sums += next + last + " + 1";
    doubles += next + '(' + last + " ^ $P 2) & (" + last + " | true)";
  }
  expect("true", sums + " { x10000 = 10001 }");
  expect("depends", doubles + " { x10000 }");  // each definition is shared by those that use it
  expect("true", "let x = " + repeated("\"a\" + ", 100'000) + "\"\" { len x = 100000 }");
  expect("true", "forall x in {" + repeated("1, 2, ", 100'000) + "3} { x < 4 }");
}

TEST_F(HostileText, CanBeOfAnyBytes) {
  constexpr std::size_t much = 1'000'000;
  for (const std::string bytes :
       {"a", " ", "1", "$", "@", "'", "\"", "\\", "(", "/*", "~", "\n", "\377", ".", "s.t."}) {
    const std::string outcome = outcome_of(repeated(bytes, much), *b_.process);
    EXPECT_TRUE(outcome.starts_with("\nError: ") || outcome == "memory exhausted") << outcome;
  }
  expect("true", "true" + repeated(" ", much));
  expect("true",
         "/*" + repeated("*", much) + "/ len \"" + repeated("\\x41", much) + "\" = 1000000");
  for (const char* const end :
       {"\"\\", "\"\\x", "\"\\x4", "\"\\0", "\"\\\r", "\"a", "/*", "/", "s.t", "<-", "$"}) {
    EXPECT_TRUE(outcome_of(std::string("true & ") + end, *b_.process).starts_with("\nError: "))
        << end;
  }
  const std::string nul(1, '\0');
  expect("true", "len \"a" + nul + "b\" = 3");
  expect("There is no node \"a\\000b\" (located at line 1, column 2)", "$P\"a" + nul + "b\"");
  oracle::Random random(5);
  const char* const words[] = {"forall", " x ",    " in ",      "{", "}",   "PLACES", "$",
                               "@",      "'",      "(",         ")", "let", "=",      ",",
                               "1",      "\"a\"",  "threshold", "[", "]",   "..",     "~",
                               "&",      " s.t. ", "gather",    "?", ":",   "P"};
  for (int i = 0; i < 1000; ++i) {
    std::string text;
    for (std::uint32_t n = random.below(20); n > 0; --n)
      text += words[random.below(std::size(words))];
    if (random.chance(20)) text += static_cast<char>(random.below(256));
    EXPECT_FALSE(outcome_of(text, *b_.process).empty());
  }
}

TEST_F(HostileText, MayHoldAnyRegularExpression) {
  const auto matches = [this](const std::string& pattern) {
    return outcome_of("card PP\"" + pattern + "\" = 0", *b_.process);
  };
  for (const std::string& pattern :
       {std::string("(a{1000}){1000}"), std::string("a{99999999999999999999}"),
        repeated("a", 100'000), repeated("(", 5000) + repeated(")", 5000), repeated("(", 5000),
        repeated("[", 3000), repeated("a|", 3000), repeated("(a*)*", 1000), std::string("(a)\\\\1"),
        std::string("\\\\"), std::string("[[:none:]]"), std::string("[\\377-\\200]"),
        std::string("((a{40}){40}){40}")}) {
    const std::string outcome = matches(pattern);
    EXPECT_TRUE(outcome.starts_with("Error in a regular expression \"")) << outcome;
  }
  for (const char* const pattern : {"(a*)*b", "(a|a)*b", "(a|aa)+b", "(.*)*.*[^a]b"}) {
    EXPECT_EQ(matches(pattern), "true") << pattern;
  }
  expect("true", "card PP\"(a*)*|(\\177|q)+\" = 2");
}

}  // namespace
}  // namespace vorel::reachlang
