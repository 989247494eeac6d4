// toolkit/gate_function.h - the function of a gate's output over its pins.
// Here:      an expression without its brackets, its value over any algebra, its truth table.
// Not here:  reading expressions (toolkit/gate_expression.h), sums of products (toolkit/cover.h).
//
// The expression is kept as it was written, in postfix order: a product of many sums takes as much
// room here as in the library, which as a sum of products it would not.
#pragma once

#include <cassert>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace vorel::toolkit {

enum class GateOperator : std::uint8_t {
  constant_0,
  constant_1,
  pin,
  negation,
  conjunction,
  disjunction,
  exclusive_or,
};

struct GateStep {
  GateOperator op;
  std::uint32_t pin = 0;  // of GateOperator::pin
  bool operator==(const GateStep&) const = default;
};

struct GateFunction {
  std::vector<GateStep> steps;  // operands before their operator; never empty
  bool operator==(const GateFunction&) const = default;
};

// The function where pin new_number[p] stands in the place of pin p.
GateFunction with_pins_renumbered(GateFunction function, std::span<const std::uint32_t> new_number);

// The value of the function. The algebra has the operations constant(bool), pin(number),
// negation(a), conjunction(a, b), disjunction(a, b) and exclusive_or(a, b). No more values are kept
// at a time than the expression nests operands.
template <class Value, class Algebra>
Value value_of(const GateFunction& function, const Algebra& algebra) {
  std::vector<Value> stack;
  const auto take = [&stack] {
    assert(!stack.empty() && "operands stand before their operator");
    Value value = std::move(stack.back());
    stack.pop_back();
    return value;
  };
  const auto binary = [&](auto operation) {
    const Value right = take();
    const Value left = take();
    return (algebra.*operation)(left, right);
  };
  for (const GateStep& step : function.steps) {
    switch (step.op) {
      case GateOperator::constant_0:
      case GateOperator::constant_1:
        stack.push_back(algebra.constant(step.op == GateOperator::constant_1));
        break;
      case GateOperator::pin:
        stack.push_back(algebra.pin(step.pin));
        break;
      case GateOperator::negation:
        stack.push_back(algebra.negation(take()));
        break;
      case GateOperator::conjunction:
        stack.push_back(binary(&Algebra::conjunction));
        break;
      case GateOperator::disjunction:
        stack.push_back(binary(&Algebra::disjunction));
        break;
      case GateOperator::exclusive_or:
        stack.push_back(binary(&Algebra::exclusive_or));
        break;
    }
  }
  assert(stack.size() == 1 && "one value is left");
  return take();
}

// Wider functions have no truth table here.
inline constexpr std::uint32_t most_tabled_pins = 16;

// Bit i of word w is the value where pin p has bit p of the number 64 * w + i. Tables of fewer than
// six pins repeat themselves in their only word.
using TruthTable = std::vector<std::uint64_t>;

// `pin_count` is at most most_tabled_pins, and above the number of every pin that occurs.
TruthTable truth_table(const GateFunction& function, std::uint32_t pin_count);

// True if the second function is the first one with its pins in another order. Both have the same
// number of pins, at most most_tabled_pins.
bool equal_up_to_pin_order(const TruthTable& a, const TruthTable& b, std::uint32_t pin_count);

}  // namespace vorel::toolkit
