// configuration/dummy_cutoffs.h - whether a process of an STG was cut at dummy events.
#pragma once

#include "net/process.h"

namespace vorel::configuration {

// True when some dummy cut-off may hide states: unless its correspondents are known, are not just
// one event, lie in its own past, and leave nothing but dummies of that past.
bool has_dummy_cutoffs(const net::StgPrefix& prefix);

// A merged process knows no correspondents: any dummy cut-off may hide states.
bool has_dummy_cutoffs(const net::StgMergedProcess& process);

// Whether an edge of a signal is a cut-off because a configuration that ends in a dummy leads to
// the same marking. Then no configuration without such an end need lead there, though a run does.
bool has_edges_cut_at_dummies(const net::StgPrefix& prefix);

}  // namespace vorel::configuration
