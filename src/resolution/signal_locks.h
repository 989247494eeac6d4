// resolution/signal_locks.h - which signals alternate strictly, so that little logic goes with
// them.
// Here:      locked pairs of signals, now and after a reduction, and the numbers made of them.
// Not here:  locked transitions (resolution/transition_locks.h).
//
// Two signals are locked if no event of one is concurrent with one of the other, and the number of
// events of either in the past of an event of the other (the event included), less that of the
// other's own, is always the same, and -1, 0 or 1. After a reduction "always" is over the copies of
// the events that the prefix has then (resolution/event_copies.h): nothing is unfolded again.
//
// Time is the links of the prefix times the words that hold a bit for each event, signals beginning
// with a word of their own; memory is a few words an event, and a number for each pair of signals.
#pragma once

#include <cstdint>

#include "net/process.h"
#include "resolution/relation_graph.h"
#include "resolution/transformation.h"

namespace vorel::resolution {

// The signals that are not dummies, symmetric. At verbosity 4 tells the locked pairs.
RelationGraph<net::Signal> signal_lock_relation(const net::StgPrefix& prefix,
                                                const Reduction* reduction = nullptr);

// A pair of signals weighs 1 if both are inputs, 2 if one of them is, else 4.
struct LockNumbers {
  std::uint64_t locked = 0;    // the weight of all locked pairs
  std::uint64_t unlocked = 0;  // of all others
};

// At verbosity 1 tells both numbers, at 4 the locked pairs.
LockNumbers lock_numbers(const net::StgPrefix& prefix, const Reduction* reduction = nullptr);

// 2 for each input and 4 for each output or internal signal that is not locked with the signal,
// itself left out. Faster than all pairs. At verbosity 4 tells the others.
std::uint64_t unlocked_weight(const net::StgPrefix& prefix, const net::Signal& signal);

}  // namespace vorel::resolution
