#include "toolkit/minimise.h"

#include <algorithm>
#include <iostream>
#include <unordered_set>

#include "base/hashing.h"
#include "base/run_state.h"
#include "toolkit/all_primes.h"
#include "toolkit/complement.h"
#include "toolkit/expand.h"
#include "toolkit/irredundant.h"
#include "toolkit/reduce.h"
#include "toolkit/tautology.h"

namespace vorel::toolkit {
namespace {

struct Cost {
  std::size_t cubes = 0, literals = 0;
  auto operator<=>(const Cost&) const = default;
};

Cost cost_of(const PackedCover& cover) {
  Cost cost{cover.size(), 0};
  for (std::size_t i = 0; i < cover.size(); ++i) cost.literals += literals_of(cover[i]);
  return cost;
}

[[maybe_unused]] bool are_disjoint(const PackedCover& a, const PackedCover& b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t j = 0; j < b.size(); ++j)
      if (intersect(a[i], b[j])) return false;
  return true;
}

// What every result has to be, by means that the search does not use.
[[maybe_unused]] bool is_between(const PackedCover& on, const PackedCover& result,
                                 const PackedCover& off) {
  TautologyCheck check(on.width());
  for (std::size_t i = 0; i < on.size(); ++i)
    if (!check.contains_cube(result, on[i])) return false;
  return are_disjoint(result, off);
}

// One half of each row where the last position is 0, one where it is 1.
PackedCover split_last_position(const PackedCover& cover) {
  PackedCover halves(cover.width());
  if (cover.width() == 0) return cover;
  const std::size_t last = cover.width() - 1, shift = last % positions_per_word * 2;
  for (const Word value_bit : {Word{1}, Word{2}}) {
    for (std::size_t i = 0; i < cover.size(); ++i) {
      if (!admits(cover[i], last, value_bit)) continue;
      halves.add(cover[i]);
      halves[halves.size() - 1].back() &= ~((value_bit ^ 3) << shift);
    }
  }
  return halves;
}

std::size_t primes_per_cube(const MinimiseParams& params, std::size_t cubes) {
  const std::size_t share = params.max_primes / std::max<std::size_t>(cubes, 1);
  const std::size_t least = std::min(params.least_primes_per_cube, params.max_primes_per_cube);
  return std::clamp<std::size_t>(share, least, params.max_primes_per_cube);
}

// Whether the tables over all cubes cost less than the expansion of the ON-set's cubes one by one.
bool tables_pay(const PackedCover& on) {
  constexpr std::size_t table_bits_per_cube = 16384;  // measured
  if (on.width() > most_table_variables) return false;
  std::size_t bits = 1;
  for (std::size_t i = 0; i < on.width(); ++i) bits *= 3;
  return bits / table_bits_per_cube <= on.size();
}

// The loop of expansion, irredundance and reduction [BHMS-1984], with one difference: primes are
// not exchanged for one another but collected. Each cube of the ON-set is expanded to a prime, and
// to some more primes in other directions, as many as their number allows. From all primes seen so
// far a covering problem chooses the cheapest that contain the ON-set [Rudell-1989]; so a prime
// that one round leaves aside is there for the next. Then the chosen cubes are reduced to what the
// others leave to them, which lets them expand in directions not tried yet; that is repeated for as
// long as the cost falls. At the end each cube gives way to a prime with fewer literals, if there
// is one over what it alone contains. If a function of few variables has no more primes than would
// be collected, they are all taken from tables, and nothing is expanded.
class Minimiser {
 public:
  Minimiser(const Cover& on, const Cover& off, const MinimiseParams& params)
      : on_{on}, off_{off}, params_{params}, expander_{off_}, primes_{on.width()} {}
  PackedCover run();

 private:
  bool take_all_primes();
  void add_prime(ConstRow prime);
  void expand(const PackedCover& cubes);
  void add_alternatives(const PackedCover& cubes);
  PackedCover choose() { return irredundant(primes_, on_, params_.covering); }
  PackedCover reduced(const PackedCover& cover);
  void improve(PackedCover& cover);
  void make_sparse(PackedCover& cover);

  PackedCover on_, off_;
  const MinimiseParams& params_;
  Expander expander_;
  PackedCover primes_;  // to choose from
  std::unordered_set<std::vector<Word>, base::SequenceHash> known_;
  std::vector<Word> key_;  // scratch
};

bool Minimiser::take_all_primes() {
  const std::size_t most =
      std::min<std::size_t>(params_.max_primes, on_.size() * params_.max_primes_per_cube);
  if (!tables_pay(on_)) return false;
  std::optional<PackedCover> primes = all_primes(on_, off_, most);
  if (!primes) return false;
  primes_ = std::move(*primes);
  return true;
}

void Minimiser::add_prime(ConstRow prime) {
  key_.assign(prime.begin(), prime.end());
  if (known_.insert(key_).second) primes_.add(prime);
}

// Adds a prime over each cube; those that the primes of others contain need none of their own.
void Minimiser::expand(const PackedCover& cubes) {
  PackedCover rest = cubes;
  std::vector<Word> row;
  while (!rest.empty()) {
    const Row first = rest[0];
    row.assign(first.begin(), first.end());
    expander_.expand(row, rest);
    rest.filter(0, [&](std::size_t i) { return !contains(row, rest[i]); });
    add_prime(row);
  }
}

// Adds primes over each cube in other directions.
void Minimiser::add_alternatives(const PackedCover& cubes) {
  const std::size_t most = primes_per_cube(params_, cubes.size());
  for (std::size_t i = 0; i < cubes.size() && most > 0; ++i) {
    std::size_t seen = 0;
    expander_.for_each_prime(cubes[i], [&](ConstRow prime) {
      add_prime(prime);
      return ++seen < most;
    });
  }
}

// Each row in turn made as small as the others, the reduced ones among them, allow.
PackedCover Minimiser::reduced(const PackedCover& cover) {
  PackedCover result = cover;
  Reducer reducer(on_);
  std::vector<Word> row;
  for (std::size_t i = 0; i < cover.size(); ++i)
    if (reducer.reduce(result, i, row)) std::ranges::copy(row, result[i].begin());
  return result;
}

// Reduced cubes expand in other directions than those they came from.
void Minimiser::improve(PackedCover& cover) {
  for (;;) {
    const PackedCover cubes = reduced(cover);
    expand(cubes);
    add_alternatives(cubes);
    PackedCover next = choose();
    if (cost_of(next) >= cost_of(cover)) return;
    cover = std::move(next);
  }
}

// For what each cube alone contains, looks for a prime with fewer literals.
void Minimiser::make_sparse(PackedCover& cover) {
  Reducer reducer(on_);
  std::vector<Word> part;
  for (std::size_t i = 0; i < cover.size(); ++i) {
    if (!reducer.reduce(cover, i, part)) continue;
    std::size_t seen = 0;
    expander_.for_each_prime(part, [&](ConstRow prime) {
      if (literals_of(prime) < literals_of(cover[i])) std::ranges::copy(prime, cover[i].begin());
      return ++seen < params_.max_primes_per_cube;
    });
  }
  cover = irredundant(cover, on_, params_.covering);
}

PackedCover Minimiser::run() {
  assert(are_disjoint(on_, off_));
  if (params_.simplify) on_ = simplify(on_);
  if (params_.setup) on_ = split_last_position(on_);
  remove_contained(on_);
  const bool has_all_primes = take_all_primes();
  if (!has_all_primes) {
    expand(on_);
    add_alternatives(on_);
  }
  PackedCover cover = choose();
  if (params_.repeat && !has_all_primes) improve(cover);
  if (params_.make_sparse) make_sparse(cover);
  assert(is_between(on_, cover, off_));
  return cover;
}

Cover minimise_quietly(const Cover& on, const Cover& off, const MinimiseParams& params) {
  if (on.empty()) return Cover(on.width(), false);
  if (off.empty()) return Cover(on.width(), true);
  Cover result = Minimiser(on, off, params).run().unpacked();
  result.sort();
  return result;
}

}  // namespace

Cover minimise(const Cover& on, const Cover& off, const MinimiseParams& params) {
  assert(on.width() == off.width());
  on.check();
  off.check();
  if (base::verbosity() >= 6)
    std::cerr << "\nMinimisation ON-set:\n" << to_string(on) << "\nOFF-set:\n" << to_string(off);
  Cover result = minimise_quietly(on, off, params);
  if (base::verbosity() >= 6) std::cerr << "\nMinimisation result:\n" << to_string(result);
  return result;
}

}  // namespace vorel::toolkit
