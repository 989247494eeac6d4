// sat/gate.h - a Boolean gate as a value, and its normal form.
// Here:      the types of gates, the container of inputs, folding of constants and repeated inputs.
// Not here:  the clauses of a gate (sat/gate_clauses.h), output variables (sat/cnf_formula.h).
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

#include "sat/literal.h"

namespace vorel::sat {

// The output as a function of the inputs a, b, c, d or of any number of inputs.
enum GateType : std::uint32_t {
  GateConst,   // false; the normal form's inversion makes it true
  GateBuf,     // a
  GateXor,     // parity of the inputs
  GateAnd,     // conjunction
  GateOr,      // disjunction
  GateEq,      // all inputs equal
  GateMaj,     // majority of a, b, c
  GateOrXor,   // (a or b) xor c
  GateMux,     // if a then c else b
  GateLess,    // majority of a, not b, c
  GateAndEq,   // a and (b equivalent to c)
  GateCmpXor,  // (c equivalent to d) xor (a and not b)
};
inline constexpr std::uint32_t gate_type_count = 12;

// Type and number of inputs in one number: type * 8 + arity, 7 for any arity above 4.
inline constexpr std::uint32_t gate_code(GateType type, std::size_t arity) {
  return type * 8 + static_cast<std::uint32_t>(arity <= 4 ? arity : 7);
}

// Up to four inputs are held inline, more on the heap.
class Gate {
 public:
  Gate(GateType type, std::span<const Lit> inputs);
  Gate(GateType type, std::initializer_list<Lit> inputs)
      : Gate(type, std::span<const Lit>(inputs.begin(), inputs.size())) {}

  GateType type() const { return static_cast<GateType>(code_ / 8); }
  std::uint32_t code() const { return code_; }
  std::size_t arity() const { return on_heap() ? heap_.size() : code_ % 8; }
  std::span<Lit> inputs() { return {on_heap() ? heap_.data() : inline_.data(), arity()}; }
  std::span<const Lit> inputs() const {
    return {on_heap() ? heap_.data() : inline_.data(), arity()};
  }

  // Becomes another gate. The inputs may be a part of its own.
  void become(GateType type, std::span<const Lit> inputs);
  void become(GateType type, std::initializer_list<Lit> inputs) {
    become(type, std::span<const Lit>(inputs.begin(), inputs.size()));
  }

 private:
  static constexpr std::uint32_t heap_arity = 7;
  static constexpr std::size_t inline_capacity = 4;
  bool on_heap() const { return code_ % 8 == heap_arity; }

  std::uint32_t code_;
  std::array<Lit, inline_capacity> inline_;
  Lits heap_;
};

// Rewrites the gate so that its inputs are sorted, distinct and not constant, with the smallest
// type that does; at most one essential input gives GateBuf or GateConst. True when the output of
// the rewritten gate is the complement of the given gate's.
bool normalise(Gate& gate);

// "GateAnd(1, 2')", for messages of tests and diagnostics.
std::string to_string(const Gate& gate);

}  // namespace vorel::sat
