#include "base/params.h"

#include <cassert>

#include "base/value_hash.h"

namespace vorel::base {

std::size_t ParamsKeyHash::operator()(std::string_view key) const {
  std::uint32_t hash = hash_seed;
  for (const char c : key) hash = combine_hashes(hash, fnv1a(static_cast<std::uint8_t>(c)));
  return hash;
}

std::int32_t Params::get(std::string_view key) const {
  const auto found = values_.find(key);
  assert(found != values_.end() && "every key has a default");
  return found->second;
}

}  // namespace vorel::base
