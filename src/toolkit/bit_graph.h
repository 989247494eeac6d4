// toolkit/bit_graph.h - undirected graphs as rows of bits, for algorithms on dense graphs.
// Not here:  cliques (toolkit/cliques.h).
// Memory is quadratic in the vertices: 10,000 of them take 12 MB.
#pragma once

#include "base/bit_rows.h"

namespace vorel::toolkit {

class BitGraph {
 public:
  explicit BitGraph(std::uint32_t vertices) : vertices_{vertices}, rows_(vertices, vertices) {}

  std::uint32_t size() const { return vertices_; }
  std::size_t stride() const { return rows_.stride(); }  // words of a row

  void add_edge(std::uint32_t a, std::uint32_t b) {
    assert(a != b && a < vertices_ && b < vertices_ && "no vertex is its own neighbour");
    rows_.set(a, b);
    rows_.set(b, a);
  }
  void remove_edge(std::uint32_t a, std::uint32_t b) {
    rows_.reset(a, b);
    rows_.reset(b, a);
  }
  bool has_edge(std::uint32_t a, std::uint32_t b) const {
    assert(b < vertices_);
    return base::has_bit(neighbours(a), b);
  }
  base::BitRow neighbours(std::uint32_t a) const {
    assert(a < vertices_);
    return rows_[a];
  }
  std::uint32_t degree(std::uint32_t a) const {
    int count = 0;
    for (const std::uint64_t word : neighbours(a)) count += std::popcount(word);
    return static_cast<std::uint32_t>(count);
  }

 private:
  std::uint32_t vertices_;
  base::BitRows rows_;
};

}  // namespace vorel::toolkit
