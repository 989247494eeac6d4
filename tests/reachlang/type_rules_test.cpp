// The types of all operators, and what is said where they do not fit.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>

#include "reachlang/parser.h"
#include "support/caught_messages.h"

namespace vorel::reachlang {
namespace {

// What the parser says of a text; nothing if it is a property.
std::string fault_in(const std::string& text) {
  const support::CaughtMessages messages;
  const auto property = parse_reach(text);
  EXPECT_EQ(property == nullptr, !messages.text().empty()) << text;
  return messages.text();
}

std::string fault_at(std::size_t column, const std::string& message) {
  return "\nError: incorrect syntax of the expression: " + message +
         " (located at line 1, column " + std::to_string(column) + ")\n";
}

// An expression of each type: a small letter is a base type, a capital a set of it.
const std::map<std::string, std::string> samples = {
    {"c", "C 1"},         {"e", "E 1"},        {"p", "P 1"},          {"t", "T 1"},
    {"s", "S 1"},         {"n", "1"},          {"a", "\"a\""},        {"b", "true"},
    {"f", "fail \"f\""},  {"C", "CONDITIONS"}, {"E", "EVENTS"},       {"P", "PLACES"},
    {"T", "TRANSITIONS"}, {"S", "SIGNALS"},    {"N", "{1}"},          {"A", "{\"a\"}"},
    {"B", "{true}"},      {"NN", "{{1}}"},     {"CC", "{CONDITIONS}"}};

bool is_set(const std::string& type) { return type.front() < 'a'; }

TEST(TypeRules, PrefixOperatorsTakeWhatTheirTableSays) {
  struct Row {
    std::string op, operands, results;  // by letter
    std::string expected;
  };
  const std::string any_node = "condition, event, place, transition or signal";
  const std::string linked = "condition, event, place, transition or set thereof";
  const Row table[] = {{"$", "ceps", "bbbb", "condition, event, place or signal"},
                       {"$$$", "ceps", "bbbb", "condition, event, place or signal"},
                       {"@", "ets", "bbb", "event, transition or signal"},
                       {"@@", "ets", "bbb", "event, transition or signal"},
                       {"C", "n", "c", "numerical"},
                       {"E", "n", "e", "numerical"},
                       {"P", "na", "pp", "numerical or string"},
                       {"T", "na", "tt", "numerical or string"},
                       {"S", "na", "ss", "numerical or string"},
                       {"PP", "a", "P", "string"},
                       {"TT", "a", "T", "string"},
                       {"SS", "a", "S", "string"},
                       {"#", "cepts", "nnnnn", any_node},
                       {"name", "pts", "aaa", "place, transition or signal"},
                       {"string", "ceptsnabCEPTSNAB", "aaaaaaaaaaaaaaaa", "other than fail"},
                       {"len", "a", "n", "string"},
                       {"downclose", "eE", "EE", "event or set thereof"},
                       {"trig", "e", "E", "event"},
                       {"is_init", "cepts", "bbbbb", any_node},
                       {"is_cutoff", "e", "b", "event"},
                       {"is_input", "s", "b", "signal"},
                       {"is_output", "s", "b", "signal"},
                       {"is_internal", "s", "b", "signal"},
                       {"is_dummy", "s", "b", "signal"},
                       {"is_local", "s", "b", "signal"},
                       {"is_plus", "et", "bb", "event or transition"},
                       {"is_minus", "et", "bb", "event or transition"},
                       {"~", "b", "b", "bool"},
                       {"-", "n", "n", "numerical"},
                       {"pre", "ceptCEPT", "ECTPECTP", linked},
                       {"post", "ceptCEPT", "ECTPECTP", linked},
                       {"cond", "pP", "CC", "place or set thereof"},
                       {"ev", "tsTS", "EEEE", "transition, signal or set thereof"},
                       {"pls", "cC", "pP", "condition or set thereof"},
                       {"tran", "esES", "tTTT", "event, signal or set thereof"},
                       {"sig", "etET", "ssSS", "event, transition or set thereof"},
                       {"card", "CEPTSNAB", "nnnnnnnn", "set"},
                       {"fail", "a", "f", "string"}};
  const std::map<std::string, std::string> other_names = {{"-", "unary -"}, {"pls", "places"}};
  for (const Row& row : table) {
    const auto other = other_names.find(row.op);
    const std::string name = other == other_names.end() ? row.op : other->second;
    const std::size_t behind = row.op.size() + 2;
    for (const auto& [type, sample] : samples) {
      const std::size_t found = row.operands.find(type);
      const std::string text = row.op + ' ' + sample;
      if (found != std::string::npos) {
        if (row.op == "fail") continue;
        const std::string result(1, row.results[found]);
        const bool is_atom = row.op[0] == '$' || row.op[0] == '@';
        EXPECT_EQ(fault_in(is_atom ? text : text + " = " + samples.at(result)), "") << text;
      } else if (!(is_set(type) && type.size() > 1 && (row.op == "card" || row.op == "string"))) {
        EXPECT_EQ(fault_in(text),
                  fault_at(behind, "Type mismatch in the operand of '" + name +
                                       "': expression of type " + row.expected + " is expected"));
      }
    }
    if (row.op != "~") {
      EXPECT_EQ(fault_in(row.op + " $P 1"), fault_at(behind, "Constant expression expected"));
    }
  }
}

TEST(TypeRules, BinaryOperatorsTakeWhatTheirTableSays) {
  struct Row {
    std::string op;
    std::function<bool(const std::string&)> takes;  // two of one type
    std::string expected, result;                   // "": the type of the operands
  };
  const auto of = [](std::string plain, bool sets) {
    return [plain, sets](const std::string& type) {
      return is_set(type) ? sets : plain.find(type) != std::string::npos;
    };
  };
  std::vector<Row> table = {{"+", of("na", true), "numerical, string or set", ""},
                            {"-", of("n", false), "numerical", ""},
                            {"*", of("n", true), "numerical or set", ""},
                            {"/", of("n", false), "numerical", ""},
                            {"%", of("n", false), "numerical", ""},
                            {"\\", of("", true), "set", ""}};
  for (const char* op : {"=", "!=", "<", "<=", ">", ">="}) {
    table.push_back({op, [](const std::string&) { return true; }, "", "b"});
  }
  for (const char* op : {"->", "<->", "&", "|", "^"})
    table.push_back({op, of("b", false), "bool", "b"});
  for (const Row& row : table) {
    const bool is_connective = row.expected == "bool";
    const std::string prefix = "Type mismatch in the operands of '" + row.op + "'";
    for (const auto& [a, left] : samples) {
      for (const auto& [b, right] : samples) {
        if (a == "f" || b == "f") continue;
        const std::string text = '(' + left + ' ' + row.op + ' ' + right + ')';
        const std::size_t sign = left.size() + 3, last = sign + row.op.size() + 1;
        std::string expected;
        if (is_connective && (a != "b" || b != "b")) {
          expected =
              fault_at(a != "b" ? 2 : last, prefix + ": expression of type bool is expected");
        } else if (a != b) {
          expected = fault_at(sign, prefix);
        } else if (!row.takes(a)) {
          expected =
              fault_at(2, prefix + ": expressions of type " + row.expected + " are expected");
        }
        const std::string& result = samples.at(row.result.empty() ? a : row.result);
        EXPECT_EQ(fault_in(text + (expected.empty() ? " = " + result : "")), expected) << text;
      }
    }
    if (!is_connective) {
      const std::string dynamic = "$P 1 " + row.op + " true";
      EXPECT_EQ(fault_in(dynamic), fault_at(1, "Constant expression expected"));
    }
  }
}

TEST(TypeRules, AllOthersNameThePartThatDoesNotFit) {
  const std::string constant = "Constant expression expected";
  const std::string in_operands = "Type mismatch in the operands of ";
  const std::string in_choice = "Type mismatch in '?:': ";
  const std::string in_threshold =
      "Type mismatch in the operands of 'threshold[*]': the operands must be Boolean";
  struct Row {
    std::string text;
    std::size_t column;  // 0: the text is right
    std::string message;
  };
  const Row table[] = {
      {"(S 1)'''& true", 0, ""},
      {"(P 1)''", 1,
       "Type mismatch in the operand of \"''\": expression of type signal is expected"},
      {"($P 1)'", 1, constant},
      {"1 + \"a\" + $P 1 = 1", 3, in_operands + "'+'"},
      {"1 - 2 - 3 - {4} = 1", 11, in_operands + "'-'"},
      {"PLACES * PLACES * {1} = {1}", 17, in_operands + "'*'"},
      {"true + true + 1 = 1", 1,
       in_operands + "'+': expressions of type numerical, string or set are expected"},
      {"true & true & 1 & )", 15, in_operands + "'&': expression of type bool is expected"},
      {"true -> 1 -> true -> 2", 22, in_operands + "'->': expression of type bool is expected"},
      {"PLACES in {PLACES}", 0, ""},
      {"1 in 2", 6, "The second operand of 'in' is not a set"},
      {"1 in {$P 1}", 7, constant},
      {"\"a\"[0..1] + \"a\"[0..] = \"a\"[..1]", 0, ""},
      {"len 1[0..1] = 1", 5,
       "Type mismatch in the operand of '[m..n]': expression of type string is expected"},
      {"\"a\"[\"\"..1] = \"\"", 5,
       "Type mismatch in an index of '[m..n]': expressions of type numerical are expected"},
      {"len 1[0..] = 1", 5,
       "Type mismatch in the operand of '[m..]': expression of type string is expected"},
      {"\"a\"[\"\"..] = \"\"", 5,
       "Type mismatch in the index of '[m..]': expression of type numerical is expected"},
      {"len 1[..0] = 1", 5,
       "Type mismatch in the operand of '[..n]': expression of type string is expected"},
      {"\"a\"[..\"\"] = \"\"", 7,
       "Type mismatch in the index of '[..n]': expression of type numerical is expected"},
      {"\"a\"[..$P 1] = \"\"", 7, constant},
      {"{true, $P 1} = {true}", 8, constant},
      {"threshold[1 + 1](true, $P 1) & threshold($P 1)", 0, ""},
      {"threshold[true](true)", 11,
       "Type mismatch in 'threshold[*]': the threshold must be numerical"},
      {"threshold[$P 1](true)", 11, constant},
      {"threshold[2](true, true, P 1)", 26, in_threshold},
      {"1 ? true : false", 1, in_choice + "the condition must be Boolean"},
      {"(true ? 1 : fail \"\") = 1 & (false ? fail \"\" : \"a\") = \"a\"", 0, ""},
      {"true ? 1 : true", 12,
       in_choice + "the 'then' and 'else' expressions must be of the same type"},
      {"$P 1 ? true : false", 0, ""},
      {"let x = 1, y = x + 1, x = \"a\" { x = \"a\" & y = 2 }", 0, ""},
      {"let x = $P 1 { P 1 in {P x} }", 26, constant},
      {"let x = 1 { true } & x = 1", 22, "Undeclared identifier: x"},
      {"xorsum x in {PLACES}, y in x s.t. y in x { $y }", 0, ""},
      {"forall x in PLACES s.t. x { true }", 25,
       "Type mismatch in 's.t.': the condition must be a Boolean expression"},
      {"forall x in PLACES { x }", 22,
       "Type mismatch in 'forall': the body must be a Boolean expression"},
      {"threshold x in PLACES { 1 }", 25,
       "Type mismatch in 'threshold': the body must be a Boolean expression"},
      {"threshold[2] x in PLACES s.t. is_init x { $x }", 0, ""},
      {"gather x in PLACES { $x } = {true}", 22, constant},
      {"gather x in PLACES s.t. is_init x { {x} } = {PLACES}", 0, ""},
      {"let is_ini = 1, T1 = 2, _ = 3 { is_ini + T1 = _ }", 0, ""}};
  for (const Row& row : table) {
    EXPECT_EQ(fault_in(row.text), row.column == 0 ? "" : fault_at(row.column, row.message))
        << row.text;
  }
}

}  // namespace
}  // namespace vorel::reachlang
