// sat/sums_tree.h - sets of literals arranged in a tree, so that what many sets share stands once.
// Here:      the tree, factoring out the intersections that many sets have, its size.
// Not here:  the parity gates that are made of it (sat/sums_tree_builder.h).
#pragma once

#include <cstdint>
#include <vector>

#include "sat/literal.h"

namespace vorel::sat {

// A node stands for the sum modulo 2 of the literals on the path from the root to it.
struct SumsTree {
  Lits literals;  // sorted; none at the root, and not those of the nodes above
  Lits outputs;   // to be equal to the parity of the path
  std::vector<SumsTree> children;
};

// A set of at least two literals, sorted, each once.
struct SumsSet {
  Lits literals;
  Lit output;  // to be equal to its parity
};

// The sets must differ. The largest intersections are factored out first, of one size the one that
// most sets have; the same sets in the same order give the same tree.
SumsTree build_sums_tree(std::vector<SumsSet> sets);

struct SumsTreeWeight {
  std::uint32_t nodes = 0;          // the root included
  std::uint32_t optimised = 0;      // the literals of all nodes
  std::uint32_t non_optimised = 0;  // the lengths of the paths to all nodes
};

SumsTreeWeight weight_of(const SumsTree& tree);

}  // namespace vorel::sat
