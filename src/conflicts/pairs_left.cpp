#include "conflicts/pairs_left.h"

#include <algorithm>

#include "base/messages.h"

namespace vorel::conflicts {

PairsLeft::PairsLeft(const configuration::StateStructure<net::StgPrefix>& structure,
                     const PairQuestion& question, const configuration::EncodingOptions& options,
                     std::optional<Inclusion> inclusion, std::vector<std::uint32_t> candidates)
    : instance_{structure, options}, formula_{instance_, question} {
  formula_.encode(inclusion);
  formula_.add_any_difference(std::move(candidates));
}

void PairsLeft::exclude(std::span<const BlockedPairs> blocked,
                        const std::vector<std::uint32_t>* known) {
  formula_.exclude(blocked, sat::PermanentGroup, known);
  if (known != nullptr && !std::ranges::includes(*known, differing_)) return;
  for (const BlockedPairs& pairs : blocked) {
    if (configuration::includes(seen_, pairs.different) &&
        configuration::set_difference(pairs.shared, seen_).size() == pairs.shared.size()) {
      has_seen_ = false;
    }
  }
}

bool PairsLeft::is_none() {
  if (has_seen_) return false;
  has_seen_ = instance_.solve();
  if (!has_seen_) return !base::run_failed();
  const auto [one, other] = formula_.model_pair();
  seen_ = configuration::symmetric_difference(one, other);
  differing_ = formula_.differing_candidates();
  return false;
}

}  // namespace vorel::conflicts
