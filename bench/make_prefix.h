// bench/make_prefix.h - writes big prefixes (bench/prefix_family.h) as input files.
// Here:      PNML and *.mci, of a low-level net or an STG.
// Not here:  what the prefixes are (bench/prefix_family.h), the command line
// (make_prefix_main.cpp). Streams group by group: memory does not grow with the size of the prefix,
// time is linear.
#pragma once

#include <ostream>

#include "bench/prefix_family.h"

namespace vorel::bench {

enum class NetKind { net, stg };

// The state of the stream tells whether all was written.
void write_pnml(const PrefixFamily& family, NetKind kind, std::ostream& out);
void write_mci(const PrefixFamily& family, NetKind kind, std::ostream& out);

}  // namespace vorel::bench
