// oracle/table_relation.h - Boolean relations by their values, and the least cost of functions
// inside.
#pragma once

#include <algorithm>
#include <compare>
#include <limits>
#include <span>
#include <vector>

#include "bdd/bdd.h"
#include "oracle/random.h"

namespace vorel::oracle {

// Of at most six inputs: bit x is the value at x, whose bit i is input i.
using SmallFunction = std::uint64_t;

// Bit y of allowed[x] is set if the outputs may be y where the inputs are x. At most four outputs.
struct TableRelation {
  bool is_total() const { return std::ranges::find(allowed, 0u) == allowed.end(); }
  bool contains(const std::vector<SmallFunction>& functions) const {
    for (std::uint32_t x = 0; x < allowed.size(); ++x) {
      SmallFunction y = 0;
      for (std::size_t i = 0; i < functions.size(); ++i) y |= ((functions[i] >> x) % 2u) << i;
      if ((allowed[x] >> y) % 2 == 0) return false;
    }
    return true;
  }

  std::uint32_t inputs = 0, outputs = 0;
  std::vector<std::uint32_t> allowed;
};

// The value is asked of numbers whose bit i is the value of variables[i].
template <class Value>
bdd::Bdd bdd_of_values(const std::vector<bdd::Bdd>& variables, Value value) {
  std::vector<bdd::Bdd> parts;
  for (std::uint32_t a = 0; a < 1u << variables.size(); ++a) parts.emplace_back(value(a));
  for (const bdd::Bdd& variable : variables) {
    for (std::size_t i = 0; i < parts.size() / 2; ++i)
      parts[i] = ite(variable, parts[2 * i + 1], parts[2 * i]);
    parts.resize(parts.size() / 2);
  }
  return parts.front();
}

inline bdd::Bdd bdd_of_function(SmallFunction f, const std::vector<bdd::Bdd>& inputs) {
  return bdd_of_values(inputs, [f](std::uint32_t x) { return (f >> x) % 2 == 1; });
}

// Inputs are the variables from the first one on.
inline std::vector<SmallFunction> values_of(const std::vector<bdd::Bdd>& functions,
                                            std::uint32_t first, std::uint32_t inputs) {
  std::vector<SmallFunction> values(functions.size());
  std::vector<int> point(first + inputs);
  for (std::uint32_t x = 0; x < 1u << inputs; ++x) {
    for (std::uint32_t i = 0; i < inputs; ++i) point[first + i] = static_cast<int>((x >> i) % 2);
    for (std::size_t i = 0; i < functions.size(); ++i)
      values[i] |= SmallFunction{functions[i].evaluate(point)} << x;
  }
  return values;
}

struct CostedFunction {
  double cost;
  SmallFunction function;
  auto operator<=>(const CostedFunction&) const = default;
};

// Lowers `least` to the sum of the cheapest functions for the outputs from `output` on that a total
// relation allows, and `sum`. All are tried, cheaper ones first, as long as that may be less.
inline void find_least_cost(const TableRelation& relation, std::span<const CostedFunction> all,
                            std::uint32_t output, double sum, double& least) {
  constexpr std::uint32_t vectors_with_1[] = {0xAAAA, 0xCCCC, 0xF0F0, 0xFF00};  // of output i
  if (output == relation.outputs) least = std::min(least, sum);
  for (const auto& [cost, f] : all) {
    if (sum + cost >= least) return;
    TableRelation rest = relation;
    for (std::uint32_t x = 0; x < rest.allowed.size(); ++x)
      rest.allowed[x] &= (f >> x) % 2 == 1 ? vectors_with_1[output] : ~vectors_with_1[output];
    if (rest.is_total()) find_least_cost(rest, all, output + 1, sum + cost, least);
  }
}

// Of at most three inputs.
template <class Cost>
double least_cost(const TableRelation& relation, Cost cost_of) {
  std::vector<CostedFunction> all;
  for (SmallFunction f = 0; f < SmallFunction{1} << relation.allowed.size(); ++f)
    all.push_back({cost_of(f), f});
  std::ranges::sort(all);
  double least = std::numeric_limits<double>::infinity();
  find_least_cost(relation, all, 0, 0, least);
  return least;
}

// Half of them say that a random gate of the outputs has the value of a random function; the others
// allow each vector by chance. Few are not total.
inline TableRelation random_relation(Random& random, std::uint32_t inputs, std::uint32_t outputs) {
  TableRelation relation{inputs, outputs, {}};
  const std::uint32_t all = (1u << (1u << outputs)) - 1, gate = random.below(all + std::size_t{1});
  const bool by_gate = random.chance(50), may_be_partial = random.chance(10);
  const std::uint32_t density = random.between(15, 80), free = random.chance(50) ? 30 : 0;
  for (std::uint32_t x = 0; x < 1u << inputs; ++x) {
    std::uint32_t allowed = random.chance(50) ? gate : all & ~gate;
    for (std::uint32_t y = 0; y < 1u << outputs && !by_gate; ++y)
      allowed = random.chance(density) ? allowed | (1u << y) : allowed & ~(1u << y);
    if (random.chance(free)) allowed = all;
    if (allowed == 0 && !may_be_partial) allowed = 1u << random.below(1u << outputs);
    relation.allowed.push_back(allowed);
  }
  return relation;
}

}  // namespace vorel::oracle
