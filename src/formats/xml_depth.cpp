#include "formats/xml_depth.h"

#include <array>
#include <cassert>
#include <cstring>
#include <string_view>

namespace vorel::formats {
namespace {

enum CharClass : std::uint8_t { space = 1, ends_name = 2, ends_attribute_name = 4 };

constexpr std::array<std::uint8_t, 256> make_char_classes() {
  std::array<std::uint8_t, 256> classes{};
  for (const char c : {' ', '\t', '\n', '\r'}) {
    classes[static_cast<unsigned char>(c)] = space | ends_name | ends_attribute_name;
  }
  for (const char c : {'/', '>', '?', '\0'}) {
    classes[static_cast<unsigned char>(c)] = ends_name | ends_attribute_name;
  }
  for (const char c : {'<', '=', '!'}) classes[static_cast<unsigned char>(c)] = ends_attribute_name;
  return classes;
}
constexpr auto char_classes = make_char_classes();

bool is(std::uint8_t char_class, char c) {
  return (char_classes[static_cast<unsigned char>(c)] & char_class) != 0;
}

// Every step leaves `at_` behind what it read; false where the parser finds an error.
class DepthScan {
 public:
  explicit DepthScan(const std::string& text)
      : at_{text.data() + (text.starts_with("\xEF\xBB\xBF") ? 3 : 0)},
        end_{text.data() + text.size()} {}

  const char* first_below(std::uint32_t bound) {
    for (std::uint32_t depth = 0; skip_to_tag(depth);) {
      const char* const tag = at_++;
      assert(tag < end_ && *tag == '<');
      bool opened = false;
      if (*at_ == '!' || *at_ == '?') {
        if (!skip_markup()) return nullptr;
      } else if (*at_ == '/') {
        if (depth == 0 || !skip_end_tag()) return nullptr;
        --depth;
      } else if (!skip_start_tag(opened)) {
        return nullptr;
      } else if (depth == bound) {
        return tag;
      } else if (opened) {
        ++depth;
      }
    }
    return nullptr;
  }

 private:
  bool skip_to_tag(std::uint32_t depth) {
    if (depth == 0) {
      skip_spaces();
      return *at_ == '<';
    }
    return (at_ = find('<')) != nullptr;
  }

  // From behind "<": a comment, a character data section, a declaration, an instruction.
  bool skip_markup() {
    const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
    if (rest.starts_with("!--")) return skip_from(3, "-->");
    if (rest.starts_with("![CDATA[")) return skip_from(8, "]]>");
    if (rest.starts_with("!DOCTYPE") && is(space, rest.data()[8])) return skip_doctype();
    if (rest.starts_with("?")) return skip_from(1, "?>");
    return skip_past(">");
  }

  // Brackets nest in the internal subset; ">" ends the declaration only outside of them.
  bool skip_doctype() {
    std::uint32_t open = 0;
    for (at_ += 9; *at_ != '\0'; ++at_) {
      if (*at_ == '[') ++open;
      if (*at_ == ']' && open > 0) --open;
      if (*at_ == '>' && open == 0) return skip_past(">");
    }
    return false;
  }

  // From the slash. Whether the name is that of the start tag does not matter to the depth.
  bool skip_end_tag() {
    assert(*at_ == '/');
    ++at_;
    skip_until(ends_name);
    skip_spaces();
    return skip_char('>');
  }

  bool skip_start_tag(bool& opened) {
    if (is(ends_name, *at_)) return false;
    skip_until(ends_name);
    for (skip_spaces(); !is(ends_attribute_name, *at_); skip_spaces()) {
      if (!skip_attribute()) return false;
    }
    opened = *at_ == '>';
    if (*at_ == '/') ++at_;
    return skip_char('>');
  }

  bool skip_attribute() {
    skip_until(ends_attribute_name);
    skip_spaces();
    if (!skip_char('=')) return false;
    skip_spaces();
    const char quote = *at_;
    if (!skip_char('"') && !skip_char('\'')) return false;
    at_ = find(quote);
    return at_ != nullptr && skip_char(quote);
  }

  void skip_spaces() {
    while (is(space, *at_)) ++at_;
  }
  void skip_until(std::uint8_t char_class) {
    while (!is(char_class, *at_)) ++at_;
  }
  bool skip_char(char c) {
    if (*at_ != c) return false;
    ++at_;
    return true;
  }
  bool skip_from(std::size_t offset, std::string_view closing) {
    at_ += offset;
    assert(at_ <= end_);
    return skip_past(closing);
  }
  bool skip_past(std::string_view closing) {
    const std::string_view rest(at_, static_cast<std::size_t>(end_ - at_));
    const std::size_t found = rest.find(closing);
    if (found == std::string_view::npos) return false;
    at_ += found + closing.size();
    return true;
  }
  const char* find(char c) const {
    return static_cast<const char*>(std::memchr(at_, c, static_cast<std::size_t>(end_ - at_)));
  }

  const char* at_;
  const char* const end_;  // the terminating zero byte
};

}  // namespace

const char* element_below_depth(const std::string& text, std::uint32_t bound) {
  assert(text.find('\0') == std::string::npos && "the terminating one is the only one");
  return DepthScan(text).first_below(bound);
}

}  // namespace vorel::formats
