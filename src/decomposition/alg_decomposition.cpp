#include "decomposition/alg_decomposition.h"

#include <cassert>
#include <vector>

#include "base/hashing.h"
#include "bdd/cover_bdd.h"

namespace vorel::decomposition {

bdd::Bdd composed(const AlgDecomposition& decomposition, std::uint32_t variable) {
  if (decomposition.kind == AlgKind::conjunction) return decomposition.first & decomposition.second;
  if (decomposition.kind == AlgKind::disjunction) return decomposition.first | decomposition.second;
  const bdd::Bdd placeholder = bdd::bdd_variable(variable);
  return bdd::ite(decomposition.first, bdd::cofactor(decomposition.second, placeholder),
                  bdd::cofactor(decomposition.second, ~placeholder));
}

std::string to_string(const AlgDecomposition& decomposition, std::span<const std::string> names) {
  const std::string first = toolkit::to_string(bdd::expression_of(decomposition.first, names));
  const std::string second = toolkit::to_string(bdd::expression_of(decomposition.second, names));
  switch (decomposition.kind) {
    case AlgKind::conjunction:
      return "AND(" + first + ", " + second + ")";
    case AlgKind::disjunction:
      return "OR(" + first + ", " + second + ")";
    default:
      assert(decomposition.kind == AlgKind::collapsed);
      return "COLLAPSED($1=" + first + " in " + second + ")";
  }
}

}  // namespace vorel::decomposition

std::size_t std::hash<vorel::decomposition::AlgDecomposition>::operator()(
    const vorel::decomposition::AlgDecomposition& decomposition) const {
  using vorel::base::combine_hash;
  const auto kind = static_cast<std::uint64_t>(decomposition.kind);
  return combine_hash(combine_hash(kind, hash_of(decomposition.first)),
                      hash_of(decomposition.second));
}
