// resolution/transformation.h - what a step of the resolution does to an STG.
// Here:      insertions of a signal and reductions of concurrency as data, their order and text.
// Not here:  which are valid (resolution/insertions.h, resolution/reductions.h), what they cost,
// the
//            edits themselves (net/insert_transition.h, resolution/apply_reduction.h).
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "net/insert_transition.h"

namespace vorel::resolution {

// A new place that the sources produce on and the target consumes from: the target waits.
struct Reduction {
  std::vector<const net::StgTransition*> sources;  // by index, at least one
  bool marked = false;                             // the place starts with a token
  const net::StgTransition* target = nullptr;
};

// The edges of one new signal, in the order of candidates.
using SignalInsertion = std::vector<net::Insertion>;

using StgTransformation = std::variant<SignalInsertion, Reduction>;

// By kind, then by the numbers of transitions and places: the order of candidates.
bool insertion_less(const net::Insertion& a, const net::Insertion& b);
bool insertion_equal(const net::Insertion& a, const net::Insertion& b);

// "{a,b}|t", "a|t", or "|t" for the whole preset; "t|{a,b}", "t|a", "t|"; "u -||-> t", with a star
// "u -||*-> t" for a token at the start; "{a,b*,c}-$->{t,u}", with a star in the same way.
std::string to_text(const net::Insertion& insertion);
// "u --> t", "{u,v} -*-> t", the star for a token at the start.
std::string to_text(const Reduction& reduction);

}  // namespace vorel::resolution
