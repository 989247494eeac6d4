// base/unique_names.h - names that do not collide.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

namespace vorel::base {

class UniqueNames {
 public:
  // The name, if it is not taken; else the name with a number behind it. The result is taken then.
  std::string take(std::string_view name) {
    std::string result(name);
    while (!taken_.insert(result).second) result = std::string(name) + std::to_string(next_++);
    return result;
  }

 private:
  std::unordered_set<std::string> taken_;
  std::uint64_t next_ = 1;
};

}  // namespace vorel::base
