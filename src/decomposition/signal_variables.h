// decomposition/signal_variables.h - which BDD variable stands for which signal.
// Here:      the numbering, which holds while signals are inserted.
// Not here:  what is computed with them.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "bdd/bdd.h"

namespace vorel::decomposition {

// Variables belong to names: the numbers of signals shift with each insertion. Before those of
// signals come the pins of a gate to decompose by, as such relations have smaller diagrams then,
// and the placeholder of functions around another one.
class SignalVariables {
 public:
  explicit SignalVariables(std::uint32_t most_pins);

  // That of the signal; a new one at first.
  std::uint32_t of(const std::string& name);

  // names()[v] is what variable v is called. Grows.
  const std::vector<std::string>& names() const { return names_; }
  static constexpr std::uint32_t first_pin = 0;
  std::uint32_t placeholder() const { return placeholder_; }
  std::uint32_t first_free() const { return static_cast<std::uint32_t>(names_.size()); }

 private:
  std::uint32_t placeholder_;
  std::vector<std::string> names_;
  std::unordered_map<std::string, std::uint32_t> variables_;
};

}  // namespace vorel::decomposition
