// bench/boolean_relations.cpp - how many relations does the search inside a Boolean relation
// explore in a second, and how long does it take to write a function as a gate of simpler ones?
// Usage: bench_boolean_relations [options of Google Benchmark]
// "search": 20 random relations of so many inputs and outputs, with at most 1000 relations explored
// each, breadth first or in depth; `relations` are those explored in a second. "decompose": 20
// random functions of so many variables by one gate of the built-in library. Fixed seeds. All
// solutions are compared with the relations, all candidates with the functions.
#include <benchmark/benchmark.h>

#include <random>

#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"
#include "decomposition/boolean_decomposer.h"
#include "decomposition/brel_solver.h"
#include "decomposition/easy_cost.h"
#include "decomposition/gate_library.h"

namespace vorel::bench {
namespace {

using bdd::Bdd;

constexpr int cases = 20;

std::vector<Bdd> variables(std::uint32_t first, std::uint32_t count) {
  std::vector<Bdd> list;
  for (std::uint32_t i = 0; i < count; ++i) list.push_back(bdd::bdd_variable(first + i));
  return list;
}

// A sum of products over the variables, about half of them in each.
Bdd random_sum(std::mt19937& random, const std::vector<Bdd>& over) {
  Bdd sum(false);
  for (std::size_t cube = 0; cube < over.size() / 2 + 1; ++cube) {
    Bdd product(true);
    for (const Bdd& variable : over)
      if (const auto choice = random() % 4; choice < 2)
        product &= choice == 0 ? variable : ~variable;
    sum |= product;
  }
  return sum;
}

// What the outputs have to satisfy depends on several functions of the inputs.
decomposition::BrelRelation random_relation(std::mt19937& random, std::uint32_t inputs,
                                            std::uint32_t outputs) {
  decomposition::BrelRelation result{{}, variables(outputs, inputs), variables(0, outputs)};
  result.relation = Bdd(true);
  for (std::uint32_t i = 0; i < outputs; ++i) {
    const Bdd condition = random_sum(random, result.inputs);
    Bdd allowed = random_sum(random, result.outputs);
    if (allowed.is_constant()) allowed = result.outputs[i];
    result.relation = ite(condition, result.relation, allowed);
  }
  return result;
}

bool is_inside(const decomposition::BrelRelation& relation, const std::vector<Bdd>& functions) {
  return compose(relation.relation, functions).is_true();
}

void search(benchmark::State& state) {
  decomposition::BrelOptions options;
  options.max_explored = 1000;
  options.breadth_first = state.range(2) != 0;
  std::mt19937 random(5);
  std::vector<decomposition::BrelRelation> relations;
  for (int i = 0; i < cases; ++i)
    relations.push_back(random_relation(random, static_cast<std::uint32_t>(state.range(0)),
                                        static_cast<std::uint32_t>(state.range(1))));
  const decomposition::BrelCallbacks callbacks{decomposition::easy_cost, decomposition::easy_cost};
  double explored = 0;
  for (auto _ : state) {
    for (const auto& relation : relations) {
      const auto result = decomposition::brel_solve(relation.relation, relation.inputs,
                                                    relation.outputs, options, callbacks);
      explored += result.explored;
      for (const auto& solution : result.solutions)
        if (!is_inside(relation, solution.functions)) state.SkipWithError("wrong solution");
      if (result.solutions.empty()) state.SkipWithError("no solution");
    }
  }
  state.counters["relations"] = benchmark::Counter(explored, benchmark::Counter::kIsRate);
}

void decompose(benchmark::State& state, const char* gate_name) {
  const auto library = decomposition::GateLibrary::read("");
  if (!library) return state.SkipWithError("no library");
  const decomposition::DecomposingGate gate(library->gate(gate_name), 0);
  std::mt19937 random(7);
  const std::vector<Bdd> context = variables(8, static_cast<std::uint32_t>(state.range(0)));
  std::vector<decomposition::DecomposedFunction> functions;
  for (int i = 0; i < cases; ++i) {
    const Bdd f = random_sum(random, context), care = random_sum(random, context);
    const auto covers = bdd::BDDCover::two_valued(f & care, ~f & care);
    functions.push_back({covers, bdd::literal_count(f), {}});
  }
  double candidates = 0;
  for (auto _ : state) {
    decomposition::LiteralCounts literals;
    decomposition::BooleanDecomposer decomposer(literals);
    candidates = 0;
    for (const auto& function : functions) {
      const Bdd relation =
          decomposition::BooleanDecomposer::characteristic_function(function.covers, gate.covers);
      for (const auto& candidate : decomposer.decompose(function, gate)) {
        ++candidates;
        if (!compose(relation, candidate.pins).is_true()) state.SkipWithError("wrong candidate");
      }
    }
  }
  state.counters["candidates"] = candidates;
}

BENCHMARK(search)
    ->ArgNames({"inputs", "outputs", "breadth"})
    ->Args({4, 2, 1})
    ->Args({6, 3, 1})
    ->Args({6, 4, 1})
    ->Args({10, 4, 1})
    ->Args({6, 4, 0})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(decompose, and2, "and2:combinational")
    ->Arg(5)
    ->Arg(8)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(decompose, oai22, "oai22:combinational")
    ->Arg(5)
    ->Arg(8)
    ->Arg(12)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(decompose, c_element, "c_element0:asynch")
    ->Arg(5)
    ->Arg(8)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vorel::bench

BENCHMARK_MAIN();
