// formats/process_file.h - the input file, read by the reader that its name asks for.
// Here:      the choice of the reader, one function per shape of input.
// Not here:  the readers themselves (formats/pnml_reader.h, formats/mci_reader.h,
//            formats/mp_reader.h).
#pragma once

#include <memory>
#include <string>

#include "net/process_variant.h"

namespace vorel::formats {

// Null when it was refused, mostly after a reported error; a process can also come back after an
// error, so the caller looks at the severity too.
std::unique_ptr<net::FullVariant> read_full(const std::string& file_name);
std::unique_ptr<net::NoStgMergedVariant> read_no_stg_mp(const std::string& file_name);
std::unique_ptr<net::StgPrefixVariant> read_stg_prefix(const std::string& file_name);

}  // namespace vorel::formats
