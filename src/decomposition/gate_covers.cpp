#include "decomposition/gate_covers.h"

namespace vorel::decomposition {
namespace {

// Straight from the expression: a sum of products in between may be longer without bound.
struct BddAlgebra {
  const toolkit::LibraryGate& gate;
  bool output;  // the value of the feedback

  bdd::Bdd constant(bool value) const { return bdd::Bdd(value); }
  bdd::Bdd pin(std::uint32_t p) const {
    return gate.is_feedback(p) ? bdd::Bdd(output) : bdd::bdd_variable(p);
  }
  bdd::Bdd negation(const bdd::Bdd& a) const { return ~a; }
  bdd::Bdd conjunction(const bdd::Bdd& a, const bdd::Bdd& b) const { return a & b; }
  bdd::Bdd disjunction(const bdd::Bdd& a, const bdd::Bdd& b) const { return a | b; }
  bdd::Bdd exclusive_or(const bdd::Bdd& a, const bdd::Bdd& b) const { return a ^ b; }
};

}  // namespace

bdd::BDDCover covers_of(const toolkit::LibraryGate& gate) {
  const bdd::Bdd after_0 = toolkit::value_of<bdd::Bdd>(gate.function, BddAlgebra{gate, false});
  const bdd::Bdd after_1 = gate.has_feedback
                               ? toolkit::value_of<bdd::Bdd>(gate.function, BddAlgebra{gate, true})
                               : after_0;
  return {after_0, after_1, ~after_1, ~after_0};
}

}  // namespace vorel::decomposition
