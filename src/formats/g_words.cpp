#include "formats/g_words.h"

#include <algorithm>
#include <cassert>

namespace vorel::formats {
namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }
bool is_line_end(char c) { return c == '\n' || c == '\r'; }
bool is_digit(char c) { return '0' <= c && c <= '9'; }

}  // namespace

GNumbered split_number(std::string_view text) {
  const bool has_brackets = text.ends_with(')');
  const std::size_t opening = text.rfind(has_brackets ? '(' : '=');
  if (opening == std::string_view::npos) return {text, {}};
  const std::string_view number =
      text.substr(opening + 1, text.size() - opening - (has_brackets ? 2 : 1));
  if (!std::ranges::all_of(number, is_digit)) return {text, {}};
  return {number.empty() ? text : text.substr(0, opening), number};
}

GWords::GWords(const base::SourceText& source)
    : source_{source},
      text_{source.text()},
      at_{source.text().starts_with("\xEF\xBB\xBF") ? std::size_t{3} : 0} {}

std::size_t GWords::after_blanks(std::size_t offset) const {
  while (is_blank(at(offset))) ++offset;
  return offset;
}

std::size_t GWords::after_line_end(std::size_t offset) const {
  assert(is_line_end(at(offset)));
  return std::min(text_.size(), offset + (text_.substr(offset).starts_with("\r\n") ? 2 : 1));
}

std::size_t GWords::end_of_line(std::size_t offset) const {
  return std::min(text_.size(), text_.find_first_of("\r\n", offset));
}

// A backslash with nothing behind it on its line.
bool GWords::is_continuation(std::size_t offset) const {
  return at(offset) == '\\' && is_line_end(at(after_blanks(offset + 1)));
}

bool GWords::ends_word(std::size_t offset) const {
  const char c = at(offset);
  return is_blank(c) || is_line_end(c) || c == '#' || is_continuation(offset);
}

// Behind the ">" of "<a+, b->"; `start` itself if the line has none. The line is searched in vain
// only once.
std::size_t GWords::end_of_pair(std::size_t start) {
  if (start < no_pair_before_) return start;
  const std::size_t end = text_.find_first_of(">\r\n#", start);
  if (at(end) == '>') return end + 1;
  no_pair_before_ = std::min(end, text_.size());
  return start;
}

std::string_view GWords::without_blanks(std::string_view text) {
  if (std::ranges::none_of(text, is_blank)) return text;
  std::string& changed = changed_.emplace_back(text);
  std::erase_if(changed, is_blank);
  return changed;
}

bool GWords::take_word(std::vector<GWord>& words) {
  const std::size_t start = at_;
  if (at(at_) == '=') ++at_;  // of a marking, as the bracket, which need no blanks behind them
  if (at(at_) == '{') ++at_;
  if (at(at_) == '<') at_ = end_of_pair(at_);
  const bool is_keyword = words.empty() && at(start) == '.';
  while (!ends_word(at_) && !(is_keyword && at(at_) == '{')) ++at_;
  assert(at_ > start && at_ <= text_.size());
  const GWord word{without_blanks(text_.substr(start, at_ - start)), start};
  words.push_back(word);
  failed_ = base::has_control_character(word.text);
  return !failed_ || source_.report_expected(start, "a name of printable characters", word.text);
}

bool GWords::next_line(std::vector<GWord>& words) {
  words.clear();
  for (;;) {
    at_ = after_blanks(at_);
    if (at_ >= text_.size()) return !words.empty();
    if (is_line_end(at(at_))) {
      at_ = after_line_end(at_);
      if (!words.empty()) return true;
    } else if (at(at_) == '#') {
      at_ = end_of_line(at_);
    } else if (is_continuation(at_)) {
      at_ = after_line_end(after_blanks(at_ + 1));
    } else if (!take_word(words)) {
      return false;
    }
  }
}

// A number may start with a point, too.
void GWords::skip_rows() {
  while (at_ < text_.size()) {
    const std::size_t start = after_blanks(at_);
    if (at(start) == '.' && !is_digit(at(start + 1))) return;
    at_ = end_of_line(at_);
    if (at_ < text_.size()) at_ = after_line_end(at_);
  }
}

std::size_t GWords::next_offset() const {
  for (std::size_t offset = at_; offset < text_.size(); ++offset) {
    if (at(offset) == '#') offset = end_of_line(offset);
    if (!is_blank(at(offset)) && !is_line_end(at(offset))) return offset;
  }
  return text_.size();
}

}  // namespace vorel::formats
