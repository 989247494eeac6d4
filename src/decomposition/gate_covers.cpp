#include "decomposition/gate_covers.h"

namespace vorel {
namespace {

// Straight from the expression: a sum of products in between may be longer without bound.
struct BddAlgebra {
  const LibraryGate& gate;
  bool output;  // the value of the feedback

  Bdd constant(bool value) const { return Bdd(value); }
  Bdd pin(std::uint32_t p) const { return gate.is_feedback(p) ? Bdd(output) : bdd_variable(p); }
  Bdd negation(const Bdd& a) const { return ~a; }
  Bdd conjunction(const Bdd& a, const Bdd& b) const { return a & b; }
  Bdd disjunction(const Bdd& a, const Bdd& b) const { return a | b; }
  Bdd exclusive_or(const Bdd& a, const Bdd& b) const { return a ^ b; }
};

}  // namespace

BDDCover covers_of(const LibraryGate& gate) {
  const Bdd after_0 = value_of<Bdd>(gate.function, BddAlgebra{gate, false});
  const Bdd after_1 =
      gate.has_feedback ? value_of<Bdd>(gate.function, BddAlgebra{gate, true}) : after_0;
  return {after_0, after_1, ~after_1, ~after_0};
}

}  // namespace vorel
