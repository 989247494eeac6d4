#include "decomposition/pin_choices.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>
#include <unordered_map>

namespace vorel::decomposition {
namespace {

constexpr std::uint64_t price_of_constant = 1, price_of_inverter = std::uint64_t{1} << 32;
constexpr std::uint64_t impossible = std::numeric_limits<std::uint64_t>::max();

// The least sum of prices of true variables over the assignments that make a function true.
template <class PriceOf>
class CheapestPath {
 public:
  explicit CheapestPath(PriceOf price_of) : price_of_{price_of} {}

  std::uint64_t cost(const bdd::Bdd& f) {
    if (f.is_constant()) return f.is_true() ? 0 : impossible;
    const std::uintptr_t edge = f.node_id() | (f.is_complement() ? 1u : 0u);
    if (const auto known = cost_of_.find(edge); known != cost_of_.end()) return known->second;
    const std::uint64_t least = std::min(cost(branch(f, false)), cost_if_true(f));
    cost_of_.emplace(edge, least);
    return least;
  }

  // True variables only where that is cheaper.
  void follow(bdd::Bdd f, std::vector<bool>& assignment) {
    while (!f.is_constant()) {
      const bool value = cost_if_true(f) < cost(branch(f, false));
      assignment[f.variable()] = value;
      f = branch(f, value);
    }
    assert(f.is_true());
  }

 private:
  static bdd::Bdd branch(const bdd::Bdd& f, bool value) {
    bdd::Bdd child = value ? f.then_child() : f.else_child();
    return f.is_complement() ? ~std::move(child) : child;
  }
  std::uint64_t cost_if_true(const bdd::Bdd& f) {
    const std::uint64_t rest = cost(branch(f, true));
    return rest == impossible ? impossible : rest + price_of_(f.variable());
  }

  const PriceOf price_of_;
  std::unordered_map<std::uintptr_t, std::uint64_t> cost_of_;  // by node and complement
};

}  // namespace

PinChoices::PinChoices(std::uint32_t pin_count, std::uint32_t input_count)
    : pin_count_{pin_count},
      input_count_{input_count},
      number_bits_{input_count < 2 ? 1
                                   : static_cast<std::uint32_t>(std::bit_width(input_count - 1))} {}

bdd::Bdd PinChoices::has_meaning(std::uint32_t pin) const {
  // number < input_count, from the lowest bit.
  bdd::Bdd is_input(false);
  for (std::uint32_t bit = number_bits_; bit-- > 0;) {
    const bdd::Bdd one = number_bit(pin, bit);
    const bool bound = (input_count_ >> (number_bits_ - 1 - bit)) % 2 == 1;
    is_input = bound ? ~one | is_input : ~one & is_input;
  }
  if (input_count_ >> number_bits_ != 0) is_input = bdd::Bdd(true);
  bdd::Bdd is_value = ~inversion(pin);
  for (std::uint32_t bit = 0; bit + 1 < number_bits_; ++bit) is_value &= ~number_bit(pin, bit);
  return ite(constancy(pin), is_value, is_input);
}

bdd::Bdd PinChoices::is_ordered(std::uint32_t earlier, std::uint32_t later) const {
  bdd::Bdd is_not_greater(true);
  const auto compare = [&is_not_greater](const bdd::Bdd& a, const bdd::Bdd& b) {
    is_not_greater = ite(a, b & is_not_greater, b | is_not_greater);
  };
  for (std::uint32_t bit = number_bits_; bit-- > 0;) {
    compare(number_bit(earlier, bit), number_bit(later, bit));
  }
  compare(constancy(earlier), constancy(later));
  return is_not_greater;
}

bdd::Bdd PinChoices::carries(std::uint32_t pin, std::uint32_t input) const {
  bdd::Bdd result = ~constancy(pin);
  for (std::uint32_t bit = number_bits_; bit-- > 0;) {
    const bdd::Bdd one = number_bit(pin, bit);
    result &= (input >> (number_bits_ - 1 - bit)) % 2 == 1 ? one : ~one;
  }
  return result;
}

bdd::Bdd PinChoices::stands_behind(std::uint32_t earlier, std::uint32_t later) const {
  bdd::Bdd result(true), has_come(false);
  for (std::uint32_t pin = 0; pin < pin_count_; ++pin) {
    result &= ~carries(pin, later) | has_come;
    has_come |= carries(pin, earlier);
  }
  return result;
}

bdd::Bdd PinChoices::valid(std::span<const std::uint32_t> earlier_twin,
                           std::span<const std::uint32_t> earlier_alike) const {
  assert(earlier_twin.size() == pin_count_ && earlier_alike.size() == input_count_);
  bdd::Bdd result(true);
  for (std::uint32_t pin = pin_count_; pin-- > 0;) {
    result &= has_meaning(pin);
    if (earlier_twin[pin] != pin) result &= is_ordered(earlier_twin[pin], pin);
  }
  for (std::uint32_t input = 0; input < input_count_; ++input)
    if (earlier_alike[input] != input) result &= stands_behind(earlier_alike[input], input);
  return result;
}

// A balanced tree over the bits of the number. Numbers beyond the inputs mean nothing.
bdd::Bdd PinChoices::selected(std::uint32_t pin, std::span<const int> inputs) const {
  std::vector<bdd::Bdd> values;
  for (std::uint32_t i = 0; i < 1u << number_bits_; ++i) {
    values.emplace_back(i < inputs.size() && inputs[i] != 0);
  }
  for (std::uint32_t bit = number_bits_; bit-- > 0;) {
    const bdd::Bdd one = number_bit(pin, bit);
    for (std::size_t i = 0; 2 * i < values.size(); ++i) {
      values[i] = ite(one, values[2 * i + 1], values[2 * i]);
    }
    values.resize(values.size() / 2);
  }
  return values.front();
}

std::vector<bdd::Bdd> PinChoices::values_at(std::span<const int> inputs) const {
  assert(inputs.size() == input_count_);
  std::vector<bdd::Bdd> values;
  for (std::uint32_t pin = 0; pin < pin_count_; ++pin) {
    values.push_back(ite(constancy(pin), number_bit(pin, number_bits_ - 1),
                         selected(pin, inputs) ^ inversion(pin)));
  }
  return values;
}

std::uint64_t PinChoices::price_of(std::uint32_t variable) const {
  if (variable == 0) return price_of_inverter;
  const std::uint32_t place = (variable - 1) % (number_bits_ + 2);
  if (place == 0) return price_of_constant;
  return place == number_bits_ + 1 ? price_of_inverter : 0;
}

PinChoices::Choice PinChoices::decoded(const std::vector<bool>& assignment) const {
  Choice choice{.pins = {}, .is_output_inverted = assignment[0]};
  for (std::uint32_t pin = 0; pin < pin_count_; ++pin) {
    const std::uint32_t first = first_variable(pin);
    Pin on_pin{.is_constant = assignment[first],
               .is_inverted = assignment[first + 1 + number_bits_]};
    for (std::uint32_t bit = 0; bit < number_bits_; ++bit) {
      on_pin.input = 2 * on_pin.input + (assignment[first + 1 + bit] ? 1u : 0u);
    }
    assert(on_pin.input < (on_pin.is_constant ? 2 : input_count_));
    choice.pins.push_back(on_pin);
  }
  return choice;
}

std::optional<PinChoices::Choice> PinChoices::cheapest(const bdd::Bdd& choices) const {
  if (choices.is_false()) return std::nullopt;
  CheapestPath path([this](std::uint32_t variable) { return price_of(variable); });
  std::vector<bool> assignment(first_variable(pin_count_), false);
  path.follow(choices, assignment);
  return decoded(assignment);
}

}  // namespace vorel::decomposition
