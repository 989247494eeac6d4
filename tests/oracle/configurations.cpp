#include "oracle/configurations.h"

#include <algorithm>
#include <cassert>

#include "oracle/property_model.h"

namespace vorel::oracle {

std::optional<std::vector<Configuration>> configurations(const net::StgPrefix& prefix,
                                                         const StateGraph<net::Stg>& graph,
                                                         std::size_t max_configurations) {
  const auto all = configuration_states(prefix, StateKind::no_dummies, max_configurations);
  if (!all) return std::nullopt;
  std::vector<Configuration> result;
  for (const auto& [events, reached] : *all) {
    Parity parity = reached.holds[signal];
    for (const auto& s : prefix.signals) {
      if (s->initial_value == 1) parity[s->index].flip();
    }
    const auto state = std::ranges::find_if(graph.states, [&](const auto& one) {
      return one.marking == reached.holds[place] && one.parity == parity;
    });
    assert(state != graph.states.end() && "a prefix reaches nothing else than the net");
    const auto number = static_cast<std::uint32_t>(state - graph.states.begin());
    result.push_back({{events.begin(), events.end()}, number});
  }
  return result;
}

}  // namespace vorel::oracle
