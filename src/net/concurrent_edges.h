// net/concurrent_edges.h - concurrent edges of one signal that no event follows both of.
// Here:      the search for two edges of a signal that are neither ordered nor in conflict.
// Not here:  those that meet in a local configuration (net/edge_history.h); what concurrency means
//            for the values (net/initial_values.h).
//
// Let all edges of a signal have signs and be ordered within each local configuration, and take of
// its concurrent pairs one with the least number of events in both pasts. An edge of the signal
// before one of the two is before the other as well, or it would make a smaller pair with it. So
// the two have the same edge before them: they are of one family, and no family has edges that are
// ordered. Instances of one transition are never concurrent in a safe net, nor are transitions that
// need one place. What is left are families whose edges lie in different branches, if all is well.
// Where edges with and without signs are mixed, all of the signal are one family.
//
// Two events are in conflict if their pasts hold different consumers of one condition. This is
// worked out for 64 or 512 edges at a time, in sets of bits: back from the edges, which edges
// follow each event; then forth, which edges follow a rival of the event or of its past. An event
// in the past of a whole family has no rivals in the pasts of that family, and one in the past of
// none does not matter, so the walk back ends where each family is met by all of its edges or by
// none: it stays between the edges and the choices that led to them. Families of more than 512
// edges walk to the start, time is then the links of their pasts times the edges divided by 512.
#pragma once

#include <optional>
#include <vector>

#include "net/edge_history.h"
#include "net/process.h"

namespace vorel::net {

// A pair of which one edge has a sign at least; cut-offs count. The history must be without
// disorder but that of edges without signs, and the signs must fit one initial value of each
// signal. `order`: that of the history. Memory is linear in the prefix.
std::optional<EdgeHistory::Disorder> find_concurrent_edges(
    const StgPrefix& prefix, const std::vector<StgPrefix::Event*>& order,
    const EdgeHistory& history);

}  // namespace vorel::net
