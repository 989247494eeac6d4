#include "base/source_text.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"

namespace vorel::base {
namespace {

constexpr std::size_t largest_excerpt = 60;

bool is_control(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

// All bytes of a character of UTF-8 but the first.
bool continues_character(char c) { return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u; }

}  // namespace

std::string excerpt(std::string_view text) {
  const bool is_cut = text.size() > largest_excerpt;
  std::size_t size = is_cut ? largest_excerpt : text.size();
  // A character of UTF-8 has up to four bytes.
  while (is_cut && size > largest_excerpt - 4 && continues_character(text[size])) --size;
  std::string shown;
  for (const char c : text.substr(0, size)) {
    if (is_control(c)) {
      shown += format_message("\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
    } else {
      shown += c;
    }
  }
  assert(!has_control_character(shown));
  return is_cut ? shown + "..." : shown;
}

std::string quoted(std::string_view text) { return "'" + excerpt(text) + "'"; }

bool has_control_character(std::string_view text) { return std::ranges::any_of(text, is_control); }

std::size_t SourceText::offset_of(std::string_view part) const {
  assert(text_.data() <= part.data() && part.data() <= text_.data() + text_.size());
  return static_cast<std::size_t>(part.data() - text_.data());
}

std::string_view SourceText::rest_of_line(std::size_t offset) const {
  assert(offset <= text_.size());
  const std::string_view rest = text_.substr(offset);
  return rest.substr(0, rest.find_first_of("\r\n"));
}

std::string SourceText::location(std::size_t offset) const {
  assert(offset <= text_.size());
  std::uint64_t line = 1, column = 1;
  for (std::size_t at = 0; at < offset; ++at) {
    const char c = text_[at];
    const bool is_first_of_two = c == '\r' && at + 1 < text_.size() && text_[at + 1] == '\n';
    if (c == '\n' || (c == '\r' && !is_first_of_two)) {
      ++line;
      column = 1;
    } else if (!continues_character(c)) {
      ++column;
    }
  }
  return "(file " + name_ + ", line " + std::to_string(line) + ", column " +
         std::to_string(column) + ")";
}

bool SourceText::report_syntax_error(std::size_t offset, std::string_view fault,
                                     std::string_view found) const {
  const std::string what = offset == text_.size() ? "the end of the file" : quoted(found);
  print_error(
      ("syntax error " + location(offset) + ": ").append(fault).append(", found ").append(what));
  return false;
}

bool SourceText::report_expected(std::size_t offset, std::string_view expected,
                                 std::string_view found) const {
  return report_syntax_error(offset, std::string("expected ").append(expected), found);
}

bool SourceText::report(std::size_t offset, std::string_view text) const {
  print_error(std::string(text).append(" ").append(location(offset)));
  return false;
}

bool SourceText::report_unsafe(std::size_t offset, std::string_view place,
                               std::string_view tokens) const {
  return report(offset, "the net is not safe, place " + excerpt(place) + " has " + excerpt(tokens) +
                            " tokens in the initial marking");
}

void SourceText::warn(std::size_t offset, std::string_view text) const {
  print_warning(std::string(text).append(" ").append(location(offset)));
}

void RepeatedFault::note(std::size_t offset, std::string_view subject) {
  if (count_++ > 0 && offset_ <= offset) return;
  offset_ = offset;
  subject_ = subject;
}

void RepeatedFault::warn(const SourceText& source, std::string_view before,
                         std::string_view after) const {
  if (count_ == 0) return;
  std::string text = std::string(before).append(" " + quoted(subject_));
  if (!after.empty()) text.append(" ").append(after);
  if (count_ > 1) text += ", the first of " + std::to_string(count_) + " such cases";
  source.warn(offset_, text);
}

}  // namespace vorel::base
