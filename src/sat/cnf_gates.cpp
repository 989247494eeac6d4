// The gates of CnfFormula: allocating outputs and turning definitions into clauses.
#include <cassert>

#include "sat/cnf_formula.h"
#include "sat/gate_clauses.h"

namespace vorel::sat {
namespace {

constexpr bool wants_forward(Polarity polarity) { return polarity >= 0; }
constexpr bool wants_backward(Polarity polarity) { return polarity <= 0; }

// Built with inner variables, which cannot be found again when the other half is asked for later.
bool has_inner_variables(const Gate& gate) {
  return gate.type() == GateEq || (gate.type() == GateXor && gate.arity() > 3);
}

Lit literal_of(char letter, std::span<const Lit> inputs, Lit output) {
  const bool complement = letter < 'a';
  const char name = static_cast<char>(complement ? letter - 'A' + 'a' : letter);
  assert(name == 'o' || static_cast<std::size_t>(name - 'a') < inputs.size());
  return (name == 'o' ? output : inputs[static_cast<std::size_t>(name - 'a')]) ^ complement;
}

}  // namespace

void CnfFormula::emit_patterns(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity) {
  const auto emit_half = [&](std::span<const ClausePattern> half) {
    for (const ClausePattern& pattern : half) {
      if (pattern.redundant && skip_redundant_clauses_) continue;
      std::size_t size = 0;
      for (const char letter : pattern.literals)
        short_clause_[size++] = literal_of(letter, gate.inputs(), output);
      emit(std::span(short_clause_).first(size), group);
    }
  };
  const GateClauses clauses = gate_clauses(gate.code());
  if (wants_forward(polarity)) emit_half(clauses.forward);
  if (wants_backward(polarity)) emit_half(clauses.backward);
}

// GateAnd: the output implies each input, and all inputs together imply the output. GateOr is the
// same for the complements, which exchanges the halves.
void CnfFormula::emit_junction(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity) {
  const bool is_or = gate.type() == GateOr;
  const auto emit_short_clauses = [&] {
    for (const Lit input : gate.inputs()) {
      short_clause_[0] = ~output ^ is_or;
      short_clause_[1] = input ^ is_or;
      emit(std::span(short_clause_).first(2), group);
    }
  };
  const auto emit_long_clause = [&] {
    clause_.clear();
    clause_.push_back(output ^ is_or);
    for (const Lit input : gate.inputs()) clause_.push_back(~input ^ is_or);
    emit(clause_, group);
  };
  if (is_or) {
    if (wants_forward(polarity)) emit_long_clause();
    if (wants_backward(polarity)) emit_short_clauses();
  } else {
    if (wants_forward(polarity)) emit_short_clauses();
    if (wants_backward(polarity)) emit_long_clause();
  }
}

Lit CnfFormula::fresh_output_of(const Gate& gate, ClauseGroup group) {
  const Lit output(new_var(true), false);
  emit_patterns(gate, output, group, default_polarity);
  return output;
}

// A parity of parities. The inner ones need both halves of their definitions whatever is wanted of
// the output, because a parity uses its inputs with both signs.
void CnfFormula::emit_wide_parity(const Gate& gate, Lit output, ClauseGroup group,
                                  Polarity polarity) {
  Lits level(gate.inputs().begin(), gate.inputs().end());
  if (level.size() == 4) {
    const Lit triple = fresh_output_of(Gate(GateXor, {level[0], level[1], level[2]}), group);
    level = {triple, level[3]};
  }
  while (level.size() > 2) {
    Lits next;
    for (std::size_t i = 0; i + 1 < level.size(); i += 2)
      next.push_back(fresh_output_of(Gate(GateXor, {level[i], level[i + 1]}), group));
    if (level.size() % 2 == 1) next.push_back(level.back());
    level.swap(next);
  }
  emit_patterns(Gate(GateXor, level), output, group, polarity);
}

// All inputs are equal when their conjunction holds or their disjunction does not.
void CnfFormula::emit_equality(const Gate& gate, Lit output, ClauseGroup group, Polarity polarity) {
  const Lit all = make_gate(Gate(GateAnd, gate.inputs()), group, polarity);
  const Lit any = make_gate(Gate(GateOr, gate.inputs()), group, -polarity);
  if (wants_forward(polarity)) {
    short_clause_[0] = ~output;
    short_clause_[1] = all;
    short_clause_[2] = ~any;
    emit(std::span(short_clause_).first(3), group);
  }
  if (wants_backward(polarity)) {
    add_binary(output, ~all, group);
    add_binary(output, any, group);
  }
}

void CnfFormula::emit_definition(const Gate& gate, Lit output, ClauseGroup group,
                                 Polarity polarity) {
  assert(output.is_variable() && gate.arity() > 1);
  if (gate.type() == GateAnd || gate.type() == GateOr)
    emit_junction(gate, output, group, polarity);
  else if (gate.type() == GateEq)
    emit_equality(gate, output, group, polarity);
  else if (gate.type() == GateXor && gate.arity() > 3)
    emit_wide_parity(gate, output, group, polarity);
  else
    emit_patterns(gate, output, group, polarity);
}

Lit CnfFormula::new_output(std::uint32_t gate_code) {
  return Lit(new_var(restrict_branching_ || never_branches(gate_code)), false);
}

Lit CnfFormula::promise_output(std::uint32_t gate_code) {
  const Lit output = new_output(gate_code);
  promised_.insert(output.variable());
  return output;
}

void CnfFormula::define_output(Lit output, Gate gate, ClauseGroup group) {
  [[maybe_unused]] const bool was_promised = promised_.erase(output.variable()) != 0;
  assert(was_promised && !output.negated());
  const bool inverted = normalise(gate);
  if (gate.arity() == 0) {
    add_unit(~output ^ inverted, group);
  } else if (gate.arity() == 1) {
    const Lit input = gate.inputs()[0] ^ inverted;
    add_binary(~output, input, group);
    add_binary(output, ~input, group);
  } else {
    assert(!inverted && "the complement of a gate has no type to be recorded under");
    if (recorder_ != nullptr) recorder_->record_gate(output.variable(), gate, group);
    emit_definition(gate, output, group, default_polarity);
  }
}

Lit CnfFormula::output_of(const Gate& gate, ClauseGroup group, Polarity polarity) {
  if (gate.arity() == 0) return LitFalse;
  if (gate.arity() == 1) return gate.inputs()[0];
  const Lit output = new_output(gate.code());
  if (recorder_ != nullptr) recorder_->record_gate(output.variable(), gate, group);
  emit_definition(gate, output, group, polarity);
  return output;
}

Lit CnfFormula::make_gate(Gate gate, ClauseGroup group, Polarity polarity) {
  const bool inverted = normalise(gate);
  return output_of(gate, group, inverted ? -polarity : polarity) ^ inverted;
}

Lit CnfFormula::define_gate(LitCell& cell, GateType type, std::span<const Lit> lits,
                            ClauseGroup group, Polarity polarity) {
  if (cell.serves(polarity)) return cell.lit;
  Gate gate(type, lits);
  const bool inverted = normalise(gate);
  if (cell.lit.is_uninit()) {
    cell.polarity = has_inner_variables(gate) ? default_polarity : polarity;
    cell.lit = output_of(gate, group, inverted ? -cell.polarity : cell.polarity) ^ inverted;
    if (cell.lit.is_constant()) cell.polarity = default_polarity;
    return cell.lit;
  }
  const Polarity missing = -cell.polarity;
  if (gate.arity() > 1)
    emit_definition(gate, cell.lit ^ inverted, group, inverted ? -missing : missing);
  cell.polarity = default_polarity;
  return cell.lit;
}

}  // namespace vorel::sat
