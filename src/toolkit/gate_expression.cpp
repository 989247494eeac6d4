#include "toolkit/gate_expression.h"

#include <unordered_map>

namespace vorel::toolkit {
namespace {

class EquationParser {
 public:
  EquationParser(GenlibCursor& cursor, GateEquation& equation)
      : cursor_{cursor}, equation_{equation} {}

  // equation = name "=" sum ";" .
  bool run() {
    return cursor_.take_name(equation_.output, "the name of the output") && cursor_.expect('=') &&
           sum() && cursor_.expect(';');
  }

 private:
  // sum = exclusive { ( "+" | "|" ) exclusive } .
  bool sum() {
    if (!exclusive()) return false;
    while (cursor_.accept('+') || cursor_.accept('|')) {
      if (!exclusive()) return false;
      add(GateOperator::disjunction);
    }
    return true;
  }

  // exclusive = product { "^" product } .
  bool exclusive() {
    if (!product()) return false;
    while (cursor_.accept('^')) {
      if (!product()) return false;
      add(GateOperator::exclusive_or);
    }
    return true;
  }

  // product = factor { [ "*" | "&" ] factor } .
  bool product() {
    if (!factor()) return false;
    while (cursor_.accept('*') || cursor_.accept('&') || at_factor()) {
      if (!factor()) return false;
      add(GateOperator::conjunction);
    }
    return true;
  }

  // A keyword is no factor here: what is missing is the ";" before it.
  bool at_factor() const {
    if (cursor_.at_word("GATE") || cursor_.at_word("LATCH") || cursor_.at_word("PIN")) return false;
    return cursor_.at_name() || cursor_.at('!') || cursor_.at('(');
  }

  // factor = { "!" } ( name | "(" sum ")" ) { "'" } .
  bool factor() {
    bool is_negated = false;
    while (cursor_.accept('!')) is_negated = !is_negated;
    if (!(cursor_.accept('(') ? rest_of_bracket() : literal())) return false;
    while (cursor_.accept('\'')) is_negated = !is_negated;
    if (is_negated) add(GateOperator::negation);
    return true;
  }

  bool rest_of_bracket() {
    if (++depth_ > most_nested_brackets) {
      return cursor_.fail_expected("no more than " + std::to_string(most_nested_brackets) +
                                   " nested brackets");
    }
    if (!sum() || !cursor_.expect(')')) return false;
    --depth_;
    return true;
  }

  bool literal() {
    const bool is_quoted = cursor_.at('"');
    std::string_view name;
    if (!cursor_.take_name(name, "a pin, a constant or '('")) return false;
    if (!is_quoted && (name == "CONST0" || name == "0")) {
      add(GateOperator::constant_0);
    } else if (!is_quoted && (name == "CONST1" || name == "1")) {
      add(GateOperator::constant_1);
    } else {
      return pin(name);
    }
    return true;
  }

  bool pin(std::string_view name) {
    const auto [found, is_new] = number_of_.emplace(name, equation_.pins.size());
    if (is_new) equation_.pins.push_back(name);
    if (equation_.pins.size() > most_gate_pins) {
      return cursor_.fail_at(
          name, "expected no more than " + std::to_string(most_gate_pins) + " pins of a gate");
    }
    equation_.function.steps.push_back({GateOperator::pin, found->second});
    return true;
  }

  void add(GateOperator op) { equation_.function.steps.push_back({op}); }

  GenlibCursor& cursor_;
  GateEquation& equation_;
  std::unordered_map<std::string_view, std::uint32_t> number_of_;
  std::uint32_t depth_ = 0;
};

}  // namespace

bool parse_gate_equation(GenlibCursor& cursor, GateEquation& equation) {
  return EquationParser(cursor, equation).run();
}

}  // namespace vorel::toolkit
