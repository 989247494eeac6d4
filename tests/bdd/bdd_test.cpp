#include "bdd/bdd.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "bdd/bdd_manager.h"
#include "bdd/bdd_structure.h"
#include "bdd/cudd_interface.h"
#include "oracle/truth_tables.h"
#include "support/seeds.h"

namespace vorel::bdd {
namespace {

using namespace oracle;

void reorder_at_random(Random& random) {
  DdManager* const cudd = BddManager::instance().cudd();
  bdd_variable(table_variables - 1);
  std::vector<int> order(BddManager::instance().variable_count());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<int>(i);
  random.shuffle(order);
  ASSERT_EQ(Cudd_ShuffleHeap(cudd, order.data()), 1);
}

TEST(Bdd, OperationsAgreeWithTruthTables) {
  support::for_each_seed(400, [&](std::uint64_t seed) {
    Random random(seed);
    if (seed % 8 == 0) reorder_at_random(random);
    const Function f = random_function(random), g = random_function(random),
                   h = random_function(random);
    ASSERT_EQ(table_of(f.bdd), f.table);  // not, and, or, xor
    ASSERT_EQ(table_of(ite(f.bdd, g.bdd, h.bdd)), (f.table & g.table) | (~f.table & h.table));
    ASSERT_EQ(f.bdd.is_true(), f.table.all());
    ASSERT_EQ(f.bdd.is_false(), f.table.none());
    ASSERT_EQ(f.bdd == g.bdd, f.table == g.table);
    ASSERT_EQ(f.bdd.support(), support_of(f.table));
    const std::uint32_t v = random.below(table_variables), w = (v + 3) % table_variables;
    ASSERT_EQ(table_of(cofactor(f.bdd, bdd_variable(v) & ~bdd_variable(w))),
              cofactor_table(cofactor_table(f.table, v, true), w, false));
  });
}

TEST(Bdd, CompositionReplacesAllVariablesAtOnce) {
  support::for_each_seed(60, [&](std::uint64_t seed) {
    Random random(seed);
    const Function f = random_function(random);
    std::vector<Bdd> substitution;
    std::vector<Table> tables;
    const std::uint32_t replaced = random.below(table_variables + 1);  // the others stay
    for (std::uint32_t v = 0; v < table_variables; ++v) {
      const Function g = random_function(random);
      if (v < replaced) substitution.push_back(g.bdd);
      tables.push_back(v < replaced ? g.table : variable_table(v));
    }
    const Table expected = table_from([&](std::uint32_t a) {
      std::uint32_t inner = 0;
      for (std::uint32_t v = 0; v < table_variables; ++v) inner |= (tables[v][a] ? 1u : 0u) << v;
      return f.table[inner];
    });
    ASSERT_EQ(table_of(compose(f.bdd, substitution)), expected);
  });
}

TEST(Bdd, MintermSignatureCountsTheCofactors) {
  bdd_variable(table_variables - 1);  // the signature has an entry for each variable made so far
  support::for_each_seed(100, [&](std::uint64_t seed) {
    Random random(seed);
    const Function f = random_function(random);
    const std::vector<double> signature = f.bdd.minterm_signature();
    ASSERT_EQ(signature.size(), BddManager::instance().variable_count() + 1);
    for (std::uint32_t v = 0; v < table_variables; ++v) {
      const Table positive = cofactor_table(f.table, v, true);
      ASSERT_EQ(signature[v], static_cast<double>(positive.count()) / table_size);
    }
    ASSERT_EQ(signature.back(), static_cast<double>(f.table.count()) / table_size);
  });
}

// The order and the hash as they are defined, over truth tables.
bool is_less(const Table& a, const Table& b) {
  const auto own = support_of(a), others = support_of(b);
  if (own.size() != others.size()) return own.size() < others.size();
  if (own != others) return own < others;
  const auto first_difference = [&]() -> std::uint32_t {
    for (std::uint32_t number = 0; number < table_size; ++number) {
      std::uint32_t a_row = 0;  // variable 0 is the most significant digit
      for (std::uint32_t v = 0; v < table_variables; ++v)
        a_row |= ((number >> (table_variables - 1 - v)) & 1u) << v;
      if (a[a_row] != b[a_row]) return a_row;
    }
    return table_size;
  };
  const std::uint32_t row = first_difference();
  return row < table_size && b[row];
}

std::uint32_t hash_of(const Table& f) {
  const auto support = support_of(f);
  std::uint32_t hash = 12345;
  const auto combine = [&hash](std::uint32_t x) {
    hash ^= (hash >> 2) + 0x9E3779B9u + (hash << 6) + x;
  };
  for (const std::uint32_t v : support) {
    std::uint32_t fnv = 0x811C9DC5u;
    for (const std::uint32_t byte : {v, 0u, 0u, 0u}) fnv = (fnv ^ byte) * 16777619u;
    combine(fnv);
  }
  for (int round = 0; round < 16; ++round) {
    std::uint32_t row = 0;
    for (std::size_t i = 0; i < support.size(); ++i) row |= ((hash >> (i % 4)) & 1u) << support[i];
    combine(f[row] ? 67918732u : 84696351u);
  }
  return hash;
}

TEST(Bdd, OrderAndHashDependOnTheFunctionAlone) {
  support::for_each_seed(10, [&](std::uint64_t seed) {
    Random random(seed);
    // Few variables in half of the runs, so that many functions share a support.
    const std::uint32_t mask = seed % 2 == 0 ? 0x0B4 : table_size - 1;
    std::vector<Function> functions;
    for (int i = 0; i < 60; ++i)
      functions.push_back(random_function(random, mask, static_cast<int>(random.below(6))));
    const auto sorted_tables = [&] {
      random.shuffle(functions);
      std::ranges::sort(functions,
                        [](const Function& a, const Function& b) { return a.bdd < b.bdd; });
      std::vector<Table> tables;
      for (const Function& f : functions) tables.push_back(f.table);
      return tables;
    };
    const std::vector<Table> tables = sorted_tables();
    for (std::size_t i = 1; i < tables.size(); ++i) {
      ASSERT_EQ(is_less(tables[i - 1], tables[i]), tables[i - 1] != tables[i]);
    }
    for (const Function& f : functions) ASSERT_EQ(hash_of(f.bdd), hash_of(f.table));
    reorder_at_random(random);
    ASSERT_EQ(sorted_tables(), tables);
    for (const Function& f : functions) ASSERT_EQ(hash_of(f.bdd), hash_of(f.table));
  });
}

TEST(Bdd, AMillionOperationsLeaveNoReference) {
  const std::size_t before = BddManager::instance().referenced_node_count();
  {
    Random random(7);
    constexpr std::uint32_t width = 6;
    std::vector<Bdd> held(64);
    for (int step = 0; step < 1'000'000; ++step) {
      Bdd &to = held[random.below(held.size())], &f = held[random.below(held.size())];
      const Bdd x = bdd_variable(random.below(width)), g = held[random.below(held.size())];
      const std::uint32_t choice = f.is_null() || g.is_null() ? 0 : random.below(5);
      if (choice == 0) {
        to = x;
      } else if (choice == 1) {
        to = f.is_constant() ? g : f.then_child();
      } else if (choice == 2) {
        std::swap(to, f);
      } else if (choice == 3) {
        to = std::move(f);
      } else {
        to = (f ^ g) | (ite(x, f, g) & ~cofactor(f, x));
      }
    }
    EXPECT_GT(BddManager::instance().referenced_node_count(), before);
  }
  EXPECT_EQ(BddManager::instance().referenced_node_count(), before);
}

TEST(Bdd, OperationsThatReorderingInterruptsAreRepeated) {
  DdManager* const cudd = BddManager::instance().cudd();
  // Random sums of products of so many variables grow past where reordering starts.
  constexpr std::uint32_t width = 40;
  Cudd_AutodynEnable(cudd, CUDD_REORDER_SIFT);
  Cudd_SetNextReordering(cudd, 500);
  const unsigned before = Cudd_ReadReorderings(cudd);
  Random random(3);
  std::vector<std::vector<BddLiteral>> cubes(25);
  Bdd sum(false);
  for (auto& cube : cubes) {
    Bdd product(true);
    for (int i = 0; i < 6; ++i) {
      cube.push_back({random.below(width), random.chance(50)});
      const Bdd variable = bdd_variable(cube.back().variable);
      product &= cube.back().negated ? ~variable : variable;
    }
    sum |= product;
  }
  Cudd_AutodynDisable(cudd);
  EXPECT_GT(Cudd_ReadReorderings(cudd), before);
  for (int sample = 0; sample < 2000; ++sample) {
    std::vector<int> inputs(width);
    for (int& input : inputs) input = random.chance(50) ? 1 : 0;
    const bool value = std::ranges::any_of(cubes, [&](const auto& cube) {
      return std::ranges::all_of(cube, [&](const BddLiteral& literal) {
        return (inputs[literal.variable] == 1) != literal.negated;
      });
    });
    ASSERT_EQ(sum.evaluate(inputs), value);
  }
}

// Sums of products whose variables are ordered as badly as can be.
void outgrow_the_bound() {
  constexpr std::uint32_t pairs = 40;
  Bdd sum(false);
  for (std::uint32_t i = 0; i < pairs; ++i) sum |= bdd_variable(i) & bdd_variable(pairs + i);
}

void pass_the_bound_on_nodes() {
  Cudd_SetMaxLive(BddManager::instance().cudd(), 1000);
  outgrow_the_bound();
}

TEST(BddDeathTest, AFailedOperationEndsTheProcess) {
  const testing::ExitedWithCode memory_overflow(5);
  EXPECT_EXIT(outgrow_the_bound(), memory_overflow,
              "^\nError: exceeded memory limit in BDD manager\n$");
  EXPECT_EXIT(pass_the_bound_on_nodes(), memory_overflow, "^\nError: memory overflow\n$");
  const Bdd x = bdd_variable(0), y = bdd_variable(1);
  for (const Bdd& no_product : {Bdd(false), x | y}) {
    EXPECT_EXIT(cofactor(x ^ y, no_product), memory_overflow,
                "^\nError: an invalid argument provided to a BDD function\n$");
  }
  EXPECT_EXIT(bdd_variable(65534), memory_overflow, "^\nError: internal error in BDD manager\n$");
  EXPECT_EXIT(std::_Exit(bdd_variable(65533).is_constant() ? 1 : 0), testing::ExitedWithCode(0),
              "^$");
}

}  // namespace
}  // namespace vorel::bdd
