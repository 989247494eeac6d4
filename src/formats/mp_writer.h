// formats/mp_writer.h - writing *.mp, the legacy text format of merged processes.
// The format keeps no arcs of transitions without mp-events and, of an STG, only the labels that
// the names of its transitions tell; they get the prefixes of their kinds.
#pragma once

#include <ostream>
#include <string>

#include "net/process.h"

namespace vorel::formats {

// Both warn of the legacy format, and give false after an error: a write fails, or the format
// cannot hold the process, for a name with a line feed, a token at a depth above 1 or an empty
// preset. Nothing is written in the latter case.
template <class N>
bool write_mp(const net::MergedProcessOf<N>& process, std::ostream& stream);
template <class N>
bool save_mp(const net::MergedProcessOf<N>& process, const std::string& file_name);

}  // namespace vorel::formats
