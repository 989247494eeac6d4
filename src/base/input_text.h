// base/input_text.h - the text of an input, whole, in memory.
// Here:      reading a plain or gzipped file, or an open stream, to its end.
// Not here:  what the text means (formats/pnml_reader.h, formats/mci_reader.h, ...).
//
// Memory grows with the bytes that really come: a size told by the file system is only a hint.
#pragma once

#include <istream>
#include <string>
#include <string_view>

namespace vorel::base {

// Reads the file into `text`, through decompression if the name ends with ".gz". False after an
// error: the file cannot be opened (a directory counts as such), or reading breaks off, as it does
// in a compressed file that is cut short or damaged. The hint is for whom the file was not meant:
// it stands behind the error that the file cannot be opened.
bool read_whole_file(const std::string& file_name, std::string& text, std::string_view hint = {});

// All bytes from the present position to the end. A stream that breaks off is bad() afterwards.
std::string read_whole_stream(std::istream& stream);

}  // namespace vorel::base
