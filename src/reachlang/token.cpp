#include "reachlang/token.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "base/messages.h"

namespace vorel::reachlang {
namespace {

// What tokens look like, and what they are called where a sign is not quoted.
struct TokenRow {
  TokenKind kind;
  std::string_view spelling;
  std::string_view name;
};

using enum TokenKind;
constexpr TokenRow token_rows[] = {
    {end, "", "end of file"},
    {number, "", "TOK_NUM"},
    {text, "", "TOK_STR"},
    {identifier, "", "TOK_ID"},
    {state, "", "TOK_STATE"},
    {enabled, "", "TOK_ENABLED"},
    {next, "", "TOK_NXT"},
    // Longer signs come before those that they begin with.
    {iff, "<->", "TOK_IFF"},
    {implies, "->", "TOK_IMPL"},
    {at_least, ">=", "TOK_GEQ"},
    {at_most, "<=", "TOK_LEQ"},
    {not_equal, "!=", "TOK_NEQ"},
    {dot_dot, "..", "TOK_DOTDOT"},
    {such_that, "s.t.", "TOK_SUCHTHAT"},
    {hash, "#", ""},
    {percent, "%", ""},
    {ampersand, "&", ""},
    {open_paren, "(", ""},
    {close_paren, ")", ""},
    {star, "*", ""},
    {plus, "+", ""},
    {comma, ",", ""},
    {minus, "-", ""},
    {dot, ".", ""},
    {slash, "/", ""},
    {colon, ":", ""},
    {less, "<", ""},
    {equal, "=", ""},
    {greater, ">", ""},
    {question, "?", ""},
    {open_bracket, "[", ""},
    {backslash, "\\", ""},
    {close_bracket, "]", ""},
    {caret, "^", ""},
    {open_brace, "{", ""},
    {bar, "|", ""},
    {close_brace, "}", ""},
    {tilde, "~", ""},
    {letter_c, "C", ""},
    {letter_e, "E", ""},
    {letter_p, "P", ""},
    {letter_s, "S", ""},
    {letter_t, "T", ""},
    {fail, "fail", "TOK_FAIL"},
    {true_, "true", "TOK_TRUE"},
    {false_, "false", "TOK_FALSE"},
    {forall, "forall", "TOK_FORALL"},
    {exists, "exists", "TOK_EXISTS"},
    {xorsum, "xorsum", "TOK_XORSUM"},
    {threshold, "threshold", "TOK_THRESHOLD"},
    {gather, "gather", "TOK_GATHER"},
    {let, "let", "TOK_LET"},
    {in, "in", "TOK_IN"},
    {pp, "PP", "TOK_PP"},
    {tt, "TT", "TOK_TT"},
    {ss, "SS", "TOK_SS"},
    {name, "name", "TOK_NAME"},
    {string, "string", "TOK_STRING"},
    {len, "len", "TOK_LEN"},
    {trig, "trig", "TOK_TRIG"},
    {downclose, "downclose", "TOK_DOWNCLOSE"},
    {is_init, "is_init", "TOK_ISINIT"},
    {is_cutoff, "is_cutoff", "TOK_ISCUTOFF"},
    {is_input, "is_input", "TOK_ISINPUT"},
    {is_output, "is_output", "TOK_ISOUTPUT"},
    {is_internal, "is_internal", "TOK_ISINTERNAL"},
    {is_dummy, "is_dummy", "TOK_ISDUMMY"},
    {is_local, "is_local", "TOK_ISLOCAL"},
    {is_plus, "is_plus", "TOK_ISPLUS"},
    {is_minus, "is_minus", "TOK_ISMINUS"},
    {post, "post", "TOK_POSTSET"},
    {pre, "pre", "TOK_PRESET"},
    {cond, "cond", "TOK_CONDS"},
    {ev, "ev", "TOK_EVS"},
    {sig, "sig", "TOK_SIG"},
    {tran, "tran", "TOK_TRAN"},
    {pls, "pls", "TOK_PLS"},
    {card, "card", "TOK_CARD"},
};

const TokenRow& row_of(TokenKind kind) {
  const auto* row = std::ranges::find(token_rows, kind, &TokenRow::kind);
  assert(row != std::end(token_rows) && "only an unknown character has no row");
  return *row;
}

constexpr bool is_word(std::string_view spelling) {
  const char c = spelling.empty() ? '\0' : spelling.front();
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

std::string name_of(TokenKind kind) {
  const TokenRow& row = row_of(kind);
  if (!row.name.empty()) return std::string(row.name);
  return '\'' + std::string(row.spelling) + '\'';
}

std::string name_of(const Token& token) {
  if (token.kind != TokenKind::unknown) return name_of(token.kind);
  const auto byte = static_cast<unsigned char>(token.text.front());
  return byte > ' ' && byte < 127 ? '\'' + token.text + '\''
                                  : base::format_message("'\\x%02x'", byte);
}

TokenKind kind_of_word(std::string_view word) {
  const auto* row = std::ranges::find(token_rows, word, &TokenRow::spelling);
  return row == std::end(token_rows) ? TokenKind::identifier : row->kind;
}

TokenKind kind_of_sign(std::string_view text, std::size_t& length) {
  for (const TokenRow& row : token_rows) {
    const bool is_sign = !row.spelling.empty() && !is_word(row.spelling);
    if ((is_sign || row.kind == such_that) && text.starts_with(row.spelling)) {
      length = row.spelling.size();
      return row.kind;
    }
  }
  return TokenKind::end;
}

}  // namespace vorel::reachlang
