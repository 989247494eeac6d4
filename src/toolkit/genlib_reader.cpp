#include "toolkit/genlib_reader.h"

#include <algorithm>
#include <cassert>
#include <unordered_map>

#include "base/messages.h"
#include "toolkit/gate_expression.h"
#include "toolkit/genlib_cursor.h"

namespace vorel {
namespace {

struct LatchTypeRow {
  std::string_view keyword;
  GateClass gate_class;
};
constexpr LatchTypeRow latch_types[] = {
    {"ASYNCH", GateClass::asynchronous_latch},   {"RISING_EDGE", GateClass::clocked_latch},
    {"FALLING_EDGE", GateClass::clocked_latch},  {"ACTIVE_HIGH", GateClass::clocked_latch},
    {"ACTIVE_LOW", GateClass::clocked_latch},
};
constexpr std::string_view phases[] = {"INV", "NONINV", "UNKNOWN"};
constexpr std::string_view any_pin = "*", no_feedback = "ANY";
constexpr std::size_t timing_numbers = 6, constraint_numbers = 2;

std::string quoted(std::string_view name) { return "'" + std::string(name.substr(0, 60)) + "'"; }

// What the statements have said about a gate so far. Texts are parts of the library.
struct Description {
  std::string_view name;
  double area = 0;
  bool is_latch = false;
  GateEquation equation;
  std::vector<std::string_view> declared;  // by PIN
  bool declares_all = false;               // by PIN *
  bool has_control = false;
  std::string_view feedback;                         // SEQ: empty without one
  GateClass gate_class = GateClass::combinational;  // SEQ: that of a latch
};

// The numbers of `names` in the other list, where each occurs.
std::vector<std::uint32_t> places_of(const std::vector<std::string>& names,
                                     const std::vector<std::string>& list) {
  assert(std::ranges::is_permutation(names, list));
  std::unordered_map<std::string_view, std::uint32_t> place;
  for (const std::string& name : list) place.emplace(name, place.size());
  std::vector<std::uint32_t> places;
  for (const std::string& name : names) places.push_back(place.at(name));
  return places;
}

GateFunction with_pins(GateFunction function, const std::vector<std::uint32_t>& new_number) {
  for (GateStep& step : function.steps) {
    if (step.op == GateOperator::pin) step.pin = new_number[step.pin];
  }
  return function;
}

// Of two gates with one name. Functions too wide for a table are compared as they are written.
bool have_same_function(const Gate& a, const Gate& b) {
  if (a.gate_class != b.gate_class || a.has_feedback != b.has_feedback) return false;
  if (!std::ranges::is_permutation(a.pins, b.pins)) return false;
  if (a.has_feedback && a.pins.back() != b.pins.back()) return false;
  const GateFunction b_function = with_pins(b.function, places_of(b.pins, a.pins));
  if (a.function == b_function) return true;
  return a.pin_count() <= most_tabled_pins &&
         truth_table(a.function, a.pin_count()) == truth_table(b_function, a.pin_count());
}

}  // namespace
}  // namespace vorel
