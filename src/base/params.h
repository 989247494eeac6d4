// base/params.h - the store of option values.
// Here:      keys, lookup, overwriting.
// Not here:  the keys with their defaults (base/default_params.h) and meaning
//            (driver/option_table.h).
// A value type: who holds a copy may change it unseen.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

namespace vorel::base {

// Hash of a key, byte by byte; the empty key hashes to 12345.
struct ParamsKeyHash {
  std::size_t operator()(std::string_view key) const;
};

class Params {
 public:
  // The key must have been set: a wrong key is a mistake of the program, not of the user.
  std::int32_t get(std::string_view key) const;
  // Inserts or overwrites. The key is not copied: it must outlive the store (a literal does).
  void set(std::string_view key, std::int32_t value) { values_[key] = value; }

 private:
  std::unordered_map<std::string_view, std::int32_t, ParamsKeyHash> values_;
};

}  // namespace vorel::base
