#include "formats/xml_text.h"

#include <algorithm>
#include <cassert>

namespace vorel::formats {
namespace {

bool is_control(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 32 || byte == 127;
}

bool is_plain(char c) {
  return !is_control(c) && c != '<' && c != '>' && c != '&' && c != '"' && c != '\'';
}

void add_escaped(base::TextSink& sink, char c) {
  switch (c) {
    case '<':
      sink << "&lt;";
      break;
    case '>':
      sink << "&gt;";
      break;
    case '&':
      sink << "&amp;";
      break;
    case '"':
      sink << "&quot;";
      break;
    case '\'':
      sink << "&apos;";
      break;
    default:
      sink << "&#" << static_cast<unsigned>(static_cast<unsigned char>(c)) << ';';
  }
}

void add_plain_or_escaped(base::TextSink& sink, std::string_view text) {
  while (!text.empty()) {
    const auto plain =
        static_cast<std::size_t>(std::ranges::find_if_not(text, is_plain) - text.begin());
    sink << text.substr(0, plain);
    if (plain == text.size()) return;
    add_escaped(sink, text[plain]);
    text.remove_prefix(plain + 1);
  }
}

}  // namespace

// Parsers drop blanks at the ends of a text, as references they stay.
void add_xml_text(base::TextSink& sink, std::string_view text) {
  assert(text.find('\0') == text.npos);
  if (text.starts_with(' ')) {
    add_escaped(sink, ' ');
    text.remove_prefix(1);
  }
  const bool ends_in_blank = text.ends_with(' ');
  if (ends_in_blank) text.remove_suffix(1);
  add_plain_or_escaped(sink, text);
  if (ends_in_blank) add_escaped(sink, ' ');
}

bool needs_xml_1_1(std::string_view text) {
  return std::ranges::any_of(text, [](char c) {
    return is_control(c) && c != '\t' && c != '\n' && c != '\r' && c != 127;
  });
}

}  // namespace vorel::formats
