// The order and the hash of functions. Both look at the support and at values only, never at nodes.
#include <algorithm>
#include <compare>

#include "base/value_hash.h"
#include "bdd/bdd.h"

namespace vorel::bdd {
namespace {

using Support = std::vector<std::uint32_t>;

// Inputs for all variables up to the last of the support.
std::vector<int> zero_inputs(const Support& support) {
  return std::vector<int>(support.empty() ? 0 : std::size_t{support.back()} + 1, 0);
}

// The first assignment to the support at which the functions differ, which they do somewhere. Their
// exclusive or would tell as well, but may be far larger than both.
std::vector<int> first_difference(Bdd a, Bdd b, const Support& support) {
  assert(!(a == b));
  std::vector<int> inputs = zero_inputs(support);
  for (const std::uint32_t index : support) {
    const Bdd variable = bdd_variable(index), complement = ~variable;
    Bdd a_without = cofactor(a, complement), b_without = cofactor(b, complement);
    if (a_without == b_without) {
      inputs[index] = 1;
      a = cofactor(a, variable);
      b = cofactor(b, variable);
    } else {
      a = std::move(a_without);
      b = std::move(b_without);
    }
  }
  return inputs;
}

}  // namespace

bool Bdd::operator<(const Bdd& other) const {
  if (*this == other || other.is_null()) return false;
  if (is_null()) return true;
  const Support own = support(), others = other.support();
  if (own.size() != others.size()) return own.size() < others.size();
  if (own != others) return own < others;
  const std::vector<int> inputs = first_difference(*this, other, own);
  return other.evaluate(inputs);
}

std::uint32_t hash_of(const Bdd& f) {
  constexpr int sampled_points = 16;
  std::uint32_t hash = base::hash_seed;
  if (f.is_null()) return hash;
  const Support support = f.support();
  for (const std::uint32_t index : support) hash = base::combine_hashes(hash, base::fnv1a(index));
  std::vector<int> inputs = zero_inputs(support);
  for (int round = 0; round < sampled_points; ++round) {
    for (std::size_t i = 0; i < support.size(); ++i)
      inputs[support[i]] = static_cast<int>((hash >> (i % 4)) & 1u);
    hash = base::combine_hashes(hash, base::fnv1a(std::uint8_t{f.evaluate(inputs)}));
  }
  return hash;
}

}  // namespace vorel::bdd
