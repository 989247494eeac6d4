#include "sat/fixed_gate.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>

namespace vorel::sat {
namespace {

// Truth tables of functions of up to four inputs: bit i is the output for the inputs whose values
// are the bits of i, input a in bit 0. A function of fewer inputs repeats itself.
using TruthTable = std::uint32_t;
constexpr TruthTable all_rows = 0xFFFF;
constexpr TruthTable in_a = 0xAAAA, in_b = 0xCCCC, in_c = 0xF0F0, in_d = 0xFF00;
constexpr std::array<TruthTable, 4> input_tables = {in_a, in_b, in_c, in_d};

// The types with a fixed number of inputs; 0 for the others.
constexpr std::array<TruthTable, gate_type_count> gate_tables = {
    0,
    0,
    0,
    0,
    0,
    0,
    (in_a & in_b) | (in_a & in_c) | (in_b & in_c),
    (in_a | in_b) ^ in_c,
    (in_a & in_c) | (~in_a & in_b & all_rows),
    (in_a & ~in_b) | (in_a & in_c) | (~in_b & in_c & all_rows),
    in_a & ~(in_b ^ in_c),
    (~(in_c ^ in_d) ^ (in_a & ~in_b)) & all_rows};

// No constant and no variable twice: nothing can be folded.
bool has_distinct_variables(std::span<const Lit> inputs) {
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (!inputs[i].is_variable()) return false;
    for (std::size_t j = 0; j < i; ++j)
      if (inputs[i].variable() == inputs[j].variable()) return false;
  }
  return true;
}

void sort_symmetric_inputs(Gate& gate) {
  const std::span<Lit> in = gate.inputs();
  const auto order = [&](std::size_t i, std::size_t j) {
    if (in[j] < in[i]) std::swap(in[i], in[j]);
  };
  switch (gate.type()) {
    case GateMaj:
      std::ranges::sort(in);
      break;
    case GateOrXor:
      order(0, 1);
      break;
    case GateLess:  // the majority of a, not b, c is that of a, c, not b
      if (in[2] < in[1]) gate.become(GateLess, {in[0], ~in[2], ~in[1]});
      break;
    case GateAndEq:
      order(1, 2);
      break;
    case GateCmpXor:
      order(2, 3);
      break;
    default:
      assert(gate.type() == GateMux && "no two inputs of the others may be exchanged");
  }
}

// A function given by its truth table over distinct variables, at most four.
struct TabledFunction {
  TruthTable table = 0;
  std::size_t size = 0;
  std::array<Lit, 4> variables;

  bool value(std::uint32_t row) const { return ((table >> row) & 1u) != 0; }
  bool depends_on(std::size_t i) const {
    const std::uint32_t distance = 1u << i;
    return ((table ^ (table >> distance)) & ~input_tables[i] & all_rows) != 0;
  }
};

// Reads the gate as a function of the variables that occur in it.
TabledFunction tabulate(const Gate& gate) {
  TabledFunction f;
  std::array<TruthTable, 4> operands{};
  const std::span<const Lit> inputs = gate.inputs();
  for (const Lit lit : inputs)
    if (lit.is_variable()) f.variables[f.size++] = lit.positive();
  const auto end = f.variables.begin() + static_cast<std::ptrdiff_t>(f.size);
  std::sort(f.variables.begin(), end);
  f.size = static_cast<std::size_t>(std::unique(f.variables.begin(), end) - f.variables.begin());
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const auto* const found =
        std::find(f.variables.data(), f.variables.data() + f.size, inputs[i].positive());
    const auto position = static_cast<std::size_t>(found - f.variables.data());
    const TruthTable plain = position < f.size ? input_tables[position] : 0;  // LitFalse
    operands[i] = plain ^ (inputs[i].negated() ? all_rows : 0);
  }
  const TruthTable gate_table = gate_tables[gate.type()];
  for (std::uint32_t row = 0; row < 16; ++row) {
    std::uint32_t gate_row = 0;
    for (std::uint32_t i = 0; i < inputs.size(); ++i) gate_row |= ((operands[i] >> row) & 1u) << i;
    f.table |= ((gate_table >> gate_row) & 1u) << row;
  }
  return f;
}

// Removes the variables that the function does not depend on.
void drop_inessential(TabledFunction& f) {
  for (std::size_t i = f.size; i-- > 0;) {
    if (f.depends_on(i)) continue;
    TruthTable shrunk = 0;  // input i at 0, the higher ones moved down
    const std::uint32_t low = (1u << i) - 1;
    for (std::uint32_t row = 0; row < 16; ++row)
      shrunk |= (f.value(((row & ~low) << 1 & 15u) | (row & low)) ? 1u : 0u) << row;
    f.table = shrunk;
    std::copy(f.variables.data() + i + 1, f.variables.data() + f.size, f.variables.data() + i);
    --f.size;
  }
}

// A function that depends on both of its variables: one row of four stands out, or it is a parity.
bool become_pair(Gate& gate, const TabledFunction& f) {
  const std::span<const Lit> variables(f.variables.data(), 2);
  const std::uint32_t rows = f.table & 15u;
  const int ones = std::popcount(rows);
  if (ones == 2) {
    gate.become(GateXor, variables);
    return f.value(0);
  }
  assert(ones == 1 || ones == 3);
  const bool is_or = ones == 3;
  const auto odd_row = static_cast<std::uint32_t>(std::countr_zero(is_or ? ~rows : rows));
  const auto lit = [&](std::uint32_t i) { return variables[i] ^ (((odd_row >> i) & 1u) == is_or); };
  gate.become(is_or ? GateOr : GateAnd, {lit(0), lit(1)});
  return false;
}

// A function that depends on three variables and is left of one of four inputs: either the parity,
// or one variable is exclusive with a junction of the other two.
bool become_triple(Gate& gate, const TabledFunction& f) {
  constexpr TruthTable parity = in_a ^ in_b ^ in_c;
  if (f.table == parity || f.table == (parity ^ all_rows)) {
    gate.become(GateXor, std::span<const Lit>(f.variables.data(), 3));
    return f.value(0);
  }
  for (std::size_t top = 0; top < 3; ++top) {
    // Taking the variable out leaves the junction, if it is the right one.
    TabledFunction rest = f;
    rest.table ^= input_tables[top];
    if (rest.depends_on(top)) continue;
    drop_inessential(rest);
    assert(rest.size == 2);
    const bool inverted = become_pair(gate, rest);
    assert(!inverted && gate.type() != GateXor);
    const bool is_and = gate.type() == GateAnd;  // not (not a or not b)
    const Lit a = gate.inputs()[0] ^ is_and;
    const Lit b = gate.inputs()[1] ^ is_and;
    gate.become(GateOrXor, {a, b, f.variables[top]});
    sort_symmetric_inputs(gate);
    return inverted != is_and;
  }
  assert(false && "no other function of three inputs is left of one of four");
  return false;
}

}  // namespace

bool normalise_fixed_gate(Gate& gate) {
  assert(gate.type() >= GateMaj && "the types before take any number of inputs");
  assert(gate.arity() == (gate.type() == GateCmpXor ? 4u : 3u));
  if (has_distinct_variables(gate.inputs())) {
    sort_symmetric_inputs(gate);
    return false;
  }
  TabledFunction f = tabulate(gate);
  drop_inessential(f);
  switch (f.size) {
    case 0:
      gate.become(GateConst, {});
      return f.value(0);
    case 1:
      gate.become(GateBuf, {f.variables[0] ^ f.value(0)});
      return false;
    case 2:
      return become_pair(gate, f);
    default:
      return become_triple(gate, f);
  }
}

}  // namespace vorel::sat
