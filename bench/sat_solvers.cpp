// bench/sat_solvers.cpp - how does the core with native groups compare with MiniSat?
// Usage: bench_sat_solvers FILE.cnf...   (formulas stored by `vorel -s`)
// A row per formula and question: the median seconds of three runs of both solvers and their ratio.
//   solve      the formula is solved once
//   enumerate  models are excluded by clauses in a group, up to 1000; then the group is deleted and
//              all begins again, three times
// The files are asked both; some hard formulas of our own encoders are solved. How soon a model is
// met that is hard to find depends on the order of variables and clauses, and any one order is
// luck: of such a formula many orders are solved once, the same by both, and the seconds are their
// mean.
// Seconds are those of the processor. Before the table: the memory of the process after 100, 1000
// and 10,000 rounds of making, filling, solving and deleting a group. Models are checked, answers
// compared.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <numeric>
#include <optional>
#include <random>
#include <string>

#include "sat/cnf_formula.h"
#include "sat/integer_circuit.h"
#include "sat/minisat_solver.h"
#include "sat/zchaff_solver.h"

namespace vorel::bench {
namespace {

constexpr std::size_t runs = 3;
constexpr int most_models = 1000, rounds = 3;

struct Formula {
  std::uint32_t variables = 0;
  std::vector<sat::Lits> clauses;
};

std::optional<Formula> read_dimacs(const std::string& name) {
  std::ifstream file(name);
  std::string p, cnf;
  std::size_t count = 0;
  Formula formula;
  if (!(file >> p >> cnf >> formula.variables >> count)) return std::nullopt;
  sat::Lits clause;
  for (long number = 0; file >> number;) {
    if (number != 0) {
      const sat::Var variable{static_cast<std::uint32_t>(std::labs(number)) - 1};
      clause.push_back(sat::Lit(variable, number < 0));
    } else {
      formula.clauses.push_back(clause);
      clause.clear();
    }
  }
  return formula;
}

// Formulas that are hard for their size, by our own encoders.

Formula formula_of(const sat::CnfFormula& built) {
  Formula formula{built.solver().num_vars(), {}};
  built.solver().visit_clauses([&](std::span<const sat::Lit> clause) {
    formula.clauses.emplace_back(clause.begin(), clause.end());
  });
  return formula;
}

sat::Lits decided(sat::CnfFormula& formula, std::uint32_t count) {
  sat::Lits lits;
  for (std::uint32_t i = 0; i < count; ++i) lits.emplace_back(formula.new_var(false), false);
  return lits;
}

// A number as the product of two of `width` bits, neither of them 1.
Formula factors(std::uint64_t number, std::uint32_t width) {
  sat::CnfFormula formula{sat::CnfParams{}};
  sat::IntegerCircuit circuit(formula);
  const sat::Lits x = decided(formula, width), y = decided(formula, width);
  std::vector<sat::Lits> rows;
  for (std::uint32_t i = 0; i < width; ++i) {
    rows.emplace_back(i, sat::LitFalse);
    for (const sat::Lit bit : x)
      rows.back().push_back(
          formula.make_gate(sat::Gate(sat::GateAnd, {bit, y[i]}), sat::PermanentGroup));
  }
  circuit.assert_equal(circuit.sum(rows, sat::PermanentGroup), number, sat::PermanentGroup);
  circuit.assert_greater(x, 1, sat::PermanentGroup);
  circuit.assert_greater(y, 1, sat::PermanentGroup);
  circuit.assert_not_greater(x, y, sat::PermanentGroup);
  return formula_of(formula);
}

// One pigeon more than holes.
Formula pigeons(std::uint32_t hole_count) {
  sat::CnfFormula formula{sat::CnfParams{}};
  std::vector<sat::Lits> holes(hole_count);
  for (std::uint32_t pigeon = 0; pigeon <= hole_count; ++pigeon) {
    const sat::Lits places = decided(formula, hole_count);
    formula.add_clause(places, sat::PermanentGroup);
    for (std::uint32_t h = 0; h < hole_count; ++h) holes[h].push_back(places[h]);
  }
  for (const sat::Lits& hole : holes) formula.add_at_most_one(hole, sat::PermanentGroup);
  return formula_of(formula);
}

// A random graph with three edges per node, covered by at most `size` nodes.
Formula cover(std::uint32_t nodes, std::uint64_t size) {
  sat::CnfFormula formula{sat::CnfParams{}};
  std::mt19937 random(5);
  const sat::Lits chosen = decided(formula, nodes);
  for (std::uint32_t i = 0; i < 3 * nodes; ++i) {
    const auto a = random() % nodes, b = random() % nodes;
    if (a != b) formula.add_binary(chosen[a], chosen[b], sat::PermanentGroup);
  }
  sat::IntegerCircuit circuit(formula);
  circuit.assert_at_most(circuit.count_ones(chosen, sat::PermanentGroup), size,
                         sat::PermanentGroup);
  return formula_of(formula);
}

// The same formula with variables, clauses and literals in another order.
Formula shuffled(const Formula& formula, std::uint32_t seed) {
  std::mt19937 random(seed);
  const auto shuffle = [&](auto& list) {
    for (std::size_t i = list.size(); i > 1; --i) std::swap(list[i - 1], list[random() % i]);
  };
  std::vector<std::uint32_t> numbers(formula.variables);
  std::iota(numbers.begin(), numbers.end(), 0u);
  shuffle(numbers);
  Formula result = formula;
  for (sat::Lits& clause : result.clauses) {
    for (sat::Lit& lit : clause)
      lit = sat::Lit(sat::Var{numbers[static_cast<std::uint32_t>(lit.variable())]}, lit.negated());
    shuffle(clause);
  }
  shuffle(result.clauses);
  return result;
}

std::vector<Formula> in_orders(std::uint32_t orders, const Formula& formula) {
  std::vector<Formula> formulas;
  for (std::uint32_t seed = 0; seed < orders; ++seed) formulas.push_back(shuffled(formula, seed));
  return formulas;
}

void load(sat::SatSolver& solver, const Formula& formula) {
  for (std::uint32_t v = 0; v < formula.variables; ++v) solver.freeze(solver.new_var(false), true);
  for (const sat::Lits& clause : formula.clauses) solver.add_clause(clause, sat::PermanentGroup);
}

bool is_true(const sat::SatSolver& solver, sat::Lit lit) {
  return solver.value(lit.variable()) ==
         (lit.negated() ? sat::ModelValue::no : sat::ModelValue::yes);
}

bool is_model(const sat::SatSolver& solver, const Formula& formula) {
  return std::ranges::all_of(formula.clauses, [&](const sat::Lits& clause) {
    return std::ranges::any_of(clause, [&](sat::Lit lit) { return is_true(solver, lit); });
  });
}

struct Result {
  double seconds = 0;
  long answer = 0;  // what both solvers must agree on
  bool checked = true;
};

double seconds_since(std::clock_t start) {
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

Result solve_once(sat::SatSolver& solver, const Formula& formula) {
  load(solver, formula);
  const std::clock_t start = std::clock();
  const bool sat = solver.solve(true, true) == sat::SolveStatus::sat;
  return {seconds_since(start), sat, !sat || is_model(solver, formula)};
}

// On the variables from 0 to `width` - 1.
int exclude_models(sat::SatSolver& solver, std::uint32_t width, sat::ClauseGroup group) {
  int models = 0;
  sat::Lits clause;
  while (models < most_models && solver.solve(true, true) == sat::SolveStatus::sat) {
    ++models;
    clause.clear();
    for (std::uint32_t v = 0; v < width; ++v) {
      const sat::Lit lit(sat::Var{v}, false);
      clause.push_back(is_true(solver, lit) ? ~lit : lit);
    }
    solver.add_clause(clause, group);
  }
  return models;
}

Result enumerate(sat::SatSolver& solver, const Formula& formula) {
  load(solver, formula);
  const std::clock_t start = std::clock();
  Result result;
  for (int round = 0; round < rounds; ++round) {
    const sat::ClauseGroup group = solver.new_group();
    result.answer += exclude_models(solver, formula.variables, group);
    solver.delete_group(group);
  }
  result.seconds = seconds_since(start);
  return result;
}

using Question = Result (*)(sat::SatSolver&, const Formula&);

template <class Solver>
Result median_of_runs(const Formula& formula, Question question, std::size_t run_count) {
  std::vector<Result> results;
  for (std::size_t run = 0; run < run_count; ++run) {
    Solver solver;
    results.push_back(question(solver, formula));
  }
  std::ranges::sort(results, {}, &Result::seconds);
  return results[run_count / 2];
}

template <class Solver>
Result mean_of(std::span<const Formula> formulas, Question question) {
  Result sum;
  for (const Formula& formula : formulas) {
    const Result result =
        median_of_runs<Solver>(formula, question, formulas.size() == 1 ? runs : 1);
    sum.seconds += result.seconds / static_cast<double>(formulas.size());
    sum.answer += result.answer;
    sum.checked = sum.checked && result.checked;
  }
  return sum;
}

void compare(const std::string& name, const char* title, std::span<const Formula> formulas,
             Question question) {
  const Formula& formula = formulas.front();
  const Result own = mean_of<sat::ZChaffSolver>(formulas, question);
  const Result other = mean_of<sat::MiniSatSolver>(formulas, question);
  const bool good = own.checked && other.checked && own.answer == other.answer;
  std::printf("%-32s %-10s %8u %8zu %9.4f %9.4f %7.2f %7ld  %s\n", name.c_str(), title,
              formula.variables, formula.clauses.size(), own.seconds, other.seconds,
              own.seconds / other.seconds, own.answer, good ? "checked" : "WRONG");
  std::fflush(stdout);
}

void compare(const std::string& name, const char* title, const Formula& formula,
             Question question) {
  compare(name, title, std::span(&formula, 1), question);
}

long resident_kilobytes() {
  long total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE) / 1024;
}

// A permanent part that is easy, and groups that make it hard for a moment.
void measure_memory() {
  constexpr std::uint32_t variables = 100;
  std::mt19937 random(1);
  sat::ZChaffSolver solver;
  for (std::uint32_t v = 0; v < variables; ++v) solver.new_var(false);
  const auto add = [&](int count, sat::ClauseGroup group) {
    for (int i = 0; i < count; ++i) {
      sat::Lits clause;
      for (int k = 0; k < 3; ++k)
        clause.push_back(
            sat::Lit::from_code(static_cast<std::uint32_t>(random() % (2 * variables))));
      solver.add_clause(clause, group);
    }
  };
  add(300, sat::PermanentGroup);
  for (int round = 1; round <= 10000; ++round) {
    const sat::ClauseGroup group = solver.new_group();
    add(120, group);
    solver.solve(true, true);
    solver.delete_group(group);
    if (round != 100 && round != 1000 && round != 10000) continue;
    const zchaff::SolverCoreStats stats = solver.core().stats();
    std::printf("%6d rounds of a group: %ld kB, %llu conflicts, %llu learnt clauses left\n", round,
                resident_kilobytes(), static_cast<unsigned long long>(stats.conflicts),
                static_cast<unsigned long long>(stats.learnt_clauses));
  }
}

void compare_on_hard_formulas() {
  compare("factors of a product, 18 bits", "solve", factors(196613ull * 200003, 18), solve_once);
  compare("factors of a prime, 17 bits", "solve", factors(8589934583, 17), solve_once);
  compare("9 pigeons, 8 holes", "solve", pigeons(8), solve_once);
  compare("10 pigeons, 9 holes", "solve", pigeons(9), solve_once);
  compare("cover of 70 nodes by 41", "solve", cover(70, 41), solve_once);
  for (const std::uint64_t size : {43, 44, 45})
    compare("cover by " + std::to_string(size) + ", 500 orders", "solve",
            in_orders(500, cover(70, size)), solve_once);
  compare("cover by 45, 20 orders", "enumerate", in_orders(20, cover(70, 45)), enumerate);
}

void compare_on_file(const std::string& name) {
  const std::optional<Formula> formula = read_dimacs(name);
  if (!formula) {
    std::printf("%-32s not read\n", name.c_str());
    return;
  }
  compare(name, "solve", *formula, solve_once);
  compare(name, "enumerate", *formula, enumerate);
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) {
  using namespace vorel;
  bench::measure_memory();
  std::printf("%-32s %-10s %8s %8s %9s %9s %7s %7s\n", "input", "question", "vars", "clauses",
              "own", "minisat", "ratio", "answer");
  bench::compare_on_hard_formulas();
  for (int i = 1; i < argc; ++i) bench::compare_on_file(argv[i]);
  return 0;
}
