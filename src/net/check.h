// net/check.h - the invariants of nets and processes, walked through by assertions.
// Here:      everything that the headers promise of a finished net, prefix or merged process.
// Not here:  what a file may get wrong, which is an error or a warning (net/sanity_checks.h).
//
// Whoever changes a net or a process calls check() when done: readers, merging, unfolding, cloning,
// removing cut-offs. Time is linear but for the links of merged processes, which are sorted, and
// nothing at all in a release build.
#pragma once

#include "net/process.h"

namespace vorel::net {

// Places and transitions: each index is a position, the lists of links are sorted, and tell of the
// same arcs on both sides, between elements of the net.
template <class T>
void check_arcs(const NetOf<T>& net);

// Signals: each index is a position, the kinds are ranges with the bounds of the net, names ascend
// within a kind, values are 0, 1 or unknown.
void check_signals(const Stg& stg);

// The above; each transition of an STG has a sign and a signal of the STG.
void check(const Net& net);
void check(const Stg& stg);

// The net; then of the process itself: each index is a position; links are entered on both sides,
// each once, and sorted in a prefix; events have presets; each event consumes and produces on the
// places of its transition; places have the tokens of their initial conditions. Of a prefix: no
// event causes itself, correspondents are events of the prefix, what is left out of the list of
// conditions is produced by a cut-off and has no consumer. Of a merged process: the occurrences of
// a place have depths without a gap, and of these the first alone may be marked.
template <Process P>
void check(const P& process);

}  // namespace vorel::net
