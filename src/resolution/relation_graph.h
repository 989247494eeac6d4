// resolution/relation_graph.h - a relation between elements of a net as a graph.
// Here:      vertices with their neighbours, restriction, the text of a graph.
// Not here:  dense undirected graphs for cliques (toolkit/bit_graph.h).
#pragma once

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <vector>

#include "base/indexed_by.h"
#include "base/ptr_list.h"

namespace vorel::resolution {

template <class Item>
struct RelationVertex {
  const Item* item = nullptr;
  // Positions of vertices in the graph, ascending. A symmetric relation has each edge in the `post`
  // of both ends and nothing in `pre`.
  std::vector<std::uint32_t> pre, post;
};

// By the numbers of the items, each at most once.
template <class Item>
using RelationGraph = std::vector<RelationVertex<Item>>;

// A vertex for each element of the list up to `end`, without neighbours.
template <class Item>
RelationGraph<Item> graph_over(const base::OwnedList<Item>& list, std::size_t end) {
  RelationGraph<Item> graph(end);
  for (std::size_t i = 0; i < end; ++i) graph[i].item = list[i].get();
  return graph;
}

template <class Item>
bool has_edge(const RelationGraph<Item>& graph, std::uint32_t from, std::uint32_t to) {
  return std::ranges::binary_search(graph[from].post, to);
}

// "NAME: pre={a,b} post={c}" for each vertex, a line each.
template <class Item>
void print_graph(std::ostream& stream, const RelationGraph<Item>& graph) {
  const auto print_names = [&](const char* title, const std::vector<std::uint32_t>& vertices) {
    stream << title << '{';
    for (std::size_t i = 0; i < vertices.size(); ++i) {
      stream << (i == 0 ? "" : ",") << graph[vertices[i]].item->name;
    }
    stream << '}';
  };
  for (const auto& vertex : graph) {
    stream << vertex.item->name << ':';
    print_names(" pre=", vertex.pre);
    print_names(" post=", vertex.post);
    stream << '\n';
  }
}

// The vertices at the positions, ascending, with those neighbours that are among them.
template <class Item>
RelationGraph<Item> restrict(const RelationGraph<Item>& graph,
                             const std::vector<std::uint32_t>& positions) {
  std::vector<std::uint32_t> new_position(graph.size(), base::no_index);
  for (std::uint32_t i = 0; i < positions.size(); ++i) new_position[positions[i]] = i;
  const auto kept = [&new_position](const std::vector<std::uint32_t>& vertices) {
    std::vector<std::uint32_t> result;
    for (const std::uint32_t v : vertices) {
      if (new_position[v] != base::no_index) result.push_back(new_position[v]);
    }
    return result;
  };
  RelationGraph<Item> result;
  for (const std::uint32_t v : positions) {
    result.push_back({graph[v].item, kept(graph[v].pre), kept(graph[v].post)});
  }
  return result;
}

}  // namespace vorel::resolution
