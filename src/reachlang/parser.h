// reachlang/parser.h - from the text of a property to its typed tree.
// Here:      the grammar, precedence, scopes.
// Not here:  tokens (reachlang/scanner.h), the rules of types (reachlang/type_rules.h).
#pragma once

#include <memory>
#include <string_view>

#include "reachlang/reach_expr.h"

namespace vorel::reachlang {

// The tree of a Boolean expression; null after the first error, which is reported with its line and
// column.
std::unique_ptr<ReachExpr> parse_reach(std::string_view text);

}  // namespace vorel::reachlang
