// resolution/implicit_places.h - places that no transition waits for.
// Here:      finding and removing them, from the net and its prefix.
#pragma once

#include "net/process.h"
#include "sat/cnf_formula.h"

namespace vorel::resolution {

// A place goes if it is marked whenever the other places of one of its consumers are, as long as
// these stay: then nothing can fire that could not before, transitions without events included. It
// must also be redundant in each occurrence of a consumer: the event that produced the token lies
// before what the others need. Otherwise the prefix, which stays complete with its cut-offs and
// correspondents, would order events that the net no longer orders. No preset becomes empty. The
// places are tried in their order. Tells from verbosity 4 on. False after a reported error; the
// prefix is as it was then.
bool remove_implicit_places(net::StgPrefix& prefix, const sat::CnfParams& params);

}  // namespace vorel::resolution
