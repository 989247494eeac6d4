// bench/bdd_covers.cpp - what do BDDs cost: operations, order, hash, and the way to a cover and
// back? A row per family of functions of 20 variables: cubes of the sum that the function is made
// from, nodes and paths of its diagram, cubes and literals of its cover, the time to the cover and
// that back to a BDD as median of five runs over all functions of the family, and whether each BDD
// that came back is the function. Below them the operations on random functions. Fixed seeds.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>

#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"

namespace vorel::bench {
namespace {

constexpr std::uint32_t width = 20;
constexpr int runs = 5;

class Random {
 public:
  std::uint32_t below(std::uint32_t end) { return static_cast<std::uint32_t>(engine_() % end); }

 private:
  std::mt19937 engine_{20};
};

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> times) {
  std::ranges::sort(times);
  return times[times.size() / 2];
}

std::vector<bdd::Bdd> all_variables() {
  std::vector<bdd::Bdd> variables;
  for (std::uint32_t i = 0; i < width; ++i) variables.push_back(bdd::bdd_variable(i));
  return variables;
}

struct Family {
  const char* name;
  std::uint32_t cubes, literals;  // of each sum, and of each of its cubes
  bool unate;
};

toolkit::Cover random_cover(Random& random, const Family& family) {
  toolkit::Cover cover(width, false);
  for (std::uint32_t i = 0; i < family.cubes; ++i) {
    toolkit::Cube cube(width, toolkit::Ternary::dash);
    for (std::uint32_t j = 0; j < family.literals; ++j) {
      const bool negated = !family.unate && random.below(2) == 0;
      cube.set(random.below(width), negated ? toolkit::Ternary::zero : toolkit::Ternary::one);
    }
    cover.add(cube);
  }
  return cover;
}

void measure(const Family& family) {
  constexpr int functions = 20;
  Random random;
  const std::vector<bdd::Bdd> variables = all_variables();
  std::vector<bdd::Bdd> sums;
  double nodes = 0, cubes = 0, literals = 0;
  for (int i = 0; i < functions; ++i) {
    sums.push_back(bdd::bdd_of(random_cover(random, family), variables));
    nodes += static_cast<double>(bdd::node_count(sums.back()));
  }
  bool right = true;
  std::vector<double> to_cover, to_bdd;
  for (int run = 0; run < runs; ++run) {
    std::vector<bdd::SupportCover> forms;
    auto start = std::chrono::steady_clock::now();
    for (const bdd::Bdd& f : sums) forms.push_back(bdd::cover_of(f));
    to_cover.push_back(seconds_since(start));
    std::vector<std::vector<bdd::Bdd>> supports;
    for (const bdd::Bdd& f : sums) supports.push_back(f.support_variables());
    std::vector<bdd::Bdd> back;
    start = std::chrono::steady_clock::now();
    for (int i = 0; i < functions; ++i) back.push_back(bdd::bdd_of(forms[i].cover, supports[i]));
    to_bdd.push_back(seconds_since(start));
    right = right && back == sums;
    cubes = literals = 0;
    for (const bdd::SupportCover& form : forms) {
      cubes += static_cast<double>(form.cover.size());
      literals += static_cast<double>(form.cover.literal_count());
    }
  }
  std::fflush(stdout);
  std::printf("%-22s %5u %7.0f %7.1f %8.1f %10.3f %9.3f  %s\n", family.name, family.cubes,
              nodes / functions, cubes / functions, literals / functions,
              median(to_cover) / functions * 1e3, median(to_bdd) / functions * 1e3,
              right ? "yes" : "NO");
}

template <class Work>
void row(const char* name, std::size_t count, Work work) {
  std::vector<double> times;
  for (int run = 0; run < runs; ++run) {
    const auto start = std::chrono::steady_clock::now();
    work();
    times.push_back(seconds_since(start));
  }
  std::printf("%-34s %9.3f\n", name, median(times) / static_cast<double>(count) * 1e6);
}

void measure_operations() {
  Random random;
  std::vector<bdd::Bdd> functions;
  const std::vector<bdd::Bdd> variables = all_variables();
  for (int i = 0; i < 1000; ++i)
    functions.push_back(bdd::bdd_of(random_cover(random, {"", 8, 4, false}), variables));
  const std::size_t count = functions.size();
  std::size_t sum = 0;  // keeps results in use
  std::printf("\n%-34s %9s\n", "1000 functions of 8 cubes", "us each");
  row("copy", count, [&] { sum += std::vector<bdd::Bdd>(functions).size(); });
  row("support", count, [&] {
    for (const bdd::Bdd& f : functions) sum += f.support().size();
  });
  row("hash", count, [&] {
    for (const bdd::Bdd& f : functions) sum += bdd::hash_of(f);
  });
  row("sort, by comparison", count * 10, [&] {
    std::vector<bdd::Bdd> sorted = functions;
    std::ranges::sort(sorted, std::less<>());
    sum += sorted.size();
  });
  row("xor with the next", count, [&] {
    for (std::size_t i = 0; i < count; ++i)
      sum += (functions[i] ^ functions[(i + 1) % count]).is_constant() ? 1 : 0;
  });
  row("minterm signature", count, [&] {
    for (const bdd::Bdd& f : functions) sum += f.minterm_signature().size();
  });
  if (sum == 0) std::printf("nothing was done\n");
}

}  // namespace
}  // namespace vorel::bench

int main() {
  std::printf("%-22s %5s %7s %7s %8s %10s %9s  %s\n", "20 variables", "sum", "nodes", "cubes",
              "literals", "ms cover", "ms BDD", "same");
  for (const vorel::bench::Family& family : {vorel::bench::Family{"small, binate", 6, 4, false},
                                             {"small, unate", 8, 4, true},
                                             {"middle, binate", 12, 5, false},
                                             {"middle, unate", 15, 6, true},
                                             {"large, binate", 20, 7, false}})
    vorel::bench::measure(family);
  vorel::bench::measure_operations();
  return 0;
}
