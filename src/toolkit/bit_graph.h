// toolkit/bit_graph.h - undirected graphs as rows of bits, for algorithms on dense graphs.
// Here:      storage, rows as sets of vertices.
// Not here:  cliques (toolkit/cliques.h).
// Memory is quadratic in the vertices: 10,000 of them take 12 MB.
#pragma once

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vorel::toolkit {

// A set of vertices, one bit each.
using VertexRow = std::span<const std::uint64_t>;

// Calls visit(vertex) for each vertex of the set, in ascending order.
template <class Visit>
void for_each_vertex(VertexRow set, const Visit& visit) {
  for (std::size_t i = 0; i < set.size(); ++i)
    for (std::uint64_t rest = set[i]; rest != 0; rest &= rest - 1)
      visit(static_cast<std::uint32_t>(i * 64) +
            static_cast<std::uint32_t>(std::countr_zero(rest)));
}

class BitGraph {
 public:
  explicit BitGraph(std::uint32_t vertices)
      : vertices_{vertices}, stride_{(vertices + 63) / 64}, words_(stride_ * vertices, 0) {}

  std::uint32_t size() const { return vertices_; }
  std::size_t stride() const { return stride_; }  // words of a row

  void add_edge(std::uint32_t a, std::uint32_t b) {
    assert(a != b && "no vertex is its own neighbour");
    word(a, b) |= bit(b);
    word(b, a) |= bit(a);
  }
  void remove_edge(std::uint32_t a, std::uint32_t b) {
    word(a, b) &= ~bit(b);
    word(b, a) &= ~bit(a);
  }
  bool has_edge(std::uint32_t a, std::uint32_t b) const {
    assert(b < vertices_);
    return (neighbours(a)[b / 64] & bit(b)) != 0;
  }
  VertexRow neighbours(std::uint32_t a) const {
    assert(a < vertices_);
    return {words_.data() + a * stride_, stride_};
  }
  std::uint32_t degree(std::uint32_t a) const {
    int count = 0;
    for (const std::uint64_t word : neighbours(a)) count += std::popcount(word);
    return static_cast<std::uint32_t>(count);
  }

 private:
  static std::uint64_t bit(std::uint32_t b) { return std::uint64_t{1} << b % 64; }
  std::uint64_t& word(std::uint32_t a, std::uint32_t b) {
    assert(a < vertices_ && b < vertices_);
    return words_[a * stride_ + b / 64];
  }

  std::uint32_t vertices_;
  std::size_t stride_;
  std::vector<std::uint64_t> words_;
};

}  // namespace vorel::toolkit
