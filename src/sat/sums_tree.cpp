#include "sat/sums_tree.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>
#include <span>
#include <unordered_map>
#include <utility>

#include "base/hashing.h"

namespace vorel::sat {
namespace {

// The n for which the pair count is n(n-1)/2, or the next one below: if n sets have an
// intersection, so have about that many pairs.
std::size_t sets_of_pairs(std::uint64_t pairs) {
  const auto doubled = 2 * pairs;
  auto root = static_cast<std::uint64_t>(std::sqrt(static_cast<double>(doubled)));
  while (root * root > doubled) --root;
  while ((root + 1) * (root + 1) <= doubled) ++root;
  return root + 1;
}

bool includes(const Lits& large, const Lits& small) { return std::ranges::includes(large, small); }

// Takes intersections out of the current sets, which are the nodes below the root, until no two of
// them meet. Those below a node that is made for an intersection of the largest size there is have
// nothing further in common, so they are done with.
class Factoring {
 public:
  explicit Factoring(std::vector<SumsSet> sets) {
    std::ranges::stable_sort(sets, [](const SumsSet& a, const SumsSet& b) {
      return a.literals.size() > b.literals.size();
    });
    for (SumsSet& set : sets) {
      assert(set.literals.size() > 1 && std::ranges::is_sorted(set.literals));
      add_current({std::move(set.literals), {set.output}, {}});
    }
  }

  SumsTree run() && {
    for (std::size_t size = by_size_.size(); size-- > 1;) factor_out_all_of(size);
    SumsTree root;
    root.children = std::move(current_);
    return root;
  }

 private:
  struct Intersection {
    Lits literals;
    std::uint64_t pairs = 0;  // how many pairs of current sets have it
  };

  Intersection* intersection_of(const SumsTree& a, const SumsTree& b) {
    common_.clear();
    std::ranges::set_intersection(a.literals, b.literals, std::back_inserter(common_));
    if (common_.empty()) return nullptr;
    const auto [entry, is_new] =
        numbers_.try_emplace(common_, static_cast<std::uint32_t>(intersections_.size()));
    if (is_new) {
      intersections_.push_back({common_, 0});
      if (by_size_.size() <= common_.size()) by_size_.resize(common_.size() + 1);
      by_size_[common_.size()].push_back(entry->second);
    }
    return &intersections_[entry->second];
  }

  void add_current(SumsTree node) {
    for (const SumsTree& other : current_) {
      if (Intersection* common = intersection_of(node, other)) ++common->pairs;
    }
    current_.push_back(std::move(node));
  }

  SumsTree remove_current(std::size_t position) {
    SumsTree node = std::move(current_[position]);
    current_.erase(current_.begin() + static_cast<std::ptrdiff_t>(position));
    for (const SumsTree& other : current_) {
      if (Intersection* common = intersection_of(node, other)) {
        assert(common->pairs > 0);
        --common->pairs;
      }
    }
    return node;
  }

  // Counts of this size only fall, as the nodes that are made meet other sets in fewer literals: an
  // intersection is moved to the bucket where it belongs when it comes up.
  void factor_out_all_of(std::size_t size) {
    std::vector<std::vector<std::uint32_t>> buckets;
    for (const std::uint32_t number : by_size_[size]) {
      if (intersections_[number].pairs > 0) put_into(buckets, number);
    }
    while (!buckets.empty()) {
      if (buckets.back().empty()) {
        buckets.pop_back();
        continue;
      }
      const std::size_t sets = buckets.size() - 1;
      const std::uint32_t number = buckets.back().back();
      buckets.back().pop_back();
      const std::uint64_t pairs = intersections_[number].pairs;
      if (pairs == 0) continue;
      if (sets_of_pairs(pairs) < sets)
        put_into(buckets, number);
      else
        factor_out(Lits(intersections_[number].literals));
    }
  }

  void put_into(std::vector<std::vector<std::uint32_t>>& buckets, std::uint32_t number) {
    const std::size_t sets = sets_of_pairs(intersections_[number].pairs);
    if (buckets.size() <= sets) buckets.resize(sets + 1);
    buckets[sets].push_back(number);
  }

  void factor_out(const Lits& common) {
    SumsTree node{common, {}, {}};
    for (std::size_t i = current_.size(); i-- > 0;) {
      if (!includes(current_[i].literals, common)) continue;
      SumsTree below = remove_current(i);
      if (below.literals == common) {  // no more than the intersection itself
        std::ranges::copy(below.outputs, std::back_inserter(node.outputs));
        std::ranges::move(below.children, std::back_inserter(node.children));
        continue;
      }
      Lits rest;
      std::ranges::set_difference(below.literals, common, std::back_inserter(rest));
      below.literals = std::move(rest);
      node.children.push_back(std::move(below));
    }
    add_current(std::move(node));
  }

  std::vector<SumsTree> current_;
  std::vector<Intersection> intersections_;
  std::unordered_map<Lits, std::uint32_t, base::SequenceHash> numbers_;
  std::vector<std::vector<std::uint32_t>> by_size_;  // the intersections of each size
  Lits common_;                                      // scratch
};

void add_weight(const SumsTree& node, std::size_t path, SumsTreeWeight& weight) {
  path += node.literals.size();
  ++weight.nodes;
  weight.optimised += static_cast<std::uint32_t>(node.literals.size());
  weight.non_optimised += static_cast<std::uint32_t>(path);
  for (const SumsTree& child : node.children) add_weight(child, path, weight);
}

}  // namespace

SumsTree build_sums_tree(std::vector<SumsSet> sets) { return Factoring(std::move(sets)).run(); }

SumsTreeWeight weight_of(const SumsTree& tree) {
  SumsTreeWeight weight;
  add_weight(tree, 0, weight);
  return weight;
}

}  // namespace vorel::sat
