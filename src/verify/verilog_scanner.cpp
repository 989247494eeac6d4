#include "verify/verilog_scanner.h"

#include <algorithm>

#include "toolkit/verilog_name.h"

namespace vorel::verify {
namespace {

constexpr std::string_view pragma = "#PRAGMA: zero delay";
constexpr std::string_view values_heading = "initial values of the signals";
constexpr std::string_view blanks = " \t\v\f\r\n";

// The words that statements start with, or end it all: a name in their place is a missing sign.
constexpr std::string_view structural_words[] = {
    "and", "assign", "buf", "endmodule", "inout", "input", "module", "nand",
    "nor", "not",    "or",  "output",    "wire",  "xnor",  "xor",
};

struct DirectiveRow {
  std::string_view name;
  bool has_line;  // what it says reaches to the end of its line
};
constexpr DirectiveRow harmless_directives[] = {
    {"celldefine", false}, {"default_nettype", true}, {"endcelldefine", false},
    {"resetall", false},   {"timescale", true},
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_word_start(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_word_part(char c) { return is_word_start(c) || is_digit(c) || c == '$'; }
bool is_number_part(char c) { return is_word_part(c) || c == '\'' || c == '.' || c == '?'; }

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

class Scanner {
 public:
  explicit Scanner(const base::SourceText& source) : source_{source}, text_{source.text()} {}

  bool run() {
    while (true) {
      skip_blanks();
      if (at_ == text_.size()) break;
      if (!step()) return false;
    }
    if (simulated_ != no_text) return source_.report(simulated_, "'`ifndef' without '`endif'");
    add(TokenKind::end, 0);
    return true;
  }

  VerilogTokens take_result() { return std::move(result_); }

 private:
  std::string_view rest() const { return text_.substr(at_); }
  Spot spot() const { return {at_, line_}; }

  void skip(std::size_t size) {
    for (const std::size_t end = at_ + size; at_ < end; ++at_) {
      const bool is_first_of_two = text_.substr(at_, 2) == "\r\n";
      if (text_[at_] == '\n' || (text_[at_] == '\r' && !is_first_of_two)) ++line_;
    }
  }
  void skip_blanks() { skip(std::min(rest().find_first_not_of(blanks), rest().size())); }

  bool step() {
    const std::string_view here = rest();
    if (here.starts_with("//")) return line_comment();
    if (here.starts_with("/*")) return skip_past("*/", 2, "a comment");
    if (here.starts_with("(*") && !here.starts_with("(*)")) return attribute();
    if (here.front() == '`') return directive();
    if (here.front() == '"') return string();
    if (here.front() == '\\') return escaped_name();
    if (is_word_start(here.front()) || here.front() == '$') {
      return add_while(TokenKind::word, is_word_part);
    }
    // So vorel writes the constants of its equations, which is no Verilog.
    if (here.starts_with("1b`0") || here.starts_with("1b`1")) return add(TokenKind::number, 4);
    if (is_digit(here.front()) || here.front() == '\'') {
      return add_while(TokenKind::number, is_number_part);
    }
    constexpr std::string_view long_signs[] = {"&&", "||", "~^", "^~"};
    const bool is_long = std::ranges::find(long_signs, here.substr(0, 2)) != std::end(long_signs);
    return add(TokenKind::sign, is_long ? 2 : 1);
  }

  bool add(TokenKind kind, std::size_t size) {
    result_.tokens.push_back({kind, text_.substr(at_, size), spot(), below_pragma_});
    below_pragma_ = false;
    skip(size);
    return true;
  }
  bool add_while(TokenKind kind, bool (*belongs)(char)) {
    const std::string_view here = rest();
    const auto end = std::find_if_not(here.begin() + 1, here.end(), belongs);
    return add(kind, static_cast<std::size_t>(end - here.begin()));
  }

  // An escaped name goes up to a blank.
  bool escaped_name() {
    const Spot start = spot();
    skip(1);
    const std::size_t size = std::min(rest().find_first_of(blanks), rest().size());
    if (!toolkit::can_stand_in_verilog(rest().substr(0, size))) {
      return source_.report_expected(
          start.offset, "a name of printable ASCII characters after '\\'", rest().substr(0, size));
    }
    return add(TokenKind::escaped_name, size);
  }

  bool string() {
    const std::size_t size = string_size(rest());
    if (size == 0) return source_.report(at_, "a string does not end");
    return add(TokenKind::string, size);
  }

  // Of the string at the start of the text, with its quotes; 0 if it does not end on its line.
  static std::size_t string_size(std::string_view text) {
    for (std::size_t i = 1; i < text.size() && text[i] != '\n' && text[i] != '\r'; ++i) {
      if (text[i] == '"') return i + 1;
      if (text[i] == '\\') ++i;
    }
    return 0;
  }

  bool line_comment() {
    const std::string_view line = source_.rest_of_line(at_);
    const std::string_view comment = trimmed(line.substr(2));
    if (expects_values_) result_.value_lists.push_back({comment, spot()});
    expects_values_ = comment == values_heading;
    if (comment == pragma) below_pragma_ = true;
    skip(line.size());
    return true;
  }

  bool skip_past(std::string_view sign, std::size_t from, std::string_view what) {
    const std::size_t found = rest().find(sign, from);
    if (found == std::string_view::npos) {
      return source_.report(at_, std::string(what) + " does not end");
    }
    skip(found + sign.size());
    return true;
  }

  bool attribute() {
    const std::string_view here = rest();
    for (std::size_t i = 2; i < here.size(); ++i) {
      if (here.substr(i, 2) == "*)") {
        skip(i + 2);
        return true;
      }
      if (here[i] == '"') {
        const std::size_t size = string_size(here.substr(i));
        if (size == 0) break;
        i += size - 1;
      }
    }
    return source_.report(at_, "an attribute does not end");
  }

  bool directive() {
    const std::string_view here = rest();
    const auto end = std::find_if_not(here.begin() + 1, here.end(), is_word_part);
    const std::string_view name = here.substr(1, static_cast<std::size_t>(end - here.begin()) - 1);
    if (name == "ifndef" || name == "endif") return simulation_directive(name == "ifndef");
    const auto* const row = std::ranges::find(harmless_directives, name, &DirectiveRow::name);
    if (row == std::end(harmless_directives)) {
      return source_.report(at_, "the directive " + base::quoted(here.substr(0, name.size() + 1)) +
                                     " is not supported: the text must be preprocessed");
    }
    skip(row->has_line ? source_.rest_of_line(at_).size() : name.size() + 1);
    return true;
  }

  // "`ifndef SYNTHESIS" ... "`endif": what all but synthesisers see.
  bool simulation_directive(bool is_start) {
    const std::size_t start = at_;
    constexpr std::string_view endif = "`endif", ifndef = "`ifndef";
    if (is_start == (simulated_ != no_text))
      return source_.report(
          start, is_start ? "'`ifndef' stands within another one" : "'`endif' without '`ifndef'");
    simulated_ = is_start ? start : no_text;
    skip(is_start ? ifndef.size() : endif.size());
    if (!is_start) return true;
    skip_blanks();
    const auto end = std::find_if_not(rest().begin(), rest().end(), is_word_part);
    const std::string_view macro = rest().substr(0, static_cast<std::size_t>(end - rest().begin()));
    if (macro != "SYNTHESIS")
      return source_.report_expected(at_, "SYNTHESIS, the only condition that is known", macro);
    skip(macro.size());
    return true;
  }

  static constexpr std::size_t no_text = std::string_view::npos;

  const base::SourceText& source_;
  const std::string_view text_;
  std::size_t at_ = 0, line_ = 1;
  std::size_t simulated_ =
      no_text;  // where the text starts that synthesisers do not see, within it
  bool below_pragma_ = false;
  bool expects_values_ = false;  // the last comment was the heading of the list
  VerilogTokens result_;
};

}  // namespace

std::optional<VerilogTokens> scan_verilog(const base::SourceText& source) {
  Scanner scanner(source);
  if (!scanner.run()) return std::nullopt;
  return scanner.take_result();
}

bool VerilogCursor::at_name() const {
  if (token().kind == TokenKind::escaped_name) return true;
  return token().kind == TokenKind::word && token().text.front() != '$' &&
         std::ranges::find(structural_words, token().text) == std::end(structural_words);
}

bool VerilogCursor::take_name(std::string& name, std::string_view expected) {
  if (!at_name()) return fail_expected(expected);
  name = token().text;
  skip();
  return true;
}

bool VerilogCursor::fail_expected(std::string_view expected) const {
  return source_.report_expected(token().spot.offset, expected, token().text);
}

}  // namespace vorel::verify
