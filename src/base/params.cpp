#include "base/params.h"

#include <cassert>

namespace vorel::base {

std::size_t ParamsKeyHash::operator()(std::string_view key) const {
  std::uint32_t hash = 12345;
  for (const char c : key) {
    const std::uint32_t byte = static_cast<unsigned char>(c);
    hash ^= (hash >> 2) + 0x9E3779B9u + (hash << 6) + (byte ^ 0x811C9DC5u) * 16777619u;
  }
  return hash;
}

std::int32_t Params::get(std::string_view key) const {
  const auto found = values_.find(key);
  assert(found != values_.end() && "every key has a default");
  return found->second;
}

}  // namespace vorel::base
