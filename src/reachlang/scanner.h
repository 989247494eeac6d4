// reachlang/scanner.h - splits a text of the property language into tokens.
// Here:      tokens, comments, quoted strings and their escapes, positions.
// Not here:  the grammar (reachlang/parser.h).
#pragma once

#include <string>
#include <string_view>

#include "reachlang/token.h"

namespace vorel::reachlang {

class Scanner {
 public:
  // Reads from the text while it is used; a text of any bytes will do. A byte-order mark of UTF-8
  // at its beginning, as some editors put it into files, takes no column.
  explicit Scanner(std::string_view text)
      : text_{text.substr(text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0)} {}

  // The next token; after the last one it is always the end. False after a reported error.
  bool next(Token& token);

 private:
  static constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";

  bool skip_blanks_and_comments();
  bool skip_block_comment();
  bool scan_number(Token& token);
  void scan_word(Token& token);
  void scan_repeated(Token& token, TokenKind kind);
  void scan_sign(Token& token);
  bool scan_string(Token& token);
  bool scan_escape(std::string& result);
  // A character given by its number; `digits` of it stand behind `prefix` characters.
  bool append_numbered(std::string& result, std::size_t prefix, std::size_t digits, unsigned base);

  std::string_view rest() const { return text_.substr(offset_); }
  char look(std::size_t ahead = 0) const {
    return offset_ + ahead < text_.size() ? text_[offset_ + ahead] : '\0';
  }
  bool at_end() const { return offset_ == text_.size(); }
  // Moves on, and keeps count of lines and columns.
  void advance(std::size_t count);

  std::string_view text_;
  std::size_t offset_ = 0;
  TextPosition position_;
};

}  // namespace vorel::reachlang
