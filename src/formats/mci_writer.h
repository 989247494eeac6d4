// formats/mci_writer.h - writing *.mci, the legacy binary format of prefixes
// (formats/mci_layout.h). The format keeps no conditions left out after cut-offs, no arcs of
// transitions without events, and no more than one correspondent of a cut-off: several become
// "unknown".
#pragma once

#include <ostream>

#include "net/process.h"

namespace vorel::formats {

// Both warn of the legacy format, and give false after the error "cannot write a file". The stream
// is flushed.
template <class N>
bool write_mci(const net::PrefixOf<N>& prefix, std::ostream& stream);

// With the kind of each signal put in front of the names of its transitions, so that the signals
// can be read back.
bool write_stg_mci(const net::StgPrefix& prefix, std::ostream& stream);

}  // namespace vorel::formats
