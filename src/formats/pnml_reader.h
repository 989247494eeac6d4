// formats/pnml_reader.h - the reader of *.pnml and *.pnml.gz, the main input format.
// Here:      the readers, one per shape of the input of a mode.
// Not here:  the legacy formats (formats/mci_reader.h, formats/mp_reader.h).
// A document holds a process together with the net that it is of, and tells which of the four
// kinds of process it is.
#pragma once

#include <memory>
#include <string>

#include "net/process_variant.h"

namespace vorel::formats {

// Reads and checks the file. Null after an error; also, without a word below verbosity 1, if the
// document has no original net of the right type or no page.
template <class Shape>
std::unique_ptr<Shape> read_pnml(const std::string& file_name);

// The same for a text in memory.
template <class Shape>
std::unique_ptr<Shape> read_pnml_text(std::string text);

}  // namespace vorel::formats
