// verify/verilog_scanner.h - the tokens of a Verilog text.
// Here:      words, numbers, signs; comments that say something; a spot among the tokens.
// Not here:  what the tokens make (verify/verilog_parser.h).
//
// Attributes, "(* ... *)", and those compiler directives that have no influence on wires and gates
// are skipped. What stands between "`ifndef SYNTHESIS" and "`endif" is read, as by all who do not
// synthesise. Other directives are errors, as they may change the text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/source_text.h"
#include "verify/verilog_module.h"

namespace vorel::verify {

enum class TokenKind : std::uint8_t { word, escaped_name, number, sign, string, end };

struct VerilogToken {
  TokenKind kind;
  std::string_view text;  // a part of the file; of an escaped name without "\"
  Spot spot;
  bool below_pragma = false;  // "// #PRAGMA: zero delay" stands between the last token and this
};

struct VerilogTokens {
  std::vector<VerilogToken> tokens;           // the last one is the end
  std::vector<VerilogValueList> value_lists;  // the lines below "// initial values of the signals"
};

// nullopt after an error.
std::optional<VerilogTokens> scan_verilog(const base::SourceText& source);

// A position among tokens, of which the last is the end.
class VerilogCursor {
 public:
  VerilogCursor(const base::SourceText& source, const std::vector<VerilogToken>& tokens,
                std::size_t position)
      : source_{source}, tokens_{tokens}, position_{position} {}

  const VerilogToken& token() const { return tokens_[position_]; }
  const VerilogToken& next_token() const { return at_end() ? token() : tokens_[position_ + 1]; }
  const VerilogToken& last_token() const { return tokens_[position_ - 1]; }
  std::size_t position() const { return position_; }
  bool at_end() const { return token().kind == TokenKind::end; }
  bool at_word(std::string_view word) const {
    return token().kind == TokenKind::word && token().text == word;
  }
  bool at_sign(std::string_view sign) const {
    return token().kind == TokenKind::sign && token().text == sign;
  }
  void skip() {
    if (!at_end()) ++position_;
  }

  bool accept_word(std::string_view word) { return at_word(word) && (skip(), true); }
  bool accept(std::string_view sign) { return at_sign(sign) && (skip(), true); }
  bool expect(std::string_view sign) {
    return accept(sign) || fail_expected("'" + std::string(sign) + "'");
  }

  // Words that are more than names to the parser are no names.
  bool at_name() const;
  bool take_name(std::string& name, std::string_view expected);

  // These report an error and give false.
  bool fail_expected(std::string_view expected) const;
  bool fail_at(Spot spot, std::string_view fault) const {
    return source_.report(spot.offset, fault);
  }

 private:
  const base::SourceText& source_;
  const std::vector<VerilogToken>& tokens_;
  std::size_t position_;
};

}  // namespace vorel::verify
