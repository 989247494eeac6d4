// formats/mp_reader.h - reading *.mp, the legacy text format of merged processes.
// Here:      from the text to a finished process; for an STG also its labels.
// Not here:  the labels (net/transition_label.h), the structural checks that follow
//            (net/sanity_checks.h).
#pragma once

#include <istream>
#include <memory>
#include <string>

#include "net/process.h"

namespace vorel::formats {

// Null after an error that names the file and the line. Everything keeps the numbers and the order
// of the file. Time and memory are linear in what the file holds, whatever the counts in it claim.
std::unique_ptr<net::NetMergedProcess> read_mp_net(std::istream& stream,
                                                   const std::string& file_name);
std::unique_ptr<net::StgMergedProcess> read_mp_stg(std::istream& stream,
                                                   const std::string& file_name);

}  // namespace vorel::formats
