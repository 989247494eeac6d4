// reachlang/token.h - the words of the property language.
// Here:      kinds of token, their names in messages.
// Not here:  how they are found in a text (reachlang/scanner.h).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "reachlang/text_position.h"

namespace vorel::reachlang {

enum class TokenKind : std::uint8_t {
  end,
  unknown,  // a character that begins no token, or stands in no rule
  number,
  text,
  identifier,
  state,    // one or more $
  enabled,  // one or more @
  next,     // one or more '
  // Signs.
  hash,
  percent,
  ampersand,
  open_paren,
  close_paren,
  star,
  plus,
  comma,
  minus,
  dot,
  slash,
  colon,
  less,
  equal,
  greater,
  question,
  open_bracket,
  backslash,
  close_bracket,
  caret,
  open_brace,
  bar,
  close_brace,
  tilde,
  iff,
  implies,
  at_least,
  at_most,
  not_equal,
  such_that,
  dot_dot,
  // Letters that are operators.
  letter_c,
  letter_e,
  letter_p,
  letter_s,
  letter_t,
  // Keywords.
  fail,
  true_,
  false_,
  forall,
  exists,
  xorsum,
  threshold,
  gather,
  let,
  in,
  pp,
  tt,
  ss,
  name,
  string,
  len,
  trig,
  downclose,
  is_init,
  is_cutoff,
  is_input,
  is_output,
  is_internal,
  is_dummy,
  is_local,
  is_plus,
  is_minus,
  post,
  pre,
  cond,
  ev,
  sig,
  tran,
  pls,
  card,
};

struct Token {
  TokenKind kind = TokenKind::end;
  TextPosition position;
  std::string text;          // of a text, without quotes and escapes; of an identifier, its name;
                             // of an unknown character, the character
  std::uint64_t number = 0;  // of a number its value; of $, @ and ' how many there are
};

// "TOK_ID", "'('", "end of file".
std::string name_of(const Token& token);
std::string name_of(TokenKind kind);

// The kind of a word that is reserved; identifier if it is not.
TokenKind kind_of_word(std::string_view word);

// The longest sign that the text begins with; end if there is none. Its length goes to `length`.
TokenKind kind_of_sign(std::string_view text, std::size_t& length);

}  // namespace vorel::reachlang
