// flow/waveforms.h - traces of the flow as waveforms.
#pragma once

#include "flow/flow_result.h"
#include "formats/waveform.h"

namespace vorel::flow {

// A row for each signal that is no dummy, inputs first; the initial values of the STG are known.
formats::Waveform waveform_of(const net::Stg& stg, const StgTrace& trace, std::string title);

// Of an STG that is not known to be consistent: a row for each signal that has an edge in the
// trace, of no kind. The value before its first edge is the other one.
formats::Waveform waveform_of(const StgTrace& trace, std::string title);

// A row for each wire.
formats::Waveform waveform_of(const net::Stg& stg, const verify::Circuit& circuit,
                              const verify::Finding& finding);

}  // namespace vorel::flow
