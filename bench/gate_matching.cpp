// Matching of gates: all gates of a library, each on its own, against one function. A row is a kind
// of functions: how many there were, how many matches they have with all the gates, the codes at
// which choices were wrong, milliseconds for one function as median and at worst, of the best of
// five runs each, and whether each match implements its function. Fixed seeds.
// Usage: bench_gate_matching [LIBRARY]     without: the built-in library
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <random>

#include "decomposition/gate_library.h"
#include "decomposition/gate_matcher.h"

namespace vorel::bench {
namespace {

constexpr int runs = 5;
constexpr std::uint32_t functions = 50;

// A random sum of products of the variables, each with as many literals.
bdd::Bdd random_sum(std::mt19937& random, std::uint32_t variables, std::uint32_t products,
                    std::uint32_t literals) {
  bdd::Bdd sum(false);
  for (std::uint32_t i = 0; i < products; ++i) {
    bdd::Bdd product(true);
    for (std::uint32_t j = 0; j < literals; ++j) {
      const bdd::Bdd variable = bdd::bdd_variable(static_cast<std::uint32_t>(random() % variables));
      product &= random() % 2 == 0 ? variable : ~variable;
    }
    sum |= product;
  }
  return sum;
}

struct Kind {
  const char* name;
  bdd::BDDCover (*make)(std::mt19937& random);
};

constexpr Kind kinds[] = {
    {"any function of 3 variables",
     [](std::mt19937& r) { return bdd::BDDCover(random_sum(r, 3, 4, 3)); }},
    {"sums of 2 products of 4 variables",
     [](std::mt19937& r) { return bdd::BDDCover(random_sum(r, 4, 2, 2)); }},
    {"any function of 4 variables",
     [](std::mt19937& r) { return bdd::BDDCover(random_sum(r, 4, 8, 4)); }},
    // Much of it is free: 8 variables, of which not all are needed.
    {"partial signals of 8 variables",
     [](std::mt19937& r) {
       const bdd::Bdd on = random_sum(r, 8, 2, 4), off = random_sum(r, 8, 3, 4) & ~on;
       const bdd::Bdd value = bdd::bdd_variable(7);
       return bdd::BDDCover(on & ~value, on & value, off & value, off & ~value);
     }},
};

struct Tried {
  double seconds = 0;
  std::uint64_t matches = 0, codes = 0;
  bool is_right = true;
};

using Matchers = std::vector<decomposition::GateMatcher>;

Tried try_all(Matchers& matchers, const bdd::BDDCover& query) {
  Tried tried;
  std::vector<decomposition::GateMatch> found;
  for (const auto& matcher : matchers) tried.codes -= matcher.stats().codes;
  const auto start = std::chrono::steady_clock::now();
  for (auto& matcher : matchers) found.push_back(matcher.match(query));
  tried.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  for (std::size_t i = 0; i < matchers.size(); ++i) {
    tried.codes += matchers[i].stats().codes;
    if (!found[i].exists()) continue;
    ++tried.matches;
    tried.is_right = tried.is_right && matchers[i].implements(query, found[i]);
  }
  return tried;
}

// Matchers remember their answers, so that each run has its own.
void measure(const Kind& kind, const decomposition::GateLibrary& library,
             const std::vector<std::string>& gates) {
  std::vector<Tried> best(functions, {.seconds = std::numeric_limits<double>::infinity()});
  for (int run = 0; run < runs; ++run) {
    Matchers matchers;
    for (const std::string& gate : gates) matchers.emplace_back(library, std::vector{gate});
    std::mt19937 random(1);
    for (Tried& of_function : best) {
      const Tried tried = try_all(matchers, kind.make(random));
      if (tried.seconds < of_function.seconds) of_function = tried;
    }
  }
  Tried sum;
  std::vector<double> seconds;
  for (const Tried& tried : best) {
    seconds.push_back(tried.seconds);
    sum.matches += tried.matches;
    sum.codes += tried.codes;
    sum.is_right = sum.is_right && tried.is_right;
  }
  std::ranges::sort(seconds);
  std::printf("%-34s %9u %8llu %8llu %9.3f %9.3f  %s\n", kind.name, functions,
              static_cast<unsigned long long>(sum.matches),
              static_cast<unsigned long long>(sum.codes), seconds[seconds.size() / 2] * 1e3,
              seconds.back() * 1e3, sum.is_right ? "yes" : "NO");
}

int run(const std::string& file_name) {
  const auto library = decomposition::GateLibrary::read(file_name);
  if (!library) return 2;
  const std::vector<std::string> gates = library->gate_list(~0u, true);
  std::printf("%zu gates, each alone\n%-34s %9s %8s %8s %9s %9s  %s\n", gates.size(), "",
              "functions", "matches", "codes", "ms median", "ms worst", "right");
  for (const Kind& kind : kinds) measure(kind, *library, gates);
  return 0;
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) { return vorel::bench::run(argc > 1 ? argv[1] : ""); }
