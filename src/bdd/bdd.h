// bdd/bdd.h - a Boolean function as a binary decision diagram with complement edges.
// Here:      the handle that owns a reference to a node, and the operations of CUDD on it.
// Not here:  cubes of literals and lists of nodes (bdd/bdd_structure.h), sums of products
//            (bdd/cover_bdd.h), what happens when memory runs out (bdd/bdd_manager.h).
//
// Equal functions have equal handles. Order and hash depend on the function alone, neither on
// addresses nor on the order of variables, so that sorted and hashed containers iterate alike in
// every run.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

struct DdNode;

namespace vorel::bdd {

class Bdd {
 public:
  Bdd() = default;  // null: no function. Only to be copied, moved, compared and hashed
  explicit Bdd(bool value);
  // Takes over a result of CUDD, which ends the process if it is null.
  static Bdd from_result(DdNode* result);

  Bdd(const Bdd& other) : node_{other.node_} {
    if (node_ != nullptr) add_reference();
  }
  Bdd(Bdd&& other) noexcept : node_{std::exchange(other.node_, nullptr)} {}
  Bdd& operator=(Bdd other) noexcept {
    std::swap(node_, other.node_);
    return *this;
  }
  ~Bdd() {
    if (node_ != nullptr) drop_reference();
  }
  friend void swap(Bdd& a, Bdd& b) noexcept { std::swap(a.node_, b.node_); }

  bool is_null() const { return node_ == nullptr; }
  bool is_constant() const;
  bool is_true() const { return is_constant() && !is_complement(); }
  bool is_false() const { return is_constant() && is_complement(); }

  Bdd operator~() const&;
  Bdd operator~() &&;
  Bdd operator&(const Bdd& other) const;
  Bdd operator|(const Bdd& other) const;
  Bdd operator^(const Bdd& other) const;
  Bdd& operator&=(const Bdd& other) { return *this = *this & other; }
  Bdd& operator|=(const Bdd& other) { return *this = *this | other; }
  Bdd& operator^=(const Bdd& other) { return *this = *this ^ other; }

  // The variables that the function depends on, ascending.
  std::vector<std::uint32_t> support() const;
  std::vector<Bdd> support_variables() const;

  // At position v the fraction of assignments to all variables that satisfy the cofactor by
  // variable v; behind the last variable the fraction that satisfy the function.
  std::vector<double> minterm_signature() const;

  // The value where variable v is inputs[v], which is 0 or 1. The inputs reach beyond the support.
  bool evaluate(std::span<const int> inputs) const;

  // The node and its edges, which is what sat/bdd_definition.h asks of a BDD. The children are the
  // node's own: the complement of this edge is not applied to them.
  bool is_complement() const {
    assert(node_ != nullptr);
    return (address() & 1u) != 0;
  }
  std::uint32_t variable() const;  // of a node that is not constant
  Bdd then_child() const;
  Bdd else_child() const;
  std::uintptr_t node_id() const { return address() & ~std::uintptr_t{1}; }

  bool operator==(const Bdd& other) const { return node_ == other.node_; }
  // Null comes first, then by number of variables in the support, then by the support. Functions of
  // one support are compared at the first assignment at which they differ, where the lowest
  // variable is the most significant digit: the one that is false there is less.
  bool operator<(const Bdd& other) const;

  // For the files of this folder. Owned by the handle.
  DdNode* node() const { return node_; }

 private:
  explicit Bdd(DdNode* node) : node_{node} {}
  std::uintptr_t address() const { return reinterpret_cast<std::uintptr_t>(node_); }
  void add_reference() const;
  void drop_reference() const;

  DdNode* node_ = nullptr;  // the lowest bit of the address is set if the function is complemented
};
static_assert(sizeof(Bdd) == sizeof(void*));

// The function that is a variable, 0 to BddManager::last_variable; all others end the process.
Bdd bdd_variable(std::uint32_t index);

Bdd ite(const Bdd& condition, const Bdd& then_value, const Bdd& else_value);

// f with the literals of the product made true. What is no product of literals ends the process.
Bdd cofactor(const Bdd& f, const Bdd& product);

// True where some value of the variables makes f true. The variables are given as their product, in
// which none is negated: anything else ends the process.
Bdd exists(const Bdd& f, const Bdd& variables);

// f with variable v replaced by substitution[v], all at once. Variables beyond the end stay.
Bdd compose(const Bdd& f, std::span<const Bdd> substitution);

std::uint32_t hash_of(const Bdd& f);

// Fast, and of the node: for containers in which functions are looked up only, as it differs from
// run to run.
struct IdentityHash {
  std::size_t operator()(const Bdd& f) const {
    const std::uint64_t edge = f.is_null() ? 0 : f.node_id() + std::uint64_t{f.is_complement()};
    return edge * 0x9E3779B97F4A7C15u >> 20;
  }
};

}  // namespace vorel::bdd

template <>
struct std::hash<vorel::bdd::Bdd> {
  std::size_t operator()(const vorel::bdd::Bdd& f) const { return vorel::bdd::hash_of(f); }
};
