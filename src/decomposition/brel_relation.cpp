#include "decomposition/brel_relation.h"

#include <utility>

#include "bdd/irredundant_sum.h"

namespace vorel::decomposition {

using bdd::Bdd;

BrelAlgebra::BrelAlgebra(std::span<const Bdd> inputs, std::span<const Bdd> outputs)
    : inputs_(inputs.begin(), inputs.end()),
      outputs_(outputs.begin(), outputs.end()),
      others_(outputs.size(), Bdd(true)),
      all_outputs_(true) {
  for (std::size_t i = 0; i < outputs_.size(); ++i) {
    all_outputs_ &= outputs_[i];
    for (std::size_t j = 0; j < outputs_.size(); ++j)
      if (j != i) others_[i] &= outputs_[j];
  }
}

bool BrelAlgebra::is_total(const Bdd& relation) const {
  return exists(relation, all_outputs_).is_true();
}

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

std::vector<Bdd> BrelAlgebra::incompatible_minimum(const Bdd& relation) const {
  std::vector<Bdd> functions;
  functions.reserve(outputs_.size());
  for (std::size_t i = 0; i < outputs_.size(); ++i)
    functions.push_back(output_function(relation, i));
  return functions;
}

std::vector<Bdd> BrelAlgebra::greedy_solution(Bdd relation) const {
  std::vector<Bdd> functions;
  functions.reserve(outputs_.size());
  for (std::size_t i = 0; i < outputs_.size(); ++i) {
    functions.push_back(output_function(relation, i));
    relation = substitute(relation, i, functions.back());
  }
  return functions;
}

std::vector<Bdd> BrelAlgebra::alternatives(const Bdd& relation, std::span<const Bdd> solution,
                                           std::size_t output) const {
  assert(solution.size() == outputs_.size());
  Bdd with_others = relation;
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

Bdd BrelAlgebra::conflict(const Bdd& relation, std::span<const Bdd> functions) const {
  assert(functions.size() == outputs_.size());
  Bdd inside = relation;
  for (std::size_t i = 0; i < functions.size(); ++i) inside = substitute(inside, i, functions[i]);
  return ~inside;
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

}  // namespace vorel::decomposition
