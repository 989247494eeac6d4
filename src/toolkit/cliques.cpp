#include "toolkit/cliques.h"

#include <algorithm>
#include <cassert>

namespace vorel::toolkit {
namespace {

using Words = std::vector<std::uint64_t>;

bool is_empty(const Words& set) {
  return std::ranges::all_of(set, [](std::uint64_t word) { return word == 0; });
}

void insert(Words& set, std::uint32_t vertex) {
  set[vertex / 64] |= std::uint64_t{1} << vertex % 64;
}
void erase(Words& set, std::uint32_t vertex) {
  set[vertex / 64] &= ~(std::uint64_t{1} << vertex % 64);
}

std::size_t common_count(base::BitRow a, base::BitRow b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    count += static_cast<std::size_t>(std::popcount(a[i] & b[i]));
  return count;
}

class MaximalCliques {
 public:
  MaximalCliques(const BitGraph& graph, const VisitClique& visit) : graph_{graph}, visit_{visit} {}

  bool run() {
    Level& level = level_at(0);
    for (std::uint32_t v = 0; v < graph_.size(); ++v) insert(level.candidates, v);
    return search(0);
  }

 private:
  struct Level {
    Words candidates;  // joined to all of the clique, and not tried yet
    Words excluded;    // joined to all of the clique, and tried
    std::vector<std::uint32_t> branches;
  };

  Level& level_at(std::size_t depth) {
    if (levels_.size() <= depth) levels_.resize(depth + 1);
    Level& level = levels_[depth];
    level.candidates.assign(graph_.stride(), 0);
    level.excluded.assign(graph_.stride(), 0);
    level.branches.clear();
    return level;
  }

  // A maximal clique has the pivot or one that is not joined to it.
  std::uint32_t pivot_of(const Level& level) const {
    std::uint32_t pivot = 0;
    std::size_t most = 0;
    bool is_first = true;
    for (const Words* set : {&level.candidates, &level.excluded}) {
      base::for_each_bit(*set, [&](std::uint32_t v) {
        const std::size_t count = common_count(level.candidates, graph_.neighbours(v));
        if (!is_first && count <= most) return;
        pivot = v;
        most = count;
        is_first = false;
      });
    }
    assert(!is_first);
    return pivot;
  }

  bool report() {
    if (clique_.empty()) return true;
    Clique sorted = clique_;
    std::ranges::sort(sorted);
    return visit_(sorted);
  }

  void enter(std::size_t depth, std::uint32_t vertex) {
    Level& next = level_at(depth + 1);
    const Level& level = levels_[depth];  // after the levels may have moved
    const base::BitRow row = graph_.neighbours(vertex);
    for (std::size_t i = 0; i < row.size(); ++i) {
      next.candidates[i] = level.candidates[i] & row[i];
      next.excluded[i] = level.excluded[i] & row[i];
    }
  }

  bool search(std::size_t depth) {
    if (is_empty(levels_[depth].candidates)) return !is_empty(levels_[depth].excluded) || report();
    const std::uint32_t pivot = pivot_of(levels_[depth]);
    base::for_each_bit(levels_[depth].candidates, [&](std::uint32_t v) {
      if (!graph_.has_edge(pivot, v)) levels_[depth].branches.push_back(v);
    });
    // Deeper levels may move this one.
    for (std::size_t i = 0; i < levels_[depth].branches.size(); ++i) {
      const std::uint32_t vertex = levels_[depth].branches[i];
      clique_.push_back(vertex);
      enter(depth, vertex);
      const bool goes_on = search(depth + 1);
      clique_.pop_back();
      if (!goes_on) return false;
      erase(levels_[depth].candidates, vertex);
      insert(levels_[depth].excluded, vertex);
    }
    return true;
  }

  const BitGraph& graph_;
  const VisitClique& visit_;
  std::vector<Level> levels_;  // one for each depth of the search
  Clique clique_;
};

class CliqueCover {
 public:
  explicit CliqueCover(const BitGraph& graph)
      : graph_{graph}, uncovered_{graph}, open_degree_(graph.size()) {
    for (std::uint32_t v = 0; v < graph.size(); ++v) open_degree_[v] = graph.degree(v);
  }

  std::vector<Clique> run() && {
    std::vector<Clique> cover;
    while (true) {
      const auto start = std::ranges::max_element(open_degree_);
      if (start == open_degree_.end() || *start == 0) return cover;
      cover.push_back(clique_from(static_cast<std::uint32_t>(start - open_degree_.begin())));
    }
  }

 private:
  Clique clique_from(std::uint32_t start) {
    Clique clique;
    Words joined(graph_.stride(), ~std::uint64_t{0});  // to all of the clique
    Words useful(graph_.stride(), 0);                  // joined to some of it by an uncovered edge
    for (std::uint32_t next = start; next != none; next = best_of(joined, useful)) {
      for (const std::uint32_t member : clique) cover_edge(member, next);
      clique.push_back(next);
      const base::BitRow all = graph_.neighbours(next), open = uncovered_.neighbours(next);
      for (std::size_t i = 0; i < joined.size(); ++i) {
        joined[i] &= all[i];
        useful[i] |= open[i];
      }
    }
    assert(clique.size() > 1);
    std::ranges::sort(clique);
    return clique;
  }

  std::uint32_t best_of(const Words& joined, const Words& useful) const {
    std::uint32_t best = none;
    for (std::size_t i = 0; i < joined.size(); ++i) {
      const std::uint64_t word = joined[i] & useful[i];
      base::for_each_bit(base::BitRow(&word, 1), [&](std::uint32_t low) {
        const std::uint32_t v = static_cast<std::uint32_t>(i * 64) + low;
        if (best == none || open_degree_[v] > open_degree_[best]) best = v;
      });
    }
    return best;
  }

  void cover_edge(std::uint32_t a, std::uint32_t b) {
    if (!uncovered_.has_edge(a, b)) return;
    uncovered_.remove_edge(a, b);
    --open_degree_[a];
    --open_degree_[b];
  }

  static constexpr std::uint32_t none = ~std::uint32_t{0};

  const BitGraph& graph_;
  BitGraph uncovered_;
  std::vector<std::uint32_t> open_degree_;  // edges not yet covered
};

}  // namespace

bool for_each_maximal_clique(const BitGraph& graph, const VisitClique& visit) {
  return MaximalCliques(graph, visit).run();
}

std::vector<Clique> clique_cover(const BitGraph& graph) { return CliqueCover(graph).run(); }

}  // namespace vorel::toolkit
