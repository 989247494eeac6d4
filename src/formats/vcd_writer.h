// formats/vcd_writer.h - a trace as a value change dump, for viewers of waveforms.
#pragma once

#include <ostream>
#include <string_view>

#include "formats/waveform.h"

namespace vorel::formats {

// All rows, with one step at each of the times 1, 2, ..., and the title as comment. `program` is
// name and version of what writes it. False after an error.
bool write_vcd(const Waveform& waveform, std::string_view program, std::ostream& stream);

}  // namespace vorel::formats
