// bdd/bdd_manager.h - the one table in which the nodes of all BDDs live.
// Here:      making it, its bound on memory, and the end of the process when an operation fails.
// Not here:  operations on functions (bdd/bdd.h).
//
// There is one manager for the run, since every Bdd must be comparable with every other. It is made
// at the first use and stays until the process ends, so that a Bdd may outlive everything else.
// Everything that uses it runs on the main thread.
#pragma once

#include <cstddef>
#include <cstdint>

struct DdManager;
struct DdNode;

namespace vorel::bdd {

class BddManager {
 public:
  // A function that outgrows this ends the run: that is better than swapping.
  static constexpr std::size_t memory_bound = 67108864;
  static constexpr std::uint32_t last_variable = 65533;

  static BddManager& instance();

  DdManager* cudd() const { return cudd_; }
  // Variables are numbered from 0; naming one brings it and all below it into being.
  std::uint32_t variable_count() const;
  // Of a variable, in the order of tests on a path. Reordering changes it.
  std::uint32_t level(std::uint32_t variable) const;

  // The node, which is not null: a null one is a failed operation.
  DdNode* checked(DdNode* node) const {
    if (node == nullptr) fail();
    return node;
  }
  // Reports what CUDD says went wrong and ends the process with code 5.
  [[noreturn]] void fail() const;

  // Nodes that somebody holds a reference to, variables and constants left out: 0 when no function
  // is held but constants and plain variables. Slow; for checks.
  std::size_t referenced_node_count() const;

 private:
  BddManager();

  DdManager* cudd_;
};

}  // namespace vorel::bdd
