// The order and the hash of functions. Both look at the support and at values only, never at nodes.
#include <algorithm>
#include <compare>

#include "bdd/bdd.h"
#include "toolkit/hashing.h"

namespace vorel {
namespace {

using Support = std::vector<std::uint32_t>;

// Inputs for all variables up to the last of the support.
std::vector<int> zero_inputs(const Support& support) {
  return std::vector<int>(support.empty() ? 0 : std::size_t{support.back()} + 1, 0);
}

// The first assignment to the support that satisfies the function, which is not false.
std::vector<int> first_satisfying(Bdd f, const Support& support) {
  assert(!f.is_false());
  std::vector<int> inputs = zero_inputs(support);
  for (const std::uint32_t index : support) {
    if (f.is_true()) break;
    const Bdd variable = bdd_variable(index);
    Bdd without = cofactor(f, ~variable);
    if (without.is_false()) {
      inputs[index] = 1;
      f = cofactor(f, variable);
    } else {
      f = std::move(without);
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
  const std::vector<int> inputs = first_satisfying(*this ^ other, own);
  return other.evaluate(inputs);
}

std::uint32_t hash_of(const Bdd& f) {
  constexpr int sampled_points = 16;
  std::uint32_t hash = hash_seed;
  if (f.is_null()) return hash;
  const Support support = f.support();
  for (const std::uint32_t index : support) hash = combine_hashes(hash, fnv1a(index));
  std::vector<int> inputs = zero_inputs(support);
  for (int round = 0; round < sampled_points; ++round) {
    for (std::size_t i = 0; i < support.size(); ++i)
      inputs[support[i]] = static_cast<int>((hash >> (i % 4)) & 1u);
    hash = combine_hashes(hash, fnv1a(std::uint8_t{f.evaluate(inputs)}));
  }
  return hash;
}

}  // namespace vorel
