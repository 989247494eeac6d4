// Small choices out of sets and graphs, against all subsets.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "oracle/random.h"
#include "toolkit/cliques.h"
#include "toolkit/hitting_set.h"

namespace vorel::toolkit {
namespace {

using oracle::Random;
using Numbers = std::vector<std::uint32_t>;
using Mask = std::uint32_t;

Mask mask_of(const Numbers& numbers) {
  Mask mask = 0;
  for (const std::uint32_t n : numbers) mask |= Mask{1} << n;
  return mask;
}

std::size_t unmet_by(const std::vector<Numbers>& sets, Mask chosen) {
  return static_cast<std::size_t>(std::ranges::count_if(
      sets, [chosen](const Numbers& set) { return (mask_of(set) & chosen) == 0; }));
}

TEST(HittingSet, TakesSingleElementsFirstAndThenOneThatMeetsMost) {
  constexpr std::uint32_t elements = 9;
  Random random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<Numbers> sets(random.below(9));
    Mask forced = 0;
    for (Numbers& set : sets) {
      for (std::uint32_t e = 0; e < elements; ++e)
        if (random.chance(25)) set.push_back(e);
      if (set.empty()) set.push_back(random.below(elements));
      if (set.size() == 1) forced |= mask_of(set);
    }
    Mask chosen = 0;
    for (const std::uint32_t element : hitting_set(sets)) {
      const Mask next = chosen | Mask{1} << element;
      if ((forced & ~chosen) != 0) {
        EXPECT_NE(forced & ~chosen & next, 0u);
      } else {
        for (std::uint32_t other = 0; other < elements; ++other)
          EXPECT_LE(unmet_by(sets, next), unmet_by(sets, chosen | Mask{1} << other));
        EXPECT_LT(unmet_by(sets, next), unmet_by(sets, chosen));
      }
      chosen = next;
    }
    EXPECT_EQ(unmet_by(sets, chosen), 0u);
  }
}

BitGraph random_graph(Random& random, std::uint32_t size, std::uint32_t percent) {
  BitGraph graph(size);
  for (std::uint32_t a = 0; a < size; ++a)
    for (std::uint32_t b = a + 1; b < size; ++b)
      if (random.chance(percent)) graph.add_edge(a, b);
  return graph;
}

bool is_clique(const BitGraph& graph, const Numbers& vertices) {
  for (const std::uint32_t a : vertices)
    for (const std::uint32_t b : vertices)
      if (a != b && !graph.has_edge(a, b)) return false;
  return true;
}

// All subsets that are cliques and no part of another.
std::set<Numbers> maximal_by_definition(const BitGraph& graph) {
  std::set<Numbers> result;
  for (Mask mask = 1; mask < Mask{1} << graph.size(); ++mask) {
    Numbers vertices;
    for (std::uint32_t v = 0; v < graph.size(); ++v)
      if ((mask >> v & 1) != 0) vertices.push_back(v);
    if (!is_clique(graph, vertices)) continue;
    bool is_maximal = true;
    for (std::uint32_t v = 0; v < graph.size(); ++v) {
      Numbers more = vertices;
      more.push_back(v);
      if ((mask >> v & 1) == 0 && is_clique(graph, more)) is_maximal = false;
    }
    if (is_maximal) result.insert(vertices);
  }
  return result;
}

TEST(Cliques, AllMaximalOnesAreListedOnceUntilStopped) {
  Random random(8);
  for (std::uint32_t round = 0; round < 120; ++round) {
    const BitGraph graph = random_graph(random, round % 11, round * 7 % 100);
    const std::set<Numbers> expected = maximal_by_definition(graph);
    std::vector<Numbers> found;
    EXPECT_TRUE(for_each_maximal_clique(graph, [&](const Clique& clique) {
      found.push_back(clique);
      return true;
    }));
    EXPECT_EQ(std::set(found.begin(), found.end()), expected);
    EXPECT_EQ(found.size(), expected.size());
    if (expected.size() < 2) continue;
    std::size_t visits = 0;
    EXPECT_FALSE(for_each_maximal_clique(graph, [&](const Clique&) { return ++visits < 2; }));
    EXPECT_EQ(visits, 2u);
  }
}

TEST(Cliques, ACoverHasEachEdgeAndNothingButEdges) {
  Random random(9);
  for (std::uint32_t round = 0; round < 120; ++round) {
    // Sizes around a word's, as rows are words.
    const std::uint32_t size = round % 2 == 0 ? round % 15 : 60 + round % 10;
    const BitGraph graph = random_graph(random, size, round * 7 % 100);
    BitGraph uncovered = graph;
    for (const Clique& clique : clique_cover(graph)) {
      ASSERT_TRUE(is_clique(graph, clique));
      std::size_t new_edges = 0;
      for (const std::uint32_t a : clique)
        for (const std::uint32_t b : clique)
          if (a < b && uncovered.has_edge(a, b)) {
            uncovered.remove_edge(a, b);
            ++new_edges;
          }
      EXPECT_GE(new_edges + 1, clique.size()) << "each vertex brings an edge";
    }
    for (std::uint32_t v = 0; v < size; ++v) EXPECT_EQ(uncovered.degree(v), 0u);
  }
  BitGraph two_triangles(6);
  for (const std::uint32_t base : {0u, 3u})
    for (std::uint32_t i = 0; i < 3; ++i) two_triangles.add_edge(base + i, base + (i + 1) % 3);
  EXPECT_EQ(clique_cover(two_triangles), (std::vector<Clique>{{0, 1, 2}, {3, 4, 5}}));
}

}  // namespace
}  // namespace vorel::toolkit
