#include "resolution/input_like.h"

#include <vector>

namespace vorel::resolution {

base::IndexedBy<net::StgTransition, bool> input_like_transitions(const net::Stg& stg) {
  base::IndexedBy<net::StgTransition, bool> is_input_like(stg.transitions.size());
  std::vector<const net::StgTransition*> found;
  for (const auto& transition : stg.transitions) {
    if (transition->signal->kind != net::SignalKind::input) continue;
    is_input_like[*transition] = true;
    found.push_back(transition.get());
  }
  for (std::size_t next = 0; next < found.size(); ++next) {
    for (const net::StgPlace* place : found[next]->preset) {
      for (const net::StgTransition* before : place->preset) {
        if (!before->signal->is_dummy() || is_input_like[*before]) continue;
        is_input_like[*before] = true;
        found.push_back(before);
      }
    }
  }
  return is_input_like;
}

}  // namespace vorel::resolution
