#include "sat/gate.h"

#include <algorithm>
#include <cassert>
#include <string_view>

#include "sat/fixed_gate.h"

namespace vorel::sat {
namespace {

constexpr std::array<std::string_view, gate_type_count> gate_names = {
    "GateConst", "GateBuf",   "GateXor", "GateAnd",  "GateOr",    "GateEq",
    "GateMaj",   "GateOrXor", "GateMux", "GateLess", "GateAndEq", "GateCmpXor"};

// Drops copies from a sorted list. True if a literal and its complement are among the rest.
bool merge_copies(std::span<Lit> lits, std::size_t& size) {
  size = static_cast<std::size_t>(std::unique(lits.begin(), lits.end()) - lits.begin());
  for (std::size_t i = 1; i < size; ++i)
    if (lits[i] == ~lits[i - 1]) return true;
  return false;
}

void become_constant(Gate& gate) { gate.become(GateConst, {}); }

bool normalise_buffer(Gate& gate) {
  assert(gate.arity() == 1);
  const Lit input = gate.inputs()[0];
  if (!input.is_constant()) return false;
  become_constant(gate);
  return input == LitTrue;
}

bool normalise_parity(Gate& gate) {
  const std::span<Lit> inputs = gate.inputs();
  bool inverted = false;
  // A constant counts by its sign: LitTrue is the complement of LitFalse, which falls away.
  for (Lit& lit : inputs) {
    inverted ^= lit.negated();
    lit = lit.positive();
  }
  std::ranges::sort(inputs);
  std::size_t kept = 0;
  for (const Lit lit : inputs) {
    if (lit == LitFalse) break;
    if (kept > 0 && inputs[kept - 1] == lit)
      --kept;  // a pair cancels
    else
      inputs[kept++] = lit;
  }
  constexpr std::array<GateType, 2> small = {GateConst, GateBuf};
  gate.become(kept < 2 ? small[kept] : GateXor, inputs.first(kept));
  return inverted;
}

// GateAnd and GateOr.
bool normalise_junction(Gate& gate) {
  const bool is_or = gate.type() == GateOr;
  const Lit neutral = constant_lit(!is_or);
  const std::span<Lit> inputs = gate.inputs();
  std::ranges::sort(inputs);
  std::size_t size = inputs.size();
  while (size > 0 && inputs[size - 1] == neutral) --size;
  const bool absorbed = size > 0 && inputs[size - 1] == ~neutral;
  if (absorbed || merge_copies(inputs.first(size), size)) {
    become_constant(gate);
    return is_or;
  }
  if (size == 0) {
    become_constant(gate);
    return !is_or;
  }
  gate.become(size == 1 ? GateBuf : gate.type(), inputs.first(size));
  return false;
}

bool normalise_equality(Gate& gate) {
  const std::span<Lit> inputs = gate.inputs();
  std::ranges::sort(inputs);
  std::size_t size = 0;
  const bool differ = merge_copies(inputs, size);
  if (differ || size < 2) {
    become_constant(gate);
    return !differ;
  }
  const Lit last = inputs[size - 1];
  if (last == LitTrue || last == LitFalse) {  // all others equal the constant
    for (Lit& lit : inputs.first(size - 1)) lit = lit ^ (last == LitFalse);
    gate.become(GateAnd, inputs.first(size - 1));
    return normalise_junction(gate);
  }
  if (size == 2) {
    gate.become(GateXor, inputs.first(size));
    return !normalise_parity(gate);
  }
  gate.become(GateEq, inputs.first(size));
  return false;
}

}  // namespace

Gate::Gate(GateType type, std::span<const Lit> inputs) : code_{gate_code(type, inputs.size())} {
  become(type, inputs);
}

void Gate::become(GateType type, std::span<const Lit> inputs) {
  assert(type < gate_type_count);
  if (inputs.size() > inline_capacity) {
    if (inputs.data() == heap_.data())
      heap_.resize(inputs.size());
    else
      heap_.assign(inputs.begin(), inputs.end());
  } else if (inputs.data() != inline_.data()) {
    std::copy(inputs.begin(), inputs.end(), inline_.begin());
  }
  code_ = gate_code(type, inputs.size());
}

bool normalise(Gate& gate) {
  assert(std::ranges::none_of(gate.inputs(), &Lit::is_uninit));
  switch (gate.type()) {
    case GateConst:
      assert(gate.arity() == 0);
      return false;
    case GateBuf:
      return normalise_buffer(gate);
    case GateXor:
      return normalise_parity(gate);
    case GateAnd:
    case GateOr:
      return normalise_junction(gate);
    case GateEq:
      return normalise_equality(gate);
    default:
      return normalise_fixed_gate(gate);
  }
}

std::string to_string(const Gate& gate) {
  std::string text(gate_names[gate.type()]);
  const char* separator = "(";
  for (const Lit lit : gate.inputs()) {
    text.append(separator).append(to_string(lit));
    separator = ", ";
  }
  return gate.arity() == 0 ? text : text + ")";
}

}  // namespace vorel::sat
