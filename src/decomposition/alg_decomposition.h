// decomposition/alg_decomposition.h - a function as a gate of two functions, or around a third.
// Here:      the data, its normal form, its text.
// Not here:  finding them (decomposition/alg_decomposer.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "bdd/bdd.h"

namespace vorel::decomposition {

enum class AlgKind : std::uint8_t { conjunction = 0, disjunction = 1, collapsed = 2 };

struct AlgDecomposition {
  AlgKind kind = AlgKind::conjunction;
  // Of a conjunction or disjunction the operands, the lesser one first (bdd/bdd.h). Of a collapsed
  // one the sub-function, and the function in which a placeholder variable stands for it.
  bdd::Bdd first, second;

  bool operator==(const AlgDecomposition&) const = default;
};

// What it is a decomposition of; `variable` is the placeholder.
bdd::Bdd composed(const AlgDecomposition& decomposition, std::uint32_t variable);

// "AND(f, g)", "OR(f, g)", "COLLAPSED($1=f in g)". Variable v is called names[v], or without names
// "x" and v.
std::string to_string(const AlgDecomposition& decomposition,
                      std::span<const std::string> names = {});

}  // namespace vorel::decomposition

template <>
struct std::hash<vorel::decomposition::AlgDecomposition> {
  std::size_t operator()(const vorel::decomposition::AlgDecomposition& decomposition) const;
};
