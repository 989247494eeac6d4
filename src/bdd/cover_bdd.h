// bdd/cover_bdd.h - between sums of products and BDDs.
// Here:      cubes, covers and expressions as BDDs, a BDD as a minimised cover and as a factored
//            expression.
// Not here:  minimisation and factoring themselves (toolkit/minimise.h, toolkit/factor.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "bdd/bdd.h"
#include "toolkit/cover.h"
#include "toolkit/logic_expr.h"

namespace vorel::bdd {

// Position i stands for variables[i], which may be any function. A cube without positions is true.
Bdd bdd_of(const toolkit::Cube& cube, std::span<const Bdd> variables);
Bdd bdd_of(const toolkit::Cover& cover, std::span<const Bdd> variables);

// The name of each literal must be among the names; it stands for the variable of that position.
Bdd bdd_of(const toolkit::LogicExpr& expression, std::span<const std::string> names);

// A cover over the variables that the function depends on: position i stands for support[i].
struct SupportCover {
  toolkit::Cover cover;
  std::vector<std::uint32_t> support;  // ascending
};

// A prime and irredundant cover of the function, in cube order.
SupportCover cover_of(const Bdd& f);

// That cover, factored. Variable v is called names[v], or without names "x" and v.
toolkit::LogicExpr expression_of(const Bdd& f, std::span<const std::string> names = {});

// Of the expression.
std::size_t literal_count(const Bdd& f);

}  // namespace vorel::bdd
