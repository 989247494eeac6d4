// bench/two_level.cpp - how small and how fast are minimised and factored random functions?
// Usage: bench_two_level [ROW], of the table of families from 0; without it, all
// Rows: functions of some variables, each point in ON, in OFF or free by chance. Columns: seconds
// of processor time for all functions (median of five runs), cubes and literals of all results,
// literals after factoring. "one prime" chooses among one prime for each cube, "repeat" does so
// again and again from reduced cubes: the ways without a choice among many primes. "exact" is the
// least there is, up to six variables. Every result is compared with its function; a wrong one ends
// the program.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <span>
#include <vector>

#include "oracle/exact_minimum.h"
#include "toolkit/factor.h"
#include "toolkit/minimise.h"
#include "toolkit/packed_cover.h"
#include "toolkit/toolkit_testing.h"

namespace vorel::bench {
namespace {

struct Family {
  std::size_t width, on, off;  // chances in percent
  int functions;
};
constexpr Family families[] = {
    {4, 30, 40, 1000}, {5, 30, 40, 1000}, {6, 10, 10, 1000}, {6, 30, 40, 1000}, {8, 10, 10, 1000},
    {8, 30, 40, 1000}, {12, 1, 1, 1000},  {12, 5, 5, 100},   {12, 30, 40, 20},
};

struct Function {
  toolkit::Cover on, off;
};

struct Row {
  const char* way = "";
  double minimise_seconds = 0, factor_seconds = 0;
  oracle::CoverCost cost = {};
  std::size_t factored = 0;
};

template <class Work>
double median_seconds(const Work& work) {
  std::vector<double> seconds;
  for (int run = 0; run < 5; ++run) {
    const std::clock_t start = std::clock();
    work();
    seconds.push_back(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  std::ranges::sort(seconds);
  return seconds[2];
}

// Each point of ON lies in a cube of the result, no point of OFF does.
bool is_right(const Function& function, const toolkit::Cover& result) {
  const toolkit::PackedCover rows(result), on(function.on), off(function.off);
  const auto is_covered = [&](toolkit::ConstRow point) {
    for (std::size_t i = 0; i < rows.size(); ++i)
      if (toolkit::contains(rows[i], point)) return true;
    return false;
  };
  for (std::size_t i = 0; i < on.size(); ++i)
    if (!is_covered(on[i])) return false;
  for (std::size_t i = 0; i < off.size(); ++i)
    if (is_covered(off[i])) return false;
  return true;
}

Row measure(const char* way, const std::vector<Function>& functions,
            const toolkit::MinimiseParams& params) {
  Row row;
  row.way = way;
  std::vector<toolkit::Cover> results(functions.size());
  row.minimise_seconds = median_seconds([&] {
    for (std::size_t i = 0; i < functions.size(); ++i)
      results[i] = toolkit::minimise(functions[i].on, functions[i].off, params);
  });
  row.factor_seconds = median_seconds([&] {
    row.factored = 0;
    for (const toolkit::Cover& result : results)
      row.factored += toolkit::literal_count(toolkit::factor(result));
  });
  for (std::size_t i = 0; i < functions.size(); ++i) {
    if (!is_right(functions[i], results[i])) {
      std::printf("wrong result\n");
      std::exit(1);
    }
    row.cost.cubes += results[i].size();
    row.cost.literals += results[i].literal_count();
  }
  return row;
}

std::uint64_t word_of(const toolkit::Cover& points) {
  std::uint64_t word = 0;
  const toolkit::TruthTable table = toolkit::table_of(points);
  for (std::size_t p = 0; p < table.size(); ++p) word |= std::uint64_t{table[p]} << p;
  return word;
}

oracle::CoverCost exact_cost(const std::vector<Function>& functions) {
  oracle::CoverCost sum;
  for (const auto& [on, off] : functions) {
    const oracle::CoverCost cost =
        oracle::ExactMinimum(on.width(), word_of(on), word_of(off)).cost();
    sum = {sum.cubes + cost.cubes, sum.literals + cost.literals};
  }
  return sum;
}

void print_family(const Family& family) {
  toolkit::RandomCovers random(1);
  std::vector<Function> functions;
  while (std::ssize(functions) < family.functions) {
    auto [on, off] = random.points(family.width, family.on, family.off);
    if (!on.empty() && !off.empty()) functions.push_back({std::move(on), std::move(off)});
  }
  const toolkit::MinimiseParams one_prime{.max_primes_per_cube = 0,
                                          .covering = {.steps_per_row = 0}};
  toolkit::MinimiseParams repeat = one_prime;
  repeat.repeat = true;
  for (const Row& row :
       {measure("default", functions, {}), measure("one prime", functions, one_prime),
        measure("repeat", functions, repeat)})
    std::printf("%2zu %3zu%% %3zu%% %5d  %-10s %9.3f %9.3f %8zu %8zu %8zu\n", family.width,
                family.on, family.off, family.functions, row.way, row.minimise_seconds,
                row.factor_seconds, row.cost.cubes, row.cost.literals, row.factored);
  std::fflush(stdout);
  if (family.width > 6) return;
  const oracle::CoverCost exact = exact_cost(functions);
  std::printf("%2zu %3zu%% %3zu%% %5d  %-10s %9s %9s %8zu %8zu\n", family.width, family.on,
              family.off, family.functions, "exact", "", "", exact.cubes, exact.literals);
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) {
  std::printf("%2s %4s %4s %5s  %-10s %9s %9s %8s %8s %8s\n", "n", "ON", "OFF", "count", "way",
              "minimise", "factor", "cubes", "literals", "factored");
  const std::span rows(vorel::bench::families);
  if (argc > 1) {
    vorel::bench::print_family(rows[std::strtoul(argv[1], nullptr, 10) % rows.size()]);
    return 0;
  }
  for (const vorel::bench::Family& family : rows) vorel::bench::print_family(family);
}
