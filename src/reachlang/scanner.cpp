#include "reachlang/scanner.h"

#include <algorithm>
#include <cassert>
#include <functional>

#include "base/messages.h"

namespace vorel::reachlang {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_octal(char c) { return c >= '0' && c <= '7'; }
bool is_hexadecimal(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_line_end(char c) { return c == '\n' || c == '\r'; }

unsigned value_of_digit(char c) {
  if (is_digit(c)) return static_cast<unsigned>(c - '0');
  return static_cast<unsigned>((c | 0x20) - 'a') + 10;
}

// How many characters at the start of the text satisfy the predicate.
template <class Predicate>
std::size_t length_of(std::string_view text, Predicate predicate) {
  return static_cast<std::size_t>(std::ranges::find_if_not(text, predicate) - text.begin());
}

// The first characters of what runs away, on one line.
std::string beginning_of(std::string_view text) {
  constexpr std::size_t shown = 20;
  return std::string(text.substr(0, std::min(shown, length_of(text, std::not_fn(is_line_end))))) +
         "...";
}

// A control character by the letter of its escape; the letter itself if it is no such letter.
char control_character(char letter) {
  constexpr std::string_view letters = "abfnrtv";
  constexpr std::string_view characters = "\a\b\f\n\r\t\v";
  const std::size_t i = letters.find(letter);
  return i == std::string_view::npos ? letter : characters[i];
}

}  // namespace

bool Scanner::next(Token& token) {
  if (!skip_blanks_and_comments()) return false;
  token = Token{};
  token.position = position_;
  if (at_end()) return true;
  const char c = look();
  if (c == '"') return scan_string(token);
  if (is_digit(c)) return scan_number(token);
  if (c == '$' || c == '@' || c == '\'') {
    scan_repeated(token, c == '$'   ? TokenKind::state
                         : c == '@' ? TokenKind::enabled
                                    : TokenKind::next);
  } else if (is_letter(c) && !rest().starts_with("s.t.")) {
    scan_word(token);
  } else {
    scan_sign(token);
  }
  return true;
}

bool Scanner::skip_blanks_and_comments() {
  while (!at_end()) {
    const char c = look();
    if (c == ' ' || c == '\t' || is_line_end(c)) {
      advance(1);
    } else if (rest().starts_with("//")) {
      advance(length_of(rest(), std::not_fn(is_line_end)));
    } else if (rest().starts_with("/*")) {
      if (!skip_block_comment()) return false;
    } else {
      break;
    }
  }
  return true;
}

bool Scanner::skip_block_comment() {
  const std::size_t end = text_.find("*/", offset_ + 2);
  if (end == std::string_view::npos) {
    base::print_error("run-away comment: " + beginning_of(rest()) + located_at(position_));
    return false;
  }
  advance(end + 2 - offset_);
  return true;
}

bool Scanner::scan_number(Token& token) {
  constexpr std::uint64_t limit = INT64_MAX;
  token.kind = TokenKind::number;
  const std::size_t length = length_of(rest(), is_digit);
  for (const char c : rest().substr(0, length)) {
    const std::uint64_t digit = value_of_digit(c);
    if (token.number > (limit - digit) / 10) {
      base::print_error("incorrect syntax of the expression: the number " + beginning_of(rest()) +
                        " is too large" + located_at(position_));
      return false;
    }
    token.number = token.number * 10 + digit;
  }
  advance(length);
  return true;
}

void Scanner::scan_word(Token& token) {
  const std::size_t length = length_of(rest(), [](char c) { return is_letter(c) || is_digit(c); });
  token.text = rest().substr(0, length);
  token.kind = kind_of_word(token.text);
  advance(length);
}

void Scanner::scan_repeated(Token& token, TokenKind kind) {
  token.kind = kind;
  token.number = length_of(rest(), [first = look()](char c) { return c == first; });
  advance(token.number);
}

void Scanner::scan_sign(Token& token) {
  std::size_t length = 1;
  token.kind = kind_of_sign(rest(), length);
  if (token.kind == TokenKind::end) token.kind = TokenKind::unknown;
  token.text = rest().substr(0, length);
  advance(length);
}

bool Scanner::scan_string(Token& token) {
  token.kind = TokenKind::text;
  const std::string_view whole = rest();
  advance(1);
  while (look() != '"') {
    const bool runs_away =
        at_end() || is_line_end(look()) || (look() == '\\' && rest().size() == 1);
    if (runs_away) {
      base::print_error("run-away quoted name: " + beginning_of(whole) +
                        located_at(token.position));
      return false;
    }
    if (look() == '\\') {
      if (!scan_escape(token.text)) return false;
    } else {
      token.text += look();
      advance(1);
    }
  }
  advance(1);
  return true;
}

// The part from the backslash on. A sequence that is no escape stands for its second character.
bool Scanner::scan_escape(std::string& result) {
  const char c = look(1);
  const std::string_view tail = rest().substr(1);
  if (is_octal(c)) {
    return append_numbered(result, 1, std::min<std::size_t>(3, length_of(tail, is_octal)), 8);
  }
  const std::size_t hexadecimals = c == 'x' ? length_of(tail.substr(1), is_hexadecimal) : 0;
  if (hexadecimals > 0) return append_numbered(result, 2, hexadecimals, 16);
  if (is_digit(c)) return append_numbered(result, 1, 1, 8);
  const std::size_t length = tail.starts_with("\r\n") ? 3 : 2;
  if (!is_line_end(c)) result += control_character(c);
  advance(length);
  return true;
}

bool Scanner::append_numbered(std::string& result, std::size_t prefix, std::size_t digits,
                              unsigned base) {
  unsigned value = 0;
  bool is_bad = false;
  for (const char c : rest().substr(prefix, digits)) {
    const unsigned digit = value_of_digit(c);
    is_bad = is_bad || digit >= base;
    value = std::min(value * base + digit, 256u);
  }
  if (is_bad || value > 255) {
    base::print_error("bad escape sequence in a std::string: " +
                      std::string(rest().substr(0, prefix + std::min<std::size_t>(digits, 20))) +
                      located_at(position_));
    return false;
  }
  result += static_cast<char>(value);
  advance(prefix + digits);
  return true;
}

void Scanner::advance(std::size_t count) {
  assert(count <= rest().size());
  for (const char c : rest().substr(0, count)) {
    const bool follows_return = offset_ > 0 && text_[offset_ - 1] == '\r';
    ++offset_;
    if (!is_line_end(c)) {
      ++position_.column;
    } else {
      position_.column = 1;
      if (c == '\r' || !follows_return) ++position_.line;
    }
  }
}

}  // namespace vorel::reachlang
