// oracle/truth_tables.h - functions of ten variables by their values.
// Here:      what BDDs are compared with, and random functions in both forms.
#pragma once

#include <bitset>
#include <vector>

#include "bdd/bdd.h"
#include "oracle/random.h"

namespace vorel::oracle {

constexpr std::uint32_t table_variables = 10;
constexpr std::uint32_t table_size = 1u << table_variables;

// Bit a is the value for the assignment whose variable v is bit v of a.
using Table = std::bitset<table_size>;

template <class Value>
Table table_from(Value value) {
  Table table;
  for (std::uint32_t a = 0; a < table_size; ++a) table[a] = value(a);
  return table;
}

inline Table variable_table(std::uint32_t v) {
  return table_from([v](std::uint32_t a) { return ((a >> v) & 1u) != 0; });
}

inline Table table_of(const bdd::Bdd& f) {
  std::vector<int> inputs(table_variables);
  return table_from([&](std::uint32_t a) {
    for (std::uint32_t v = 0; v < table_variables; ++v) inputs[v] = static_cast<int>((a >> v) & 1u);
    return f.evaluate(inputs);
  });
}

inline Table cofactor_table(const Table& f, std::uint32_t v, bool value) {
  const std::uint32_t bit = 1u << v;
  return table_from([&](std::uint32_t a) { return f[value ? a | bit : a & ~bit]; });
}

inline std::vector<std::uint32_t> support_of(const Table& f) {
  std::vector<std::uint32_t> support;
  for (std::uint32_t v = 0; v < table_variables; ++v)
    if (cofactor_table(f, v, false) != cofactor_table(f, v, true)) support.push_back(v);
  return support;
}

// The same function twice.
struct Function {
  bdd::Bdd bdd;
  Table table;
};

// Of the variables that the mask names: constants, literals and what operations make of them.
inline Function random_function(Random& random, std::uint32_t mask, int depth) {
  if (depth == 0 || random.chance(5)) {
    const std::uint32_t v = random.below(table_variables);
    if (((mask >> v) & 1u) == 0) {
      const bool value = random.chance(50);
      return {bdd::Bdd(value), table_from([&](std::uint32_t) { return value; })};
    }
    if (random.chance(50)) return {~bdd::bdd_variable(v), ~variable_table(v)};
    return {bdd::bdd_variable(v), variable_table(v)};
  }
  const Function a = random_function(random, mask, depth - 1);
  const Function b = random_function(random, mask, depth - 1);
  switch (random.below(3)) {
    case 0:
      return {a.bdd & b.bdd, a.table & b.table};
    case 1:
      return {a.bdd | b.bdd, a.table | b.table};
    default:
      return {a.bdd ^ b.bdd, a.table ^ b.table};
  }
}

inline Function random_function(Random& random) {
  return random_function(random, random.below(table_size), static_cast<int>(random.below(6)));
}

}  // namespace vorel::oracle
