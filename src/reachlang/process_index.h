// reachlang/process_index.h - the elements of a net by name.
// Here:      tables of names, made on demand.
// Not here:  the instances of an element (net/instances.h), the operators that ask for both
//            (reachlang/node_operators.h).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "net/instances.h"

namespace vorel::reachlang {

// Refers to a process, which must not change meanwhile.
template <net::Process P>
class ProcessIndex {
 public:
  explicit ProcessIndex(const P& process) : instances_{process} {}

  const net::Instances<P>& instances() const { return instances_; }

  std::optional<std::uint32_t> find_place(std::string_view name);
  std::optional<std::uint32_t> find_transition(std::string_view name);
  std::optional<std::uint32_t> find_signal(std::string_view name) requires P::NetType::has_signals;

  const P& process() const { return instances_.process(); }

 private:
  using Names = std::unordered_map<std::string_view, std::uint32_t>;

  const net::Instances<P> instances_;
  Names place_names_, transition_names_, signal_names_;
};

}  // namespace vorel::reachlang
