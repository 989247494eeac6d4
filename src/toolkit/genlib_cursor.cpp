#include "toolkit/genlib_cursor.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cmath>

#include "base/messages.h"

namespace vorel::toolkit {
namespace {

constexpr std::size_t largest_excerpt = 60;
constexpr std::string_view blanks = " \t\r\n\v\f";
constexpr std::string_view ends_of_word = " \t\r\n\v\f#";
constexpr std::string_view ends_of_name = " \t\r\n\v\f#!'*&+|^()=;\"";

bool is_printable(char c) { return static_cast<unsigned char>(c) >= 0x20 && c != 0x7F; }

}  // namespace

GenlibCursor::GenlibCursor(std::string_view text, std::string_view name)
    : text_{text}, rest_{text}, name_{name} {
  if (rest_.starts_with("\xEF\xBB\xBF")) rest_.remove_prefix(3);
  skip_gaps();
}

// Bytes that would upset a terminal become \xNN; long texts are cut.
std::string GenlibCursor::quoted(std::string_view part) {
  std::string shown = "'";
  for (const char c : part.substr(0, largest_excerpt)) {
    if (is_printable(c) && static_cast<unsigned char>(c) < 0x80) {
      shown += c;
    } else {
      shown +=
          base::format_message("\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
  }
  return shown + (part.size() > largest_excerpt ? "...'" : "'");
}

void GenlibCursor::skip_gaps() {
  for (;;) {
    rest_.remove_prefix(std::min(rest_.size(), rest_.find_first_not_of(blanks)));
    if (!at('#')) return;
    rest_.remove_prefix(std::min(rest_.size(), rest_.find_first_of("\r\n")));
  }
}

void GenlibCursor::skip(std::size_t size) {
  assert(size <= rest_.size());
  rest_.remove_prefix(size);
  skip_gaps();
}

bool GenlibCursor::at_name() const {
  if (at_end()) return false;
  const char c = rest_.front();
  return c == '"' || (is_printable(c) && ends_of_name.find(c) == std::string_view::npos);
}

bool GenlibCursor::accept(char c) {
  if (!at(c)) return false;
  skip(1);
  return true;
}

std::string_view GenlibCursor::word_here() const {
  return rest_.substr(0, rest_.find_first_of(ends_of_word));
}

// Takes so many characters, or what is in quotes instead.
bool GenlibCursor::take_text(std::size_t size, std::string_view& taken, std::string_view expected) {
  if (at('"')) {
    size = rest_.find_first_of("\"\r\n", 1);
    if (size == std::string_view::npos || rest_[size] != '"') {
      return fail_expected("'\"' at the end of a name that starts with it");
    }
    taken = rest_.substr(1, size++ - 1);
  } else {
    taken = rest_.substr(0, size);
  }
  if (taken.empty() || !std::ranges::all_of(taken, is_printable)) return fail_expected(expected);
  skip(std::min(size, rest_.size()));
  return true;
}

bool GenlibCursor::take_word(std::string_view& word, std::string_view expected) {
  return take_text(word_here().size(), word, expected);
}

bool GenlibCursor::take_name(std::string_view& name, std::string_view expected) {
  if (!at_name()) return fail_expected(expected);
  return take_text(rest_.find_first_of(ends_of_name), name, expected);
}

bool GenlibCursor::take_number(double& number, double lower_bound, std::string_view expected) {
  const std::string_view word = word_here();
  const char* const word_end = word.data() + word.size();
  const auto [end, error] = std::from_chars(word.data(), word_end, number);
  if (error != std::errc() || end != word_end || !std::isfinite(number) || number < lower_bound) {
    return fail_expected(expected);
  }
  skip(word.size());
  return true;
}

bool GenlibCursor::fail_expected(std::string_view expected) const {
  return fail_expected(expected, rest_.substr(0, std::max<std::size_t>(1, word_here().size())));
}

bool GenlibCursor::fail_expected(std::string_view expected, std::string_view found) const {
  const std::string shown = found.empty() ? "the end of the text" : quoted(found);
  return fail_at(found, std::string("expected ").append(expected) + ", found " + shown);
}

bool GenlibCursor::fail_at(std::string_view part, std::string_view fault) const {
  assert(text_.data() <= part.data() && part.data() <= text_.data() + text_.size());
  const auto line = 1 + std::count(text_.data(), part.data(), '\n');
  base::note_silent_failure(
      (std::string(name_) + ", line " + std::to_string(line) + ": ").append(fault));
  return false;
}

}  // namespace vorel::toolkit
