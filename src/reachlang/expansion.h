// reachlang/expansion.h - from the tree of a property to its normal form on one process.
// Here:      expanding binding operators, evaluating all that is constant, checking the atoms.
// Not here:  the normal form itself (reachlang/formula_builder.h), its clauses
//            (reachlang/predicate_encoding.h).
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

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

// A variable of a quantifier, bound to an element.
struct BoundVariable {
  std::string name;
  ReachValue value;
};

// The elements that make true the quantifiers `exists` at the outside of a property that holds: the
// property itself, its body, a part of a conjunction or what stands below definitions. For each of
// them it is the first choice of elements for which `holds` is true of the body.
using FormulaHolds = std::function<bool(const FormulaBuilder& formula, ReachNodeId root)>;
template <net::Process P>
std::vector<BoundVariable> choose_elements(const ReachExpr& property, const P& process,
                                           const FormulaHolds& holds);

}  // namespace vorel::reachlang
