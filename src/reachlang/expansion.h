// reachlang/expansion.h - from the tree of a property to its normal form on one process.
// Here:      expanding binding operators, evaluating all that is constant, checking the atoms.
// Not here:  the normal form itself (reachlang/formula_builder.h), its clauses
//            (reachlang/predicate_encoding.h).
#pragma once

#include <optional>
#include <string>

#include "net/process.h"
#include "reachlang/formula_builder.h"
#include "reachlang/reach_expr.h"

namespace vorel::reachlang {

struct NormalForm {
  FormulaBuilder formula;
  ReachNodeId root = 0;
};

// A Boolean expression, normalised. Empty if it has no value on this process: `fault` says why.
template <net::Process P>
std::optional<NormalForm> normalise(const ReachExpr& property, const P& process,
                                    std::string& fault);

}  // namespace vorel::reachlang
