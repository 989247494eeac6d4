#include "flow/flow_result.h"

#include <algorithm>

namespace vorel::flow {
namespace {

std::size_t count_kind(const net::Stg& stg, net::SignalKind kind) {
  return static_cast<std::size_t>(std::ranges::count_if(
      stg.signals, [kind](const auto& signal) { return signal->kind == kind; }));
}

}  // namespace

StgSizes sizes_of(const net::Stg& stg) {
  return {.places = stg.places.size(),
          .transitions = stg.transitions.size(),
          .inputs = count_kind(stg, net::SignalKind::input),
          .outputs = count_kind(stg, net::SignalKind::output),
          .internals = count_kind(stg, net::SignalKind::internal),
          .dummies = count_kind(stg, net::SignalKind::dummy)};
}

const net::StgPrefix* FlowResult::circuit_stg() const {
  if (mapped) return &*mapped;
  if (resolved) return &*resolved;
  return given ? &*given : nullptr;
}

}  // namespace vorel::flow
