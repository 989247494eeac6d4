// bdd/bdd_structure.h - what the diagram of a function shows.
// Here:      whether it is a product of literals, its nodes.
// Not here:  operations that make new functions (bdd/bdd.h).
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "bdd/bdd.h"

namespace vorel::bdd {

struct BddLiteral {
  std::uint32_t variable = 0;
  bool negated = false;
  auto operator<=>(const BddLiteral&) const = default;
};

// The literals of a function that is a product of them, sorted; none for true. Nothing if the
// function is no product.
std::optional<std::vector<BddLiteral>> literals_of_cube(const Bdd& f);

// A variable or its complement.
bool is_literal(const Bdd& f);

// The nodes below and with that of f, without complement, in the current order of the variables,
// the constant last. Nodes of one variable stand in the order in which a walk that takes the then
// edge first reaches them.
std::vector<Bdd> nodes_of(const Bdd& f);

// The number of nodes, the constant included.
std::size_t node_count(const Bdd& f);

}  // namespace vorel::bdd
