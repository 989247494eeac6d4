// oracle/write_files.h - processes as the text of input files, independent of the program's writer.
// Here:      PNML of all four kinds, *.mci of a prefix, *.mp of a merged process.
// Not here:  reading.
// A prefix must have all its conditions in its list.
#pragma once

#include <string>

#include "net/process.h"

namespace vorel::oracle {

template <net::Process P>
std::string pnml_text(const P& process);

// The transitions of an STG get the prefix of their signal's kind, such as "O.z+/1", and are
// numbered in the order of these names.
template <class N>
std::string mci_text(const net::PrefixOf<N>& prefix);

template <class N>
std::string mp_text(const net::MergedProcessOf<N>& process);

// Ends the test when the file cannot be written.
void write_file(const std::string& path, const std::string& content);

}  // namespace vorel::oracle
