// oracle/gate_values.h - what gates do, by their functions and by trying everything.
// Here:      next values of outputs; the fewest inverters with which a gate drives a signal.
#pragma once

#include <algorithm>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "toolkit/library_gate.h"

namespace vorel::oracle {

using Word = std::uint64_t;  // a value in each of 64 cases

struct CasesAlgebra {
  const std::vector<Word>& pins;

  Word constant(bool value) const { return value ? ~Word{0} : 0; }
  Word pin(std::uint32_t p) const { return pins[p]; }
  Word negation(Word a) const { return ~a; }
  Word conjunction(Word a, Word b) const { return a & b; }
  Word disjunction(Word a, Word b) const { return a | b; }
  Word exclusive_or(Word a, Word b) const { return a ^ b; }
};

inline Word next_output(const toolkit::LibraryGate& gate, std::vector<Word> pins, Word output) {
  if (gate.has_feedback) pins.push_back(output);
  return toolkit::value_of<Word>(gate.function, CasesAlgebra{pins});
}

// In which cases a signal is excited to rise, stays 1, is excited to fall, stays 0.
struct SignalCases {
  Word er_plus, qr_plus, er_minus, qr_minus;

  bool is_constant() const { return (er_plus | qr_plus) == 0 || (er_minus | qr_minus) == 0; }
  bool is_within(const SignalCases& o) const {
    return ((er_plus & ~o.er_plus) | (qr_plus & ~o.qr_plus) | (er_minus & ~o.er_minus) |
            (qr_minus & ~o.qr_minus)) == 0;
  }
};

// Of a gate with these next values. A gate with an inverter behind it must keep what it has changed
// to until the inverter has followed.
inline SignalCases driven_signal(Word after_0, Word after_1, bool is_inverted) {
  if (!is_inverted) return {after_0, after_1, ~after_1, ~after_0};
  return {~after_1 & ~after_0, ~after_0, after_0 & after_1, after_1};
}

// All that a gate can do with three variables, their complements and constants on its pins, where
// bit i is the case whose variable v is bit v of i.
class GateUses {
 public:
  explicit GateUses(const toolkit::LibraryGate& gate) : gate_{gate} { try_all({}, 0); }

  std::optional<std::uint32_t> fewest_inverters(const SignalCases& signal) const {
    std::optional<std::uint32_t> best;
    for (const auto& [next, inverters] : fewest_) {
      for (const bool is_inverted : {false, true}) {
        if (!signal.is_within(driven_signal(next.first, next.second, is_inverted))) continue;
        best = std::min(best.value_or(~0u), inverters + (is_inverted ? 1 : 0));
      }
    }
    return best;
  }

 private:
  void try_all(std::vector<Word> pins, std::uint32_t inverters) {
    if (pins.size() == gate_.input_count()) {
      const std::pair next(next_output(gate_, pins, 0), next_output(gate_, pins, ~Word{0}));
      const auto use = fewest_.try_emplace(next, inverters).first;
      use->second = std::min(use->second, inverters);
      return;
    }
    pins.emplace_back();
    for (const Word input : {0xAAu, 0xCCu, 0xF0u, 0xFFu}) {
      pins.back() = input;
      try_all(pins, inverters);
      pins.back() = ~input & 0xFFu;
      try_all(pins, inverters + (input == 0xFFu ? 0 : 1));
    }
  }

  const toolkit::LibraryGate& gate_;
  std::map<std::pair<Word, Word>, std::uint32_t> fewest_;  // by next values after 0 and after 1
};

}  // namespace vorel::oracle
