#include "resolution/coefficients.h"

#include <cassert>
#include <optional>
#include <string>

#include "base/messages.h"

namespace vorel::resolution {
namespace {

// What wraps is computed unsigned; the conversion back is defined.
std::int32_t wrapped(std::uint32_t value) { return static_cast<std::int32_t>(value); }
std::uint32_t bits(std::int32_t value) { return static_cast<std::uint32_t>(value); }

// The divisor is not 0. The quotient by -1 is the negation, which wraps for the least number.
std::int32_t quotient(std::int32_t a, std::int32_t b) {
  assert(b != 0);
  return b == -1 ? wrapped(0 - bits(a)) : a / b;
}
std::int32_t remainder(std::int32_t a, std::int32_t b) {
  assert(b != 0);
  return b == -1 ? 0 : a % b;
}

void report(std::string_view message, std::string_view context) {
  base::print_error(std::string("bad coefficient option: ")
                        .append(message)
                        .append(" when parsing ")
                        .append(context));
}

std::uint32_t dummy_count(const net::Stg& stg) {
  assert(stg.internals_end <= stg.signals.size());
  return static_cast<std::uint32_t>(stg.signals.size()) - stg.internals_end;
}

std::optional<std::uint32_t> macro_value(char letter, const net::Stg& stg) {
  assert(stg.inputs_end <= stg.outputs_end && stg.outputs_end <= stg.internals_end);
  switch (letter) {
    case 'i':
      return stg.inputs_end;
    case 'o':
      return stg.outputs_end - stg.inputs_end;
    case 'I':
      return stg.internals_end - stg.outputs_end;
    case 'd':
      return dummy_count(stg);
    case 's':
      return stg.internals_end;
    case 'p':
      return static_cast<std::uint32_t>(stg.places.size());
    case 't':
      return static_cast<std::uint32_t>(stg.transitions.size());
    default:
      return std::nullopt;
  }
}

constexpr char number_token = 'n';  // the other tokens are their own characters
constexpr char end_token = '\0';
constexpr std::string_view operator_tokens = "+-*/%()";

struct Token {
  char kind;
  std::int32_t value;  // of a number
};

class Scanner {
 public:
  Scanner(std::string_view text, const net::Stg& stg) : text_{text}, stg_{stg} {}

  Token next();
  std::string context() const {
    return std::string(text_.substr(0, position_)) + "<<<ERROR>>>" +
           std::string(text_.substr(position_));
  }
  bool failed() const { return failed_; }

 private:
  bool at_end() const { return position_ == text_.size(); }
  Token number();
  Token macro();
  Token fail(std::string_view message);

  std::string_view text_;
  const net::Stg& stg_;
  std::size_t position_ = 0;
  bool failed_ = false;
};

// A wrong character ends the input: the parser sees the end wherever it stands.
Token Scanner::fail(std::string_view message) {
  base::print_error(message);
  failed_ = true;
  return {end_token, 0};
}

Token Scanner::number() {
  std::uint32_t value = 0;
  while (!at_end() && '0' <= text_[position_] && text_[position_] <= '9') {
    value = 10 * value + static_cast<std::uint32_t>(text_[position_++] - '0');
  }
  return {number_token, wrapped(value)};
}

Token Scanner::macro() {
  assert(text_[position_] == '#');
  if (++position_ == text_.size()) return fail("invalid token: #");
  const auto value = macro_value(text_[position_++], stg_);
  if (!value) return fail("invalid token: #");
  return {number_token, wrapped(*value)};
}

Token Scanner::next() {
  if (failed_) return {end_token, 0};
  while (!at_end() && text_[position_] == ' ') ++position_;
  if (at_end()) return {end_token, 0};
  const char c = text_[position_];
  if ('0' <= c && c <= '9') return number();
  if (c == '#') return macro();
  ++position_;
  if (operator_tokens.find(c) != std::string_view::npos) return {c, 0};
  return fail(std::string("incorrect character: ") + c);
}

std::string token_name(char kind) {
  assert(kind == end_token || kind == number_token ||
         operator_tokens.find(kind) != operator_tokens.npos);
  if (kind == end_token) return "$end";
  if (kind == number_token) return "NUM";
  return std::string("'") + kind + "'";
}

// One function per rule; each gives false after a reported error. A token is only scanned when it
// is needed, so that an error is marked right behind its cause.
class ExpressionParser {
 public:
  ExpressionParser(std::string_view text, const net::Stg& stg) : scanner_{text, stg} {}

  std::optional<std::int32_t> answer();

 private:
  bool expression(std::int32_t& value);
  bool term(std::int32_t& value);
  bool factor(std::int32_t& value);
  bool parenthesised(std::int32_t& value);
  bool divide(char operation, std::int32_t& left, std::int32_t right);

  Token peek() {
    if (!lookahead_) lookahead_ = scanner_.next();
    return *lookahead_;
  }
  void advance() {
    assert(lookahead_ && "only what was seen is passed over");
    lookahead_.reset();
  }
  bool fail(std::string_view message) {
    report(message, scanner_.context());
    return false;
  }
  bool unexpected(std::string_view expected) {
    return fail("syntax error, unexpected " + token_name(peek().kind) + std::string(expected));
  }

  // Deep enough for any text written by hand, shallow enough for any stack.
  static constexpr int deepest = 1000;

  Scanner scanner_;
  std::optional<Token> lookahead_;
  int depth_ = 0;
};

bool ExpressionParser::divide(char operation, std::int32_t& left, std::int32_t right) {
  if (right == 0) return fail("division by 0");
  left = operation == '/' ? quotient(left, right) : remainder(left, right);
  return true;
}

bool ExpressionParser::parenthesised(std::int32_t& value) {
  if (!expression(value)) return false;
  if (peek().kind != ')') return unexpected("");
  advance();
  return true;
}

// factor = NUM | "-" factor | "(" expression ")" .
bool ExpressionParser::factor(std::int32_t& value) {
  const Token token = peek();
  if (token.kind == number_token) {
    value = token.value;
    advance();
    return true;
  }
  if (token.kind != '-' && token.kind != '(') return unexpected(", expecting NUM or '-' or '('");
  if (depth_ == deepest) return fail("memory exhausted");
  advance();
  ++depth_;
  const bool parsed = token.kind == '(' ? parenthesised(value) : factor(value);
  --depth_;
  if (parsed && token.kind == '-') value = wrapped(0 - bits(value));
  return parsed;
}

// term = factor { ( "*" | "/" | "%" ) factor } .
bool ExpressionParser::term(std::int32_t& value) {
  if (!factor(value)) return false;
  for (char operation = peek().kind; operation == '*' || operation == '/' || operation == '%';
       operation = peek().kind) {
    advance();
    std::int32_t right = 0;
    if (!factor(right)) return false;
    if (operation == '*') {
      value = wrapped(bits(value) * bits(right));
    } else if (!divide(operation, value, right)) {
      return false;
    }
  }
  return true;
}

// expression = term { ( "+" | "-" ) term } .
bool ExpressionParser::expression(std::int32_t& value) {
  if (!term(value)) return false;
  for (char operation = peek().kind; operation == '+' || operation == '-';
       operation = peek().kind) {
    advance();
    std::int32_t right = 0;
    if (!term(right)) return false;
    value = wrapped(operation == '+' ? bits(value) + bits(right) : bits(value) - bits(right));
  }
  return true;
}

// answer = expression $end .
std::optional<std::int32_t> ExpressionParser::answer() {
  std::int32_t value = 0;
  if (!expression(value)) return std::nullopt;
  if (peek().kind != end_token) {
    unexpected(", expecting $end");
    return std::nullopt;
  }
  assert(depth_ == 0 && "every parenthesis is closed");
  if (scanner_.failed()) return std::nullopt;
  return value;
}

constexpr CoefficientRow coefficients[] = {
    {"csc", &CoefficientTexts::csc, "coeff_CSC_cores"},
    {"usc", &CoefficientTexts::usc, "coeff_USC_cores"},
    {"del", &CoefficientTexts::del, "coeff_delay"},
    {"trig", &CoefficientTexts::trig, "coeff_logic"},
    {"seq", &CoefficientTexts::seq, "coeff_seq_insertions"},
    {"conc", &CoefficientTexts::conc, "coeff_conc_insertions"},
    {"lock", &CoefficientTexts::lock, "coeff_non_locked_signals"},
};

}  // namespace

std::span<const CoefficientRow> coefficient_table() { return coefficients; }

std::int32_t evaluate(std::string_view text, const net::Stg& stg) {
  const auto value = ExpressionParser(text, stg).answer();
  if (!value) return 0;
  if (*value < 0) {
    report("coefficient must be non-negative", text);
    return 0;
  }
  return *value;
}

void evaluate_coefficients(const CoefficientTexts& texts, const net::Stg& stg,
                           base::Params& params) {
  for (const CoefficientRow& row : coefficient_table()) {
    params.set(row.key, evaluate(texts.*row.text, stg));
  }
}

}  // namespace vorel::resolution
