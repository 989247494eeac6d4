#include "report/svg_text.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/messages.h"

namespace vorel::report {
namespace {

constexpr std::string_view ellipsis = "\u2026";

struct Character {
  std::uint32_t code = 0;
  std::size_t length = 0;  // in bytes; 0: no UTF-8
};

// The bounds tell overlong forms from the proper ones.
Character multi_byte_character(std::string_view text) {
  struct Form {
    std::uint32_t mask, lead, least;
  };
  constexpr std::array<Form, 3> forms = {
      {{0xE0u, 0xC0u, 0x80u}, {0xF0u, 0xE0u, 0x800u}, {0xF8u, 0xF0u, 0x10000u}}};
  const std::uint32_t lead = static_cast<unsigned char>(text.front());
  for (std::size_t i = 0; i < forms.size(); ++i) {
    if ((lead & forms[i].mask) != forms[i].lead) continue;
    const std::size_t length = i + 2;
    if (text.size() < length) return {};
    std::uint32_t code = lead & ~forms[i].mask;
    for (const char c : text.substr(1, length - 1)) {
      const std::uint32_t byte = static_cast<unsigned char>(c);
      if ((byte & 0xC0u) != 0x80u) return {};
      code = code << 6u | (byte & 0x3Fu);
    }
    const bool is_surrogate = code >= 0xD800u && code <= 0xDFFFu;
    if (code < forms[i].least || code > 0x10FFFFu || is_surrogate) return {};
    return {code, length};
  }
  return {};
}

Character first_character(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {lead, 1};
  return multi_byte_character(text);
}

bool is_within(std::uint32_t code, std::uint32_t first, std::uint32_t last) {
  return first <= code && code <= last;
}

// Controls, marks and embeddings of direction, separators of lines, what is no character.
bool needs_number(std::uint32_t code) {
  return code < 0x20 || is_within(code, 0x7F, 0x9F) || code == 0x61C ||
         is_within(code, 0x200B, 0x200F) || is_within(code, 0x2028, 0x202E) ||
         is_within(code, 0x2060, 0x206F) || code == 0xFEFF || is_within(code, 0xFDD0, 0xFDEF) ||
         (code & 0xFFFEu) == 0xFFFEu;
}

bool is_wide(std::uint32_t code) {
  return is_within(code, 0x1100, 0x115F) || is_within(code, 0x2E80, 0xA4CF) ||
         is_within(code, 0xAC00, 0xD7A3) || is_within(code, 0xF900, 0xFAFF) ||
         is_within(code, 0xFE30, 0xFE6F) || is_within(code, 0xFF00, 0xFF60) ||
         is_within(code, 0x1F300, 0x1FAFF) || is_within(code, 0x20000, 0x3FFFD);
}

// Where each column begins, and behind them the end of the text.
std::vector<std::size_t> column_starts(std::string_view text) {
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = first_character(text.substr(at));
    assert(character.length != 0 && "the text is printable");
    starts.push_back(at);
    if (is_wide(character.code)) starts.push_back(at);
    at += character.length;
  }
  starts.push_back(text.size());
  return starts;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const Character character = first_character(text);
    const auto byte = static_cast<unsigned char>(text.front());
    if (character.length == 0 || (character.length == 1 && needs_number(byte))) {
      result += base::format_message("\\x%02X", static_cast<unsigned>(byte));
    } else if (needs_number(character.code)) {
      result += base::format_message("\\u%04X", character.code);
    } else {
      result += text.substr(0, character.length);
    }
    text.remove_prefix(std::max(character.length, std::size_t{1}));
  }
  return result;
}

std::size_t column_count(std::string_view text) { return column_starts(text).size() - 1; }

std::string shortened(std::string_view text, std::size_t most_columns) {
  assert(most_columns >= 3);
  const std::vector<std::size_t> starts = column_starts(text);
  const std::size_t columns = starts.size() - 1;
  if (columns <= most_columns) return std::string{text};
  const std::size_t tail = most_columns / 3;
  const std::size_t head = most_columns - 1 - tail;
  // A wide character that is cut in two goes to neither side.
  std::size_t tail_start = columns - tail;
  if (starts[tail_start] == starts[tail_start - 1]) ++tail_start;
  std::string result{text.substr(0, starts[head])};
  result += ellipsis;
  result += text.substr(starts[tail_start]);
  return result;
}

std::string escaped(std::string_view text) {
  constexpr std::array<std::pair<char, std::string_view>, 5> escapes = {
      {{'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&#39;"}}};
  std::string result;
  for (const char c : text) {
    const auto* const row =
        std::ranges::find(escapes, c, &std::pair<char, std::string_view>::first);
    if (row == escapes.end()) {
      result += c;
    } else {
      result += row->second;
    }
  }
  return result;
}

}  // namespace vorel::report
