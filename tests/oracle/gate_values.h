// oracle/gate_values.h - what gates do, by their functions and by trying everything.
// Here:      the next value of a gate's output; the cheapest of all ways to make it a function.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "toolkit/library_gate.h"

namespace vorel::oracle {

struct BoolAlgebra {
  const std::vector<bool>& pins;

  bool constant(bool value) const { return value; }
  bool pin(std::uint32_t p) const { return pins[p]; }
  bool negation(bool a) const { return !a; }
  bool conjunction(bool a, bool b) const { return a && b; }
  bool disjunction(bool a, bool b) const { return a || b; }
  bool exclusive_or(bool a, bool b) const { return a != b; }
};

// What the output becomes where it has a value now and the input pins have these values.
inline bool next_output(const toolkit::LibraryGate& gate, std::vector<bool> inputs, bool output) {
  if (gate.has_feedback) inputs.push_back(output);
  return toolkit::value_of<bool>(gate.function, BoolAlgebra{inputs});
}

// A function of three variables: bit i is the value where variable v is bit v of i.
using SmallTable = std::uint8_t;

// A signal of three variables: where it is excited to rise, stays 1, is excited to fall, stays 0.
struct SmallSignal {
  SmallTable er_plus, qr_plus, er_minus, qr_minus;
};

// All that a gate can do with variables, their complements and constants on its pins: the next
// values after 0 and after 1, and the least number of inverters on pins.
class GateUses {
 public:
  explicit GateUses(const toolkit::LibraryGate& gate) : gate_{gate} {
    std::vector<std::uint32_t> pins;
    try_all(pins, 0);
  }

  // The fewest inverters with which the gate does what the signal asks for, one behind the output
  // included. With that the gate must keep what it has changed to.
  std::optional<std::uint32_t> fewest_inverters(const SmallSignal& signal) const {
    std::optional<std::uint32_t> best;
    for (const auto& [next, inverters] : uses_) {
      const auto [after_0, after_1] = next;
      const auto is_in = [](SmallTable a, std::uint32_t b) { return (a & ~b & 0xFFu) == 0; };
      const bool is_direct = is_in(signal.er_plus, after_0) && is_in(signal.qr_plus, after_1) &&
                             is_in(signal.er_minus, ~after_1) && is_in(signal.qr_minus, ~after_0);
      const bool is_inverse =
          is_in(signal.er_plus, ~after_1 & ~after_0) && is_in(signal.qr_plus, ~after_0) &&
          is_in(signal.er_minus, after_0 & after_1) && is_in(signal.qr_minus, after_1);
      if (!is_direct && !is_inverse) continue;
      const std::uint32_t count = inverters + (is_direct ? 0 : 1);
      best = std::min(best.value_or(count), count);
    }
    return best;
  }

 private:
  // On each pin 0 to 5: variable n / 2, inverted if odd; 6 and 7: constants.
  void try_all(std::vector<std::uint32_t>& pins, std::uint32_t inverters) {
    if (pins.size() < gate_.input_count()) {
      for (std::uint32_t use = 0; use < 8; ++use) {
        pins.push_back(use);
        try_all(pins, inverters + (use < 6 ? use % 2 : 0));
        pins.pop_back();
      }
      return;
    }
    std::array<SmallTable, 2> next{};
    for (std::uint32_t point = 0; point < 8; ++point) {
      std::vector<bool> values;
      for (const std::uint32_t use : pins) {
        values.push_back(use < 6 ? ((point >> (use / 2)) + use) % 2 == 1 : use == 7);
      }
      for (const bool output : {false, true}) {
        if (next_output(gate_, values, output))
          next[output] |= static_cast<SmallTable>(1u << point);
      }
    }
    const auto [use, is_new] = uses_.try_emplace({next[0], next[1]}, inverters);
    use->second = std::min(use->second, inverters);
  }

  const toolkit::LibraryGate& gate_;
  std::map<std::pair<SmallTable, SmallTable>, std::uint32_t> uses_;
};

}  // namespace vorel::oracle
