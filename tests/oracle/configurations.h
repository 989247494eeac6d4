// oracle/configurations.h - all configurations of a small prefix, and the states they end in.
// Here:      those without cut-offs that end in no dummy, each with its state of the state graph.
// Not here:  trying them (oracle/property_model.h), what states have in common (oracle/coding.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "net/process.h"
#include "oracle/state_graph.h"

namespace vorel::oracle {

struct Configuration {
  std::vector<std::uint32_t> events;  // ascending
  std::uint32_t state;                // position in the state graph
};

// Nullopt when there are more configurations than allowed.
std::optional<std::vector<Configuration>> configurations(const net::StgPrefix& prefix,
                                                         const StateGraph<net::Stg>& graph,
                                                         std::size_t max_configurations);

}  // namespace vorel::oracle
