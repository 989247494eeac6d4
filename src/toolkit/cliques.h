// toolkit/cliques.h - sets of vertices of a graph that are all joined to each other.
// Here:      all maximal cliques; few cliques that cover all edges.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "toolkit/bit_graph.h"

namespace vorel::toolkit {

using Clique = std::vector<std::uint32_t>;  // ascending

// Each maximal clique once, until visit returns false: the search of Bron and Kerbosch [BK-1973]
// with the pivot that leaves the fewest branches [TTT-2006]. A vertex without neighbours is a
// maximal clique, the empty set is none. Goes as deep as the largest clique. False if stopped.
using VisitClique = std::function<bool(const Clique&)>;
bool for_each_maximal_clique(const BitGraph& graph, const VisitClique& visit);

// Cliques of two or more vertices that have each edge among them: each begins at the vertex with
// the most edges not yet covered, and takes in the vertices that bring new edges, those first that
// have the most. Few, not always the fewest.
std::vector<Clique> clique_cover(const BitGraph& graph);

}  // namespace vorel::toolkit
