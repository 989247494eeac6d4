#include "decomposition/literal_counts.h"

#include "bdd/cover_bdd.h"

namespace vorel::decomposition {

std::size_t LiteralCounts::of(const bdd::Bdd& function) {
  const auto [entry, is_new] = known_.try_emplace(function, 0);
  if (is_new) entry->second = bdd::literal_count(function);
  return entry->second;
}

}  // namespace vorel::decomposition
