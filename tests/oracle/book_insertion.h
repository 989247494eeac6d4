// oracle/book_insertion.h - new signals put into nets as they are drawn on paper, judged by states.
// Here:      the edits of a net alone; whether a set of insertions makes a signal.
// Not here:  prefixes and their edits (net/insert_transition.h), what may not change in a
//            resolution (oracle/resolution_checks.h).
// Insertions may speak of the elements of any net that has the same names.
#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "net/insert_transition.h"

namespace vorel::oracle {

// Adds a transition with its places and arcs; the net is not sorted afterwards. The name is the
// signal's with the sign, if it has any, those of the places "<from,to>", all made unique.
net::StgTransition& insert_by_the_book(net::Stg& stg, const net::Insertion& insertion,
                                       net::Signal& signal, net::Sign sign);

// The STG with a new internal signal, 0 at the start.
struct BookStep {
  net::Stg stg = {};
  std::vector<net::Sign> signs = {};  // by insertion
  std::string fault = {};    // in words, empty where there is none; the STG is of no use else
  bool has_one_code = true;  // the new signal has one value in all states that look alike
};

// Faults are those of resolution_fault(), and edits that overlap, and a transition that would both
// rise and fall or can never happen. Conflicts that are left are none.
BookStep insert_signal_by_the_book(const net::Stg& stg, std::span<const net::Insertion> insertions,
                                   const std::string& name = "x");

// Calls visit(set) for all sets of one to `max_edges` of the candidates, as positions, without
// overlaps and without two that can happen at once.
void for_each_set(const net::Stg& stg, std::span<const net::Insertion> candidates,
                  std::size_t max_edges,
                  const std::function<void(std::span<const std::size_t>)>& visit);

}  // namespace vorel::oracle
