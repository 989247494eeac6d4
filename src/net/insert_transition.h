// net/insert_transition.h - putting a new transition into the net of a prefix, and its events into
// the prefix.
// Here:      where a transition can be put, as data; the edits of net and prefix.
// Not here:  which insertions are valid, and which of them are wanted.
//
// The prefix is edited as it stands, not unfolded again. It stays a complete prefix of its net,
// with the cut-offs and correspondents that it has, where
//   - SeqBefore: the places have no other consumer than the target;
//   - SeqAfter: for each cut-off e with correspondents f, the last event of the source in [e] has
//     lost no condition of the places within [e] exactly if the same holds of [f];
//   - Concurrent: the events of source and target alternate in each local configuration, so that
//     the number of the source's, plus one if marked, minus that of the target's is 0 before each
//     event of the source and 1 before each of the target, and is the same in [e] and [f];
//   - General: the same of each source, with its star for the mark, and each target.
// The new net is safe then if the old one is. Nothing lies after a cut-off, before and afterwards.
#pragma once

#include <variant>
#include <vector>

#include "net/process.h"

namespace vorel::net {

// Between `places` of the preset of `target` and `target`.
struct SeqBefore {
  const StgTransition* target = nullptr;
  std::vector<const StgPlace*> places;  // by index, at least one
};

// Between `source` and `places` of its postset.
struct SeqAfter {
  const StgTransition* source = nullptr;
  std::vector<const StgPlace*> places;  // by index, at least one
};

// Triggered by `source`, or by a token at the start, and waited for by `target`; concurrent with
// all between.
struct Concurrent {
  const StgTransition* source = nullptr;
  bool marked = false;  // the place between `source` and the new transition starts with a token
  const StgTransition* target = nullptr;
};

// Triggered by all of `sources`, those with a star giving a token at the start; waited for by all
// of `targets`; concurrent with all between.
struct General {
  std::vector<const StgTransition*> sources;  // by index, at least one
  std::vector<bool> starred;                  // by position of the source
  std::vector<const StgTransition*> targets;  // by index, at least one
};

using Insertion = std::variant<SeqBefore, SeqAfter, Concurrent, General>;

// Inserts a transition of the signal, with the sign, and its events. The prefix is open afterwards
// (net/edit.h), so that several insertions, which must not overlap, need one finish_edit().
//   SeqBefore:  an event for each co-set of conditions of the places, whether or not an event of
//               the target consumes it: the new transition need not wait for the target's other
//               places.
//   SeqAfter:   an event after each event of the source but cut-offs, which produce on the new
//               place instead of `places`.
//   Concurrent: an event after each event of the source but cut-offs, and one for the initial token
//               if marked; consumed from by all events of the target that follow before the next
//               event of the source.
//   General:    an event for each of general_occurrences().
StgTransition& insert_transition(StgPrefix& prefix, const Insertion& insertion, Signal& signal,
                                 Sign sign);

}  // namespace vorel::net
