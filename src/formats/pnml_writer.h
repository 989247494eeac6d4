// formats/pnml_writer.h - writing PNML, the main format of prefixes and merged processes.
// Here:      the document that formats/pnml_reader.h reads, for all four kinds of process.
// Not here:  the legacy formats (formats/mci_writer.h, formats/mp_writer.h).
//
// Nothing is lost: what is read back is the same process, but that conditions left out after
// cut-offs become ordinary ones, numbered behind all others, and that a net is read sorted.
// Names may hold any bytes but zero. Control characters are written as references, which XML 1.0
// allows for tab, line feed and carriage return only, so that a document with others is XML 1.1.
// Bytes that are not UTF-8 are written as they are.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "net/process.h"

namespace vorel::formats {

// False after an error: a write fails, or a name has a zero byte; nothing is written then. The text
// is never in memory as a whole, and the same for any number of threads, of which a small process
// takes one only.
template <net::Process P>
bool write_pnml(const P& process, std::ostream& stream, std::uint32_t threads = 1);

// Compresses if the name ends in ".gz".
template <net::Process P>
bool save_pnml(const P& process, const std::string& file_name, std::uint32_t threads = 1);

}  // namespace vorel::formats
