// base/unique_names.h - names that do not collide.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

namespace vorel::base {

class UniqueNames {
 public:
  explicit UniqueNames(std::uint64_t first_number = 1) : next_{first_number} {}

  // A name that exists already. May be told twice.
  void add(std::string_view name) { taken_.emplace(name); }

  // The name, if it is not taken; else the name, the separator and a number. The result is taken
  // then.
  std::string take(std::string_view name, std::string_view separator = "") {
    std::string result(name);
    while (!taken_.insert(result).second) {
      result = std::string(name).append(separator) + std::to_string(next_++);
    }
    return result;
  }

 private:
  std::unordered_set<std::string> taken_;
  std::uint64_t next_;
};

}  // namespace vorel::base
