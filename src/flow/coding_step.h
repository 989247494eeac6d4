// flow/coding_step.h - the encoding conflicts of an STG, told by traces.
// Here:      whether USC and CSC hold, a conflict for each core, the core map.
// Not here:  the search for conflicts (conflicts/csc_check.h, conflicts/usc_check.h), resolving
// them
//            (resolution/resolution_engine.h).
#pragma once

#include <optional>

#include "flow/flow_result.h"
#include "net/process.h"
#include "sat/cnf_formula.h"

namespace vorel::flow {

// The prefix is complete, with initial values. Of each kind at most about 200 cores are looked for.
// USC cores that are CSC cores too are listed once, as these; otherwise CSC comes first, and short
// traces before long ones. Nothing after a reported error.
std::optional<Coding> find_coding(const net::StgPrefix& prefix, const sat::CnfParams& formula);

// The core map alone, as of a resolved STG. Nothing after a reported error.
std::optional<CoreMap> find_core_map(const net::StgPrefix& prefix, const sat::CnfParams& formula);

}  // namespace vorel::flow
