#include "decomposition/signal_variables.h"

namespace vorel::decomposition {

SignalVariables::SignalVariables(std::uint32_t most_pins) : placeholder_{most_pins} {
  for (std::uint32_t pin = 0; pin < most_pins; ++pin)
    names_.push_back("$" + std::to_string(pin + 2));
  names_.emplace_back("$1");
}

std::uint32_t SignalVariables::of(const std::string& name) {
  const auto [entry, is_new] = variables_.try_emplace(name, first_free());
  if (is_new) names_.push_back(name);
  return entry->second;
}

}  // namespace vorel::decomposition
