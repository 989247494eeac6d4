#include "toolkit/factor.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "toolkit/algebra.h"
#include "toolkit/divisors.h"
#include "toolkit/factor_tree.h"

namespace vorel::toolkit {
namespace {

using Node = FactorTree::Node;

std::size_t literals_of(const PackedCover& cover) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < cover.size(); ++i) count += vorel::toolkit::literals_of(cover[i]);
  return count;
}

// cube * first * second + rest, as sums of products; no second factor: it is true.
struct Split {
  std::vector<Word> cube;
  PackedCover first, second, rest;
  std::size_t literals = 0;  // as sums of products
};

// What is divided is the same, so most likely the factors are too.
bool are_alike(const Split& a, const Split& b) {
  if (a.literals != b.literals || a.rest.size() != b.rest.size()) return false;
  for (std::size_t i = 0; i < a.rest.size(); ++i)
    if (!std::ranges::equal(a.rest[i], b.rest[i])) return false;
  return true;
}

// Factoring in the manner of [BM-1982]: take out what all cubes have in common, factor parts
// without common variables by themselves, divide the rest by a divisor (a kernel, mostly) and go on
// with quotient, divisor and remainder. Where one looks for the best divisor and stays with it,
// several are tried here and the best result is kept: `most_tried` at the upper levels of the
// recursion, one at those below, and none but the first once the cubes that were tried reach a
// bound. Results are remembered by their cubes, for the same quotient comes back in many ways.
class Factoring {
 public:
  Factoring(FactorTree& tree, const FactorParams& params) : tree_{tree}, params_{params} {}

  // No row of the cover contains another.
  Node factor(const PackedCover& cover);

 private:
  Node factor_free(const PackedCover& cover);
  Node factor_part(const PackedCover& cover);
  Node sum_of_cubes(const PackedCover& cover);
  Node build(const Split& split);
  std::vector<Split> splits(const PackedCover& cover);
  Split split_by_divisor(const PackedCover& cover, const PackedCover& divisor) const;
  Split split_by_literal(const PackedCover& cover, std::size_t bit) const;

  FactorTree& tree_;
  const FactorParams& params_;
  std::map<std::vector<Word>, Node> known_;  // by sorted rows
  std::size_t tried_cubes_ = 0;
  std::size_t depth_ = 0;  // splits around the part at hand
};

// Splits tried at one step: many for the whole cover, fewer for its parts.
constexpr std::size_t most_tried[] = {8, 4, 2};

bool lacks(ConstRow row, std::size_t bit) { return (row[bit / 64] >> bit % 64 & 1) == 0; }

// The literal, as the bit its rows lack, that most rows have; none if no two rows share one.
std::optional<std::size_t> most_frequent_literal(const PackedCover& cover) {
  std::size_t best = 0, most = 1;
  for (std::size_t bit = 0; bit < cover.stride() * 64; ++bit) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < cover.size(); ++i) count += lacks(cover[i], bit) ? 1 : 0;
    if (count <= most) continue;
    most = count;
    best = bit;
  }
  if (most == 1) return std::nullopt;
  return best;
}

// The rows in groups; rows of different groups have no literal in common, so no division can
// bring them together.
std::vector<PackedCover> components(const PackedCover& cover) {
  std::vector<PackedCover> groups;
  std::vector<std::vector<Word>> joined;  // the bits that rows of a group lack
  for (std::size_t i = 0; i < cover.size(); ++i) {
    PackedCover group(cover.width());
    std::vector<Word> bits(cover.stride());
    for (std::size_t k = 0; k < bits.size(); ++k) bits[k] = ~cover[i][k];
    std::size_t kept = 0;
    for (std::size_t g = 0; g < groups.size(); ++g) {
      bool shares = false;
      for (std::size_t k = 0; k < bits.size(); ++k)
        shares = shares || (bits[k] & joined[g][k]) != 0;
      if (!shares) {
        if (kept != g) {
          groups[kept] = std::move(groups[g]);
          joined[kept] = std::move(joined[g]);
        }
        ++kept;
        continue;
      }
      for (std::size_t r = 0; r < groups[g].size(); ++r) group.add(groups[g][r]);
      for (std::size_t k = 0; k < bits.size(); ++k) bits[k] |= joined[g][k];
    }
    group.add(cover[i]);
    groups.resize(kept, PackedCover(cover.width()));
    joined.resize(kept);
    groups.push_back(std::move(group));
    joined.push_back(std::move(bits));
  }
  return groups;
}

Node Factoring::sum_of_cubes(const PackedCover& cover) {
  std::vector<Node> cubes;
  for (std::size_t i = 0; i < cover.size(); ++i) cubes.push_back(tree_.cube(cover[i]));
  return tree_.sum(cubes);
}

// The quotient without its common cube is as good a divisor as the one that gave it, and what it
// divides is the other factor.
Split Factoring::split_by_divisor(const PackedCover& cover, const PackedCover& divisor) const {
  Division<PackedCover> division = divide(cover, divisor);
  if (division.quotient.size() == 1) {
    const ConstRow cube = std::as_const(division.quotient)[0];
    return {{cube.begin(), cube.end()},
            divisor,
            PackedCover(cover.width()),
            std::move(division.remainder)};
  }
  PackedCover first = divide_by_cube(division.quotient, common_cube(division.quotient));
  division = divide(cover, first);
  std::vector<Word> cube = common_cube(division.quotient);
  PackedCover second = divide_by_cube(division.quotient, cube);
  return {std::move(cube), std::move(first), std::move(second), std::move(division.remainder)};
}

Split Factoring::split_by_literal(const PackedCover& cover, std::size_t bit) const {
  PackedCover with(cover.width()), without(cover.width());
  for (std::size_t i = 0; i < cover.size(); ++i)
    (lacks(cover[i], bit) ? with : without).add(cover[i]);
  std::vector<Word> cube = common_cube(with);
  PackedCover first = divide_by_cube(with, cube);
  return {std::move(cube), std::move(first), PackedCover(cover.width()), std::move(without)};
}

// The most promising first. There is one if two rows share a literal.
std::vector<Split> Factoring::splits(const PackedCover& cover) {
  std::vector<Split> found;
  const auto bit = most_frequent_literal(cover);
  if (!bit) return found;
  found.push_back(split_by_literal(cover, *bit));
  if (cover.size() <= params_.max_cubes_for_kernels)
    for (const PackedCover& divisor : divisors_of(cover))
      found.push_back(split_by_divisor(cover, divisor));
  for (Split& split : found)
    split.literals = vorel::toolkit::literals_of(split.cube) + literals_of(split.first) +
                     literals_of(split.second) + literals_of(split.rest);
  std::ranges::stable_sort(found, {}, &Split::literals);
  return found;
}

Node Factoring::build(const Split& split) {
  std::vector<Node> factors;
  if (!is_full(split.cube)) factors.push_back(tree_.cube(split.cube));
  if (split.second.size() > 0 && !is_full(split.second[0])) factors.push_back(factor(split.second));
  factors.push_back(factor(split.first));
  std::vector<Node> terms{tree_.product(factors)};
  if (!split.rest.empty()) terms.push_back(factor(split.rest));
  return tree_.sum(terms);
}

// Connected, with at least two rows.
Node Factoring::factor_part(const PackedCover& cover) {
  const std::vector<Split> ways = splits(cover);
  if (ways.empty()) return sum_of_cubes(cover);
  const std::size_t limit = depth_ < std::size(most_tried) ? most_tried[depth_] : 1;
  ++depth_;
  Node best = build(ways.front());
  std::vector<const Split*> tried{&ways.front()};
  for (const Split& way : ways) {
    if (tried.size() >= limit || tried_cubes_ >= params_.max_tried_cubes) break;
    if (std::ranges::any_of(tried, [&](const Split* other) { return are_alike(way, *other); }))
      continue;
    tried.push_back(&way);
    tried_cubes_ += cover.size();
    const Node other = build(way);
    if (tree_.literals(other) < tree_.literals(best)) best = other;
  }
  --depth_;
  return best;
}

// No literal is in all rows.
Node Factoring::factor_free(const PackedCover& cover) {
  std::vector<Word> key = sorted_words(cover);
  if (const auto known = known_.find(key); known != known_.end()) return known->second;
  std::vector<Node> terms;
  for (const PackedCover& part : components(cover))
    terms.push_back(part.size() == cover.size() ? factor_part(part) : factor(part));
  const Node result = tree_.sum(terms);
  known_.emplace(std::move(key), result);
  return result;
}

Node Factoring::factor(const PackedCover& cover) {
  if (cover.empty()) return tree_.constant(false);
  if (cover.size() == 1) return tree_.cube(cover[0]);
  const std::vector<Word> common = common_cube(cover);
  if (is_full(common)) return factor_free(cover);
  const Node factors[] = {tree_.cube(common), factor_free(divide_by_cube(cover, common))};
  return tree_.product(factors);
}

}  // namespace

LogicExpr factor(const Cover& cover, std::span<const std::string> names, bool inverted,
                 const FactorParams& params) {
  assert(names.empty() || names.size() >= cover.width());
  PackedCover rows(cover);
  remove_contained(rows);
  FactorTree tree;
  const Node root = Factoring(tree, params).factor(rows);
  assert(tree.literals(root) <= literals_of(rows));
  return tree.expression(root, names, inverted);
}

}  // namespace vorel::toolkit
