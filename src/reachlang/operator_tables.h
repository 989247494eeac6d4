// reachlang/operator_tables.h - the operators of the grammar: tokens, associativity.
// Not here:  the rules that are no operators (reachlang/parser.h), precedence and how operators are
//            printed (reachlang/reach_expr.h).
#pragma once

#include "reachlang/reach_expr.h"
#include "reachlang/token.h"

namespace vorel::reachlang {

// All hold their operand tighter than any binary operator.
struct PrefixRow {
  TokenKind token;
  ReachOp op;
};
inline constexpr PrefixRow prefix_rows[] = {
    {TokenKind::fail, ReachOp::fail},
    {TokenKind::state, ReachOp::state},
    {TokenKind::enabled, ReachOp::enabled},
    {TokenKind::letter_c, ReachOp::condition},
    {TokenKind::letter_e, ReachOp::event},
    {TokenKind::letter_p, ReachOp::place},
    {TokenKind::letter_t, ReachOp::transition},
    {TokenKind::letter_s, ReachOp::signal},
    {TokenKind::pp, ReachOp::places},
    {TokenKind::tt, ReachOp::transitions},
    {TokenKind::ss, ReachOp::signals},
    {TokenKind::hash, ReachOp::number},
    {TokenKind::name, ReachOp::name},
    {TokenKind::string, ReachOp::string},
    {TokenKind::len, ReachOp::length},
    {TokenKind::downclose, ReachOp::downclose},
    {TokenKind::trig, ReachOp::triggers},
    {TokenKind::is_init, ReachOp::is_init},
    {TokenKind::is_cutoff, ReachOp::is_cutoff},
    {TokenKind::is_input, ReachOp::is_input},
    {TokenKind::is_output, ReachOp::is_output},
    {TokenKind::is_internal, ReachOp::is_internal},
    {TokenKind::is_dummy, ReachOp::is_dummy},
    {TokenKind::is_local, ReachOp::is_local},
    {TokenKind::is_plus, ReachOp::is_plus},
    {TokenKind::is_minus, ReachOp::is_minus},
    {TokenKind::tilde, ReachOp::not_},
    {TokenKind::minus, ReachOp::negative},
    {TokenKind::pre, ReachOp::pre},
    {TokenKind::post, ReachOp::post},
    {TokenKind::cond, ReachOp::conditions_of},
    {TokenKind::ev, ReachOp::events_of},
    {TokenKind::pls, ReachOp::places_of},
    {TokenKind::tran, ReachOp::transitions_of},
    {TokenKind::sig, ReachOp::signals_of},
    {TokenKind::card, ReachOp::cardinality},
};

enum class Associativity : std::uint8_t {
  left,
  right,
  none,
};

struct BinaryRow {
  TokenKind token;
  ReachOp op;
  Associativity associativity;
};
inline constexpr BinaryRow binary_rows[] = {
    {TokenKind::iff, ReachOp::iff, Associativity::left},
    {TokenKind::implies, ReachOp::implies, Associativity::right},
    {TokenKind::bar, ReachOp::or_, Associativity::left},
    {TokenKind::caret, ReachOp::xor_, Associativity::left},
    {TokenKind::ampersand, ReachOp::and_, Associativity::left},
    {TokenKind::equal, ReachOp::equal, Associativity::none},
    {TokenKind::not_equal, ReachOp::not_equal, Associativity::none},
    {TokenKind::less, ReachOp::less, Associativity::none},
    {TokenKind::at_most, ReachOp::at_most, Associativity::none},
    {TokenKind::greater, ReachOp::greater, Associativity::none},
    {TokenKind::at_least, ReachOp::at_least, Associativity::none},
    {TokenKind::in, ReachOp::in, Associativity::none},
    {TokenKind::plus, ReachOp::plus, Associativity::left},
    {TokenKind::minus, ReachOp::minus, Associativity::left},
    {TokenKind::backslash, ReachOp::without, Associativity::left},
    {TokenKind::star, ReachOp::times, Associativity::left},
    {TokenKind::slash, ReachOp::divided, Associativity::left},
    {TokenKind::percent, ReachOp::modulo, Associativity::left},
};

}  // namespace vorel::reachlang
