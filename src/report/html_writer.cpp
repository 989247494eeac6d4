#include "report/html_writer.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "report/svg_text.h"

namespace vorel::report {
namespace {

std::string text_of(std::string_view text) {
  // Lines and tabs of a listing stay.
  std::string result;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\n\t"), text.size());
    result += escaped(printable(text.substr(0, end)));
    if (end < text.size()) result += text[end];
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return result;
}

}  // namespace

HtmlWriter::Element HtmlWriter::in(std::string_view name, std::string_view attributes) {
  sink_ << '<' << name;
  if (!attributes.empty()) sink_ << ' ' << attributes;
  sink_ << '>';
  return {*this, name};
}

void HtmlWriter::add(std::string_view name, std::string_view attributes, std::string_view text) {
  const Element element = in(name, attributes);
  sink_ << text_of(text);
}

void HtmlWriter::text(std::string_view text) { sink_ << text_of(text); }

void HtmlWriter::end(std::string_view name) {
  // Nothing between words of a line.
  constexpr std::array<std::string_view, 8> within_lines = {"a",    "b",      "code", "data",
                                                            "span", "strong", "pre",  "small"};
  sink_ << "</" << name << '>';
  if (std::ranges::find(within_lines, name) == within_lines.end()) sink_ << '\n';
}

void HtmlWriter::count(std::string_view pointer, std::uint64_t number) {
  const std::string exact = std::to_string(number);
  // Groups of three digits, with thin spaces, which do not break.
  std::string shown;
  for (std::size_t i = 0; i < exact.size(); ++i) {
    if (i > 0 && (exact.size() - i) % 3 == 0) shown += "\u202f";
    shown += exact[i];
  }
  figure(pointer, exact, shown);
}

void HtmlWriter::decimal(std::string_view pointer, double number, std::string_view shown) {
  std::array<char, 32> digits{};
  const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  figure(pointer, {digits.data(), static_cast<std::size_t>(end - digits.data())}, shown);
}

void HtmlWriter::word(std::string_view pointer, std::string_view word) {
  figure(pointer, word, word);
}

void HtmlWriter::figure(std::string_view pointer, std::string_view exact, std::string_view shown) {
  sink_ << "<data data-json=\"" << pointer << "\" value=\"" << escaped(printable(exact)) << "\">"
        << text_of(shown) << "</data>";
}

}  // namespace vorel::report
