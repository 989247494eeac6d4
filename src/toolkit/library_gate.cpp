#include "toolkit/library_gate.h"

#include <optional>
#include <string_view>
#include <unordered_map>

namespace vorel::toolkit {
namespace {

// For each name its place in the other list; nullopt unless that holds the same names. Neither list
// repeats a name.
std::optional<std::vector<std::uint32_t>> places_of(const std::vector<std::string>& names,
                                                    const std::vector<std::string>& list) {
  if (names.size() != list.size()) return std::nullopt;
  std::unordered_map<std::string_view, std::uint32_t> place_of;
  for (std::uint32_t i = 0; i < list.size(); ++i) place_of.emplace(list[i], i);
  assert(place_of.size() == list.size() && "the pins of a gate have different names");
  std::vector<std::uint32_t> places;
  for (const std::string& name : names) {
    const auto found = place_of.find(name);
    if (found == place_of.end()) return std::nullopt;
    places.push_back(found->second);
  }
  return places;
}

}  // namespace

bool have_same_function(const LibraryGate& a, const LibraryGate& b) {
  if (a.gate_class != b.gate_class || a.has_feedback != b.has_feedback) return false;
  const auto places = places_of(b.pins, a.pins);
  if (!places || (a.has_feedback && places->back() + 1 != a.pin_count())) return false;
  const GateFunction b_function = with_pins_renumbered(b.function, *places);
  if (a.function == b_function) return true;
  return a.pin_count() <= most_tabled_pins &&
         truth_table(a.function, a.pin_count()) == truth_table(b_function, a.pin_count());
}

}  // namespace vorel::toolkit
