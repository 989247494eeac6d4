// formats/mci_reader.h - reading *.mci, the legacy binary format of prefixes.
// Here:      from the bytes to a finished process; for an STG also its labels and initial values.
// Not here:  writing the format (formats/mci_writer.h), the labels (net/transition_label.h), the
//            structural checks that follow (net/sanity_checks.h).
#pragma once

#include <istream>
#include <memory>
#include <string>

#include "net/process.h"

namespace vorel::formats {

// Null after an error that names the file. Time and memory are linear in what the file holds,
// whatever the counts in it claim.
std::unique_ptr<net::NetPrefix> read_mci_net(std::istream& stream, const std::string& file_name);
std::unique_ptr<net::StgPrefix> read_mci_stg(std::istream& stream, const std::string& file_name);

}  // namespace vorel::formats
