// decomposition/literal_counts.h - how many literals functions have, each counted once.
#pragma once

#include <cstddef>
#include <unordered_map>

#include "bdd/bdd.h"

namespace vorel::decomposition {

// To count them a function is minimised and factored; candidates share most of their functions.
class LiteralCounts {
 public:
  std::size_t of(const bdd::Bdd& function);

 private:
  std::unordered_map<bdd::Bdd, std::size_t, bdd::IdentityHash> known_;
};

}  // namespace vorel::decomposition
