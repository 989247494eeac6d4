// resolution/lock_formula.h - which signals are locked with the new one after a step, as a formula.
// Here:      a literal for each signal, defined by the candidates that are chosen.
// Not here:  the locked signals of a prefix at hand (resolution/signal_locks.h).
#pragma once

#include "resolution/candidate_gates.h"
#include "resolution/occurrence_order.h"

namespace vorel::resolution {

using SignalLits = base::IndexedBy<net::Signal, sat::Lit>;

// A literal for each signal but dummies that implies that the signal is locked with the new one
// (resolution/signal_locks.h) in the prefix that the candidates chosen make. Where they are locked
// some assignment of the variables made here has the literal true; so it is exact in each model of
// a least cost to which literals that are false add something. No two candidates may be chosen that
// exclude each other (resolution/insertion_mutex.h), else it may be false for locked signals.
SignalLits locked_signals(const OccurrenceOrder& order, CandidateGates& gates);

}  // namespace vorel::resolution
