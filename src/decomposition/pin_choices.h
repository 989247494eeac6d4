// decomposition/pin_choices.h - all ways to put inputs on the pins of a gate, as assignments.
// Here:      which BDD variables choose, which assignments are choices, what a pin carries then,
// the
//            choice with the fewest inverters.
// Not here:  which choices make a gate implement a function (decomposition/gate_matcher.h).
//
// A pin carries one of the inputs, its complement, or a constant. Variable 0 says whether the
// output is inverted; then follow for each pin: whether it is constant, the number of the input
// from the most significant bit (of a constant, its value in the lowest), whether that input is
// inverted.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "bdd/bdd.h"

namespace vorel::decomposition {

class PinChoices {
 public:
  struct Pin {
    bool is_constant = false;
    std::uint32_t input = 0;  // of a constant, its value
    bool is_inverted = false;
  };
  struct Choice {
    std::vector<Pin> pins;
    bool is_output_inverted = false;
  };

  // Without inputs pins are constant.
  PinChoices(std::uint32_t pin_count, std::uint32_t input_count);

  static bdd::Bdd output_inversion() { return bdd::bdd_variable(0); }

  // The assignments that mean something. A pin that may change places with an earlier one, which is
  // earlier_twin[pin], carries no smaller number than that; a pin without such has its own number.
  // An input that may change places with an earlier one, which is earlier_alike[input], stands
  // behind a pin that carries that; an input without such has its own number.
  // Both at once leave one choice of those that differ in such changes only, at least: the one with
  // the smallest numbers from the first pin on.
  bdd::Bdd valid(std::span<const std::uint32_t> earlier_twin,
                 std::span<const std::uint32_t> earlier_alike) const;

  // What each pin carries where the inputs have these values (0 or 1), over the choosing variables.
  std::vector<bdd::Bdd> values_at(std::span<const int> inputs) const;

  // The one with the fewest inverters, among these with the fewest constants, else the smallest
  // numbers; none of false.
  std::optional<Choice> cheapest(const bdd::Bdd& choices) const;

 private:
  std::uint32_t first_variable(std::uint32_t pin) const { return 1 + pin * (number_bits_ + 2); }
  bdd::Bdd constancy(std::uint32_t pin) const { return bdd::bdd_variable(first_variable(pin)); }
  // From the most significant.
  bdd::Bdd number_bit(std::uint32_t pin, std::uint32_t bit) const {
    return bdd::bdd_variable(first_variable(pin) + 1 + bit);
  }
  bdd::Bdd inversion(std::uint32_t pin) const {
    return bdd::bdd_variable(first_variable(pin) + 1 + number_bits_);
  }

  bdd::Bdd has_meaning(std::uint32_t pin) const;
  bdd::Bdd is_ordered(std::uint32_t earlier, std::uint32_t later) const;
  bdd::Bdd carries(std::uint32_t pin, std::uint32_t input) const;
  bdd::Bdd stands_behind(std::uint32_t earlier, std::uint32_t later) const;
  bdd::Bdd selected(std::uint32_t pin, std::span<const int> inputs) const;
  std::uint64_t price_of(std::uint32_t variable) const;
  Choice decoded(const std::vector<bool>& assignment) const;

  std::uint32_t pin_count_, input_count_, number_bits_;
};

}  // namespace vorel::decomposition
