#include "toolkit/gate_function.h"

#include <algorithm>
#include <span>

namespace vorel::toolkit {
namespace {

constexpr std::uint32_t pins_in_word = 6;  // a word holds the values of 2^6 assignments

constexpr std::uint64_t word_of_pin[pins_in_word] = {
    0xAAAAAAAAAAAAAAAAu, 0xCCCCCCCCCCCCCCCCu, 0xF0F0F0F0F0F0F0F0u,
    0xFF00FF00FF00FF00u, 0xFFFF0000FFFF0000u, 0xFFFFFFFF00000000u,
};

std::size_t word_count(std::uint32_t pin_count) {
  assert(pin_count <= most_tabled_pins);
  return std::size_t{1} << (std::max(pin_count, pins_in_word) - pins_in_word);
}

// The values under the assignments of one word of a truth table.
struct WordAlgebra {
  std::uint64_t word;

  std::uint64_t constant(bool value) const { return value ? ~std::uint64_t{0} : 0; }
  std::uint64_t pin(std::uint32_t p) const {
    return p < pins_in_word ? word_of_pin[p] : constant((word >> (p - pins_in_word)) % 2 == 1);
  }
  std::uint64_t negation(std::uint64_t a) const { return ~a; }
  std::uint64_t conjunction(std::uint64_t a, std::uint64_t b) const { return a & b; }
  std::uint64_t disjunction(std::uint64_t a, std::uint64_t b) const { return a | b; }
  std::uint64_t exclusive_or(std::uint64_t a, std::uint64_t b) const { return a ^ b; }
};

// Looks for an order of b's pins, pin by pin. A choice is given up as soon as the two functions
// differ in the number of true points for some values of the pins that are chosen; with all pins
// chosen these are the functions themselves.
class PinOrderSearch {
 public:
  PinOrderSearch(const TruthTable& a, const TruthTable& b, std::uint32_t pin_count)
      : a_{a}, b_{b}, pin_count_{pin_count} {}

  bool run() { return counts(a_, pins_of_a_) == counts(b_, pins_of_b_) && extend(); }

 private:
  using Pins = std::vector<std::uint32_t>;

  bool extend() {
    if (pins_of_a_.size() == pin_count_) return true;
    pins_of_a_.push_back(static_cast<std::uint32_t>(pins_of_a_.size()));
    const auto expected = counts(a_, pins_of_a_);
    for (std::uint32_t pin = 0; pin < pin_count_; ++pin) {
      if (std::ranges::find(pins_of_b_, pin) != pins_of_b_.end()) continue;
      pins_of_b_.push_back(pin);
      if (counts(b_, pins_of_b_) == expected && extend()) return true;
      pins_of_b_.pop_back();
    }
    pins_of_a_.pop_back();
    return false;
  }

  // The number of true points for each assignment of the pins.
  std::vector<std::uint32_t> counts(const TruthTable& table, const Pins& pins) const {
    std::vector<std::uint32_t> count(std::size_t{1} << pins.size());
    for (std::size_t point = 0; point < std::size_t{1} << pin_count_; ++point) {
      if ((table[point / 64] >> (point % 64)) % 2 == 0) continue;
      std::size_t place = 0;
      for (std::size_t i = 0; i < pins.size(); ++i) place |= ((point >> pins[i]) % 2) << i;
      ++count[place];
    }
    return count;
  }

  const TruthTable& a_;
  const TruthTable& b_;
  const std::uint32_t pin_count_;
  Pins pins_of_a_, pins_of_b_;  // chosen so far, those of a in their order
};

}  // namespace

GateFunction with_pins_renumbered(GateFunction function,
                                  std::span<const std::uint32_t> new_number) {
  for (GateStep& step : function.steps) {
    if (step.op == GateOperator::pin) step.pin = new_number[step.pin];
  }
  return function;
}

TruthTable truth_table(const GateFunction& function, std::uint32_t pin_count) {
  TruthTable table(word_count(pin_count));
  for (std::size_t word = 0; word < table.size(); ++word) {
    table[word] = value_of<std::uint64_t>(function, WordAlgebra{word});
  }
  return table;
}

bool equal_up_to_pin_order(const TruthTable& a, const TruthTable& b, std::uint32_t pin_count) {
  assert(a.size() == word_count(pin_count) && b.size() == word_count(pin_count));
  return a == b || PinOrderSearch(a, b, pin_count).run();
}

}  // namespace vorel::toolkit
