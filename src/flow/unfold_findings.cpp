#include "flow/unfold_findings.h"

#include <cassert>
#include <utility>

#include "flow/stg_game.h"

namespace vorel::flow {

StgFinding unsafe_finding(const unfolder::Unfolder<net::Stg>& unfolder) {
  assert(unfolder.unsafe());
  StgGame game(unfolder.net());
  const net::StgPlace* place = unfolder.unsafe()->place;
  // Another place may have two tokens before the one that was noticed.
  for (const net::StgTransition* transition : unfolder.unsafe()->trace) {
    if (const net::StgPlace* unsafe = game.fire(*transition)) {
      place = unsafe;
      break;
    }
  }
  std::string when = game.trace().empty() ? " has several tokens initially" : " can get two tokens";
  return {FindingKind::unsafe,
          Gravity::fault,
          {place->name},
          "the STG is not safe: place " + place->name + std::move(when),
          game.trace()};
}

StgFinding inconsistent_finding(const net::StgPrefix& prefix,
                                const net::Inconsistency& inconsistency) {
  std::vector<const net::StgTransition*> transitions;
  for (const auto* event : inconsistency.trace) transitions.push_back(event->transition);
  const std::string& signal = inconsistency.signal->name;
  return {FindingKind::inconsistent,
          Gravity::fault,
          {signal},
          "the STG is inconsistent: an edge of signal " + signal +
              " finds the value it would bring about",
          trace_of(prefix, transitions)};
}

}  // namespace vorel::flow
