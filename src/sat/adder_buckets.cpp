#include "sat/adder_buckets.h"

#include <array>
#include <utility>

namespace vorel::sat {

SumAndCarry half_adder(CnfFormula& formula, Lit a, Lit b, ClauseGroup group, Polarity polarity) {
  if (b.is_constant()) std::swap(a, b);
  if (a == LitFalse) return {b, LitFalse};
  if (a == LitTrue) return {~b, b};
  if (a == b) return {LitFalse, a};
  if (a == ~b) return {LitTrue, LitFalse};
  const Lit sum = formula.make_gate(Gate(GateXor, {a, b}), group, polarity);
  const Lit carry = formula.make_gate(Gate(GateAnd, {a, b}), group);
  // Redundant, but no solver does without: with the last of these a sum of zero makes all that it
  // counts false without a decision, which the descent to the least cost lives on.
  formula.add_binary(~sum, ~carry, group);
  for (const Lit x : {a, b}) formula.add_clause(std::array{~x, sum, carry}, group);
  return {sum, carry};
}

SumAndCarry full_adder(CnfFormula& formula, Lit a, Lit b, Lit c, ClauseGroup group,
                       Polarity polarity) {
  const auto has = [&](Lit x) { return a == x || b == x || c == x; };
  const auto bring_to_front = [&](Lit x) {
    if (b == x)
      std::swap(a, b);
    else if (c == x)
      std::swap(a, c);
  };
  if (has(LitFalse)) {
    bring_to_front(LitFalse);
    return half_adder(formula, b, c, group, polarity);
  }
  if (has(LitTrue)) {
    bring_to_front(LitTrue);
    const SumAndCarry inner = half_adder(formula, ~b, ~c, group, -polarity);
    return {~inner.sum, ~inner.carry};
  }
  if (a == b) return {c, a};
  if (a == c) return {b, a};
  if (b == c) return {a, b};
  if (a == ~b) return {~c, c};
  if (a == ~c) return {~b, b};
  if (b == ~c) return {~a, a};
  const Lit sum = formula.make_gate(Gate(GateXor, {a, b, c}), group, polarity);
  const Lit carry = formula.make_gate(Gate(GateMaj, {a, b, c}), group);
  for (const Lit x : {a, b, c}) {
    formula.add_clause(std::array{x, ~sum, ~carry}, group);
    formula.add_clause(std::array{~x, sum, carry}, group);
  }
  return {sum, carry};
}

void AdderBuckets::add(Lit lit, std::size_t weight) {
  if (lit == LitFalse) return;
  if (weight >= buckets_.size()) buckets_.resize(weight + 1);
  buckets_[weight].push_back(lit);
}

void AdderBuckets::add_number(std::span<const Lit> bits, std::size_t shift) {
  for (std::size_t i = 0; i < bits.size(); ++i) add(bits[i], shift + i);
}

// Leaves one literal of the weight, which is the sum's bit, and sends the rest up as carries.
Lit AdderBuckets::compress(std::size_t weight, ClauseGroup group, Polarity polarity) {
  const auto take = [&] {
    const Lit lit = buckets_[weight].back();
    buckets_[weight].pop_back();
    return lit;
  };
  while (buckets_[weight].size() > 1) {
    const bool three = buckets_[weight].size() > 2;
    const Lit a = take();
    const Lit b = take();
    const Lit c = three ? take() : LitFalse;
    // Only the last sum is a bit of the result; those before enter another adder.
    const Polarity sum_polarity = buckets_[weight].empty() ? polarity : default_polarity;
    const SumAndCarry added = full_adder(formula_, a, b, c, group, sum_polarity);
    add(added.sum, weight);
    add(added.carry, weight + 1);
  }
  return buckets_[weight].empty() ? LitFalse : take();
}

Lits AdderBuckets::sum(ClauseGroup group, Polarity polarity) {
  Lits bits;
  for (std::size_t weight = 0; weight < buckets_.size(); ++weight)
    bits.push_back(compress(weight, group, polarity));
  buckets_.clear();
  while (!bits.empty() && bits.back() == LitFalse) bits.pop_back();
  return bits;
}

}  // namespace vorel::sat
