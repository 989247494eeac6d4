#include "decomposition/gate_match.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "bdd/cover_bdd.h"

namespace vorel::decomposition {

std::uint32_t inversion_count(const GateMatch& match) {
  const auto before = std::ranges::count_if(match.inputs, is_inverted_input);
  return static_cast<std::uint32_t>(before) + (match.inverted ? 1u : 0u);
}

double area_of(const GateMatch& match, const GateLibrary& library) {
  assert(match.exists());
  return library.area(match.gate) + inversion_count(match) * library.inverter_area();
}

std::string to_string(const GateMatch& match, const GateLibrary& library,
                      std::span<const std::string> names) {
  if (!match.exists()) return "UNSUCCESSFUL MATCH";
  std::string text = "Gate: " + match.gate + (match.inverted ? " (inverted)" : "") +
                     base::format_message(", area: %g, inputs: ", area_of(match, library));
  for (const bdd::Bdd& input : match.inputs) {
    if (&input != match.inputs.data()) text += ", ";
    text += toolkit::to_string(bdd::expression_of(input, names));
  }
  return text;
}

}  // namespace vorel::decomposition
