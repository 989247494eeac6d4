#include "decomposition/brel_relation.h"

#include <utility>

#include "base/hashing.h"
#include "bdd/irredundant_sum.h"

namespace vorel::decomposition {

using bdd::Bdd;

std::size_t BrelAlgebra::FunctionsHash::operator()(const std::vector<Bdd>& functions) const {
  std::uint64_t hash = 0;
  for (const Bdd& f : functions) hash = base::combine_hash(hash, bdd::IdentityHash{}(f));
  return hash;
}

BrelAlgebra::BrelAlgebra(const BrelRelation& relation)
    : whole_{relation.relation},
      inputs_{relation.inputs},
      outputs_{relation.outputs},
      others_(outputs_.size(), Bdd(true)),
      all_outputs_(true) {
  for (std::size_t i = 0; i < outputs_.size(); ++i) {
    all_outputs_ &= outputs_[i];
    for (std::size_t j = 0; j < outputs_.size(); ++j)
      if (j != i) others_[i] &= outputs_[j];
  }
}

bool BrelAlgebra::is_total() const { return exists(whole_, all_outputs_).is_true(); }

BrelAlgebra::Forced BrelAlgebra::forced(const Bdd& relation, std::size_t output) const {
  const Bdd allowed = exists(relation, others_[output]);
  const Bdd allows_1 = cofactor(allowed, outputs_[output]);
  const Bdd allows_0 = cofactor(allowed, ~outputs_[output]);
  return {allows_1 & ~allows_0, allows_0 & ~allows_1};
}

Bdd BrelAlgebra::output_function(const Bdd& relation, std::size_t output) const {
  const auto [to_1, to_0] = forced(relation, output);
  return bdd::function_between(to_1, ~to_0);
}

void BrelAlgebra::find_minimum(const Bdd& relation, std::vector<Bdd>& functions) const {
  functions.clear();
  for (std::size_t i = 0; i < outputs_.size(); ++i)
    functions.push_back(output_function(relation, i));
}

void BrelAlgebra::find_greedy(Bdd relation, std::vector<Bdd>& functions) const {
  functions.clear();
  for (std::size_t i = 0; i < outputs_.size(); ++i) {
    functions.push_back(output_function(relation, i));
    relation = substitute(relation, i, functions.back());
  }
}

std::vector<Bdd> BrelAlgebra::alternatives(std::span<const Bdd> solution,
                                           std::size_t output) const {
  assert(solution.size() == outputs_.size());
  Bdd with_others = whole_;
  for (std::size_t i = 0; i < solution.size(); ++i)
    if (i != output) with_others = substitute(with_others, i, solution[i]);
  const auto [to_1, to_0] = forced(with_others, output);
  std::vector<Bdd> functions = {bdd::function_between(to_1, ~to_0),
                                ~bdd::function_between(to_0, ~to_1)};
  for (const Bdd& input : inputs_) {
    for (const Bdd& literal : {input, ~input}) {
      if (!(to_1 & ~literal).is_false() || !(to_0 & literal).is_false()) continue;
      functions.push_back(literal);
      return functions;
    }
  }
  return functions;
}

// One by one, by operations whose results CUDD remembers; replacing all at once would not be.
Bdd BrelAlgebra::substitute(const Bdd& relation, std::size_t output, const Bdd& function) const {
  return ite(function, cofactor(relation, outputs_[output]), cofactor(relation, ~outputs_[output]));
}

Bdd BrelAlgebra::lowest_point(Bdd set) const {
  assert(!set.is_false());
  Bdd point(true);
  for (const Bdd& input : inputs_) {
    const Bdd with_0 = cofactor(set, ~input);
    const Bdd literal = with_0.is_false() ? input : ~input;
    set = with_0.is_false() ? cofactor(set, input) : with_0;
    point &= literal;
  }
  assert(set.is_true() && "the set is one of inputs");
  return point;
}

std::size_t BrelAlgebra::free_output(const Bdd& relation, const Bdd& point) const {
  const Bdd allowed = cofactor(relation, point);
  std::size_t output = 0;
  while (output < outputs_.size() && !exists(allowed, others_[output]).is_true()) ++output;
  // Were each value forced, there would be one vector of values, and the minimum would have it.
  assert(output < outputs_.size());
  return output;
}

std::optional<BrelAlgebra::Conflict> BrelAlgebra::conflict(const Bdd& relation,
                                                           std::span<const Bdd> functions) const {
  assert(functions.size() == outputs_.size());
  Bdd inside = relation;
  for (std::size_t i = 0; i < functions.size(); ++i) inside = substitute(inside, i, functions[i]);
  if (inside.is_true()) return std::nullopt;
  Bdd point = lowest_point(~inside);
  const std::size_t output = free_output(relation, point);
  return Conflict{std::move(point), output};
}

Bdd BrelAlgebra::restricted(const Bdd& relation, const Conflict& conflict, bool value) const {
  const Bdd& variable = outputs_[conflict.output];
  return relation & (~conflict.point | (value ? variable : ~variable));
}

}  // namespace vorel::decomposition
