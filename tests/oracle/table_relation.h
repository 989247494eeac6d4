// oracle/table_relation.h - Boolean relations by their values, and the least cost of functions
// inside. Here:      what solutions of relations are compared with, and random relations.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include "bdd/bdd.h"
#include "oracle/random.h"

namespace vorel::oracle {

// Bit y of allowed[x] is set if the outputs may be y where the inputs are x; bit i of either number
// is the value of input or output i. At most six inputs and four outputs.
struct TableRelation {
  std::uint32_t inputs = 0, outputs = 0;
  std::vector<std::uint32_t> allowed;

  bool is_total() const { return std::ranges::find(allowed, 0u) == allowed.end(); }

  // The output vectors at which one output has a value.
  std::uint32_t vectors_with(std::uint32_t output, bool value) const {
    std::uint32_t vectors = 0;
    for (std::uint32_t y = 0; y < 1u << outputs; ++y)
      if (((y >> output) & 1u) == (value ? 1u : 0u)) vectors |= 1u << y;
    return vectors;
  }
};

// Functions of few inputs are numbers: bit x is the value at x.
using SmallFunction = std::uint64_t;

inline bdd::Bdd bdd_of_function(SmallFunction f, const std::vector<bdd::Bdd>& inputs) {
  std::vector<bdd::Bdd> values;
  for (std::uint32_t x = 0; x < 1u << inputs.size(); ++x) values.emplace_back(((f >> x) & 1u) != 0);
  for (const bdd::Bdd& input : inputs) {
    for (std::size_t i = 0; i < values.size() / 2; ++i)
      values[i] = ite(input, values[2 * i + 1], values[2 * i]);
    values.resize(values.size() / 2);
  }
  return values.front();
}

inline bdd::Bdd bdd_of_relation(const TableRelation& relation, const std::vector<bdd::Bdd>& inputs,
                                const std::vector<bdd::Bdd>& outputs) {
  bdd::Bdd sum(false);
  for (std::uint32_t x = 0; x < relation.allowed.size(); ++x)
    sum |= bdd_of_function(SmallFunction{1} << x, inputs) &
           bdd_of_function(relation.allowed[x], outputs);
  return sum;
}

// The table of a function whose input i is variable first_input + i.
inline SmallFunction values_of(const bdd::Bdd& f, std::uint32_t first_input, std::uint32_t inputs) {
  SmallFunction table = 0;
  std::vector<int> point(first_input + inputs);
  for (std::uint32_t x = 0; x < 1u << inputs; ++x) {
    for (std::uint32_t i = 0; i < inputs; ++i)
      point[first_input + i] = static_cast<int>((x >> i) & 1u);
    if (f.evaluate(point)) table |= SmallFunction{1} << x;
  }
  return table;
}

inline bool is_inside(const std::vector<SmallFunction>& functions, const TableRelation& relation) {
  for (std::uint32_t x = 0; x < relation.allowed.size(); ++x) {
    std::uint32_t y = 0;
    for (std::size_t i = 0; i < functions.size(); ++i)
      y |= static_cast<std::uint32_t>((functions[i] >> x) & 1u) << i;
    if (((relation.allowed[x] >> y) & 1u) == 0) return false;
  }
  return true;
}

// The least sum of costs of functions inside a total relation, of all that there are. cost[f] is
// that of function f of the inputs, of which there are at most three.
class LeastCost {
 public:
  LeastCost(TableRelation relation, std::vector<double> cost)
      : relation_{std::move(relation)}, cost_{std::move(cost)}, by_cost_(cost_.size()) {
    std::iota(by_cost_.begin(), by_cost_.end(), 0u);
    std::ranges::stable_sort(by_cost_, {}, [this](std::uint32_t f) { return cost_[f]; });
    extend(0, 0, relation_.allowed);
  }
  double value() const { return least_; }

 private:
  void extend(std::uint32_t output, double sum, const std::vector<std::uint32_t>& allowed) {
    if (output == relation_.outputs) {
      least_ = std::min(least_, sum);
      return;
    }
    const std::uint32_t zero = relation_.vectors_with(output, false);
    const std::uint32_t one = relation_.vectors_with(output, true);
    for (const std::uint32_t f : by_cost_) {
      if (sum + cost_[f] >= least_) return;
      std::vector<std::uint32_t> rest = allowed;
      for (std::uint32_t x = 0; x < rest.size(); ++x) rest[x] &= ((f >> x) & 1u) != 0 ? one : zero;
      if (std::ranges::find(rest, 0u) == rest.end()) extend(output + 1, sum + cost_[f], rest);
    }
  }

  TableRelation relation_;
  std::vector<double> cost_;
  std::vector<std::uint32_t> by_cost_;
  double least_ = std::numeric_limits<double>::infinity();
};

// Half of them say that a random gate of the outputs has the value of a random function, and so are
// total unless the gate is constant; the others allow each vector by chance, and some are not
// total.
inline TableRelation random_relation(Random& random, std::uint32_t inputs, std::uint32_t outputs) {
  TableRelation relation{inputs, outputs, {}};
  const std::uint32_t all = (1u << (1u << outputs)) - 1;
  const std::uint32_t gate = random.below(all + std::size_t{1});
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
