#include "resolution/core_splitting.h"

#include <algorithm>
#include <cassert>

namespace vorel::resolution {

using configuration::EventSet;

EdgeStage stage_after(const EventSet& configuration, const EdgeOccurrence& edge) {
  const auto has_fired = [&configuration](configuration::StgEventId event) {
    return std::ranges::binary_search(configuration, event);
  };
  const bool is_caused = std::ranges::all_of(edge.causes, has_fired);
  const bool is_followed = std::ranges::any_of(edge.followers, has_fired);
  assert((is_caused || !is_followed) && "causes come before followers");
  if (is_followed) return EdgeStage::has_fired;
  return is_caused ? EdgeStage::can_fire : EdgeStage::out;
}

}  // namespace vorel::resolution
