// reachlang/process_index.h - what leads from the elements of a net to those of its process.
// Here:      the instances of places, transitions and signals; elements by name. Made on demand.
// Not here:  the operators that ask for them (reachlang/node_operators.h).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>

#include "base/grouping.h"
#include "net/process.h"

namespace vorel::reachlang {

// Refers to a process, which must not change meanwhile. All results are sorted numbers.
template <net::Process P>
class ProcessIndex {
 public:
  using Indices = std::span<const std::uint32_t>;

  explicit ProcessIndex(const P& process) : process_{process} {}

  Indices conditions_of(std::uint32_t place);
  Indices events_of(std::uint32_t transition);
  Indices transitions_of(std::uint32_t signal) requires P::NetType::has_signals;

  std::optional<std::uint32_t> find_place(std::string_view name);
  std::optional<std::uint32_t> find_transition(std::string_view name);
  std::optional<std::uint32_t> find_signal(std::string_view name) requires P::NetType::has_signals;

  const P& process() const { return process_; }

 private:
  using Names = std::unordered_map<std::string_view, std::uint32_t>;

  const P& process_;
  base::Grouping conditions_, events_, transitions_;  // by place, transition, signal
  Names place_names_, transition_names_, signal_names_;
};

}  // namespace vorel::reachlang
