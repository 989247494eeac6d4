#include "bdd/bdd.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "bdd/bdd_manager.h"
#include "bdd/cudd_interface.h"

// Reordering may interrupt an operation of CUDD, which then must be repeated until it gets through.
// Its public functions, the only ones that are called here, do so themselves.

namespace vorel::bdd {
namespace {

DdManager* cudd() { return BddManager::instance().cudd(); }

struct FreeBlock {
  void operator()(double* block) const { std::free(block); }
};

}  // namespace

Bdd::Bdd(bool value) : node_{Cudd_NotCond(Cudd_ReadOne(cudd()), value ? 0 : 1)} { add_reference(); }

Bdd Bdd::from_result(DdNode* result) {
  Bdd f(BddManager::instance().checked(result));
  f.add_reference();
  return f;
}

void Bdd::add_reference() const { Cudd_Ref(node_); }

void Bdd::drop_reference() const { Cudd_RecursiveDeref(cudd(), node_); }

bool Bdd::is_constant() const {
  assert(node_ != nullptr);
  return Cudd_IsConstant(node_) != 0;
}

Bdd Bdd::operator~() const& { return ~Bdd(*this); }

Bdd Bdd::operator~() && {
  assert(node_ != nullptr);
  return Bdd(Cudd_Not(std::exchange(node_, nullptr)));
}

Bdd Bdd::operator&(const Bdd& other) const {
  assert(node_ != nullptr && other.node_ != nullptr);
  return from_result(Cudd_bddAnd(cudd(), node_, other.node_));
}

Bdd Bdd::operator|(const Bdd& other) const {
  assert(node_ != nullptr && other.node_ != nullptr);
  return ~from_result(Cudd_bddAnd(cudd(), Cudd_Not(node_), Cudd_Not(other.node_)));
}

Bdd Bdd::operator^(const Bdd& other) const {
  assert(node_ != nullptr && other.node_ != nullptr);
  return from_result(Cudd_bddXor(cudd(), node_, other.node_));
}

std::vector<std::uint32_t> Bdd::support() const {
  assert(node_ != nullptr);
  // A product of the variables.
  const Bdd product = from_result(Cudd_Support(cudd(), node_));
  std::vector<std::uint32_t> variables;
  for (DdNode* node = product.node_; Cudd_IsConstant(node) == 0; node = Cudd_T(node))
    variables.push_back(static_cast<std::uint32_t>(Cudd_NodeReadIndex(node)));
  std::ranges::sort(variables);
  return variables;
}

std::vector<Bdd> Bdd::support_variables() const {
  std::vector<Bdd> variables;
  for (const std::uint32_t index : support()) variables.push_back(bdd_variable(index));
  return variables;
}

std::vector<double> Bdd::minterm_signature() const {
  const std::size_t size = std::size_t{BddManager::instance().variable_count()} + 1;
  // For a constant CUDD reads beyond the end of a table of its own.
  if (is_constant()) return std::vector<double>(size, is_true() ? 1.0 : 0.0);
  const std::unique_ptr<double, FreeBlock> fractions(Cudd_CofMinterm(cudd(), node_));
  if (fractions == nullptr) BddManager::instance().fail();
  return {fractions.get(), fractions.get() + size};
}

bool Bdd::evaluate(std::span<const int> inputs) const {
  assert(node_ != nullptr);
  int* const only_read = const_cast<int*>(inputs.data());
  return Cudd_Eval(cudd(), node_, only_read) == Cudd_ReadOne(cudd());
}

std::uint32_t Bdd::variable() const {
  assert(!is_constant());
  return static_cast<std::uint32_t>(Cudd_NodeReadIndex(node_));
}

Bdd Bdd::then_child() const {
  assert(!is_constant());
  return from_result(Cudd_T(node_));
}

Bdd Bdd::else_child() const {
  assert(!is_constant());
  return from_result(Cudd_E(node_));
}

Bdd bdd_variable(std::uint32_t index) {
  const BddManager& manager = BddManager::instance();
  if (index > BddManager::last_variable) manager.fail();
  return Bdd::from_result(Cudd_bddIthVar(manager.cudd(), static_cast<int>(index)));
}

Bdd ite(const Bdd& condition, const Bdd& then_value, const Bdd& else_value) {
  assert(!condition.is_null() && !then_value.is_null() && !else_value.is_null());
  return Bdd::from_result(
      Cudd_bddIte(cudd(), condition.node(), then_value.node(), else_value.node()));
}

Bdd cofactor(const Bdd& f, const Bdd& product) {
  assert(!f.is_null() && !product.is_null());
  return Bdd::from_result(Cudd_Cofactor(cudd(), f.node(), product.node()));
}

Bdd exists(const Bdd& f, const Bdd& variables) {
  assert(!f.is_null() && !variables.is_null());
  return Bdd::from_result(Cudd_bddExistAbstract(cudd(), f.node(), variables.node()));
}

Bdd compose(const Bdd& f, std::span<const Bdd> substitution) {
  assert(!f.is_null());
  const std::uint32_t count = BddManager::instance().variable_count();
  std::vector<DdNode*> nodes(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    assert(i >= substitution.size() || !substitution[i].is_null());
    nodes[i] = i < substitution.size() ? substitution[i].node()
                                       : Cudd_ReadVars(cudd(), static_cast<int>(i));
  }
  return Bdd::from_result(Cudd_bddVectorCompose(cudd(), f.node(), nodes.data()));
}

}  // namespace vorel::bdd
