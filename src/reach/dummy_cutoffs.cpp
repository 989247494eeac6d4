#include "reach/dummy_cutoffs.h"

#include <algorithm>
#include <array>

#include "net/causality.h"

namespace vorel {
namespace {

using Event = StgPrefix::Event;

bool is_dummy(const Event& event) { return event.transition->signal->is_dummy(); }

bool is_harmless(const StgPrefix& prefix, Event& event) {
  if (event.cut_off.is_unknown()) return false;
  const auto correspondents = event.cut_off.correspondents();
  if (correspondents.size() == 1) return false;
  auto past = causal_past(prefix, std::array{&event});
  for (const Event* correspondent : correspondents) {
    const auto found = std::ranges::find(past, correspondent);
    if (found == past.end()) return false;
    past.erase(found);
  }
  return std::ranges::all_of(past, [](const Event* other) { return is_dummy(*other); });
}

}  // namespace

bool has_dummy_cutoffs(const StgPrefix& prefix) {
  return std::ranges::any_of(prefix.events, [&prefix](const auto& event) {
    return event->is_cut_off() && is_dummy(*event) && !is_harmless(prefix, *event);
  });
}

}  // namespace vorel
