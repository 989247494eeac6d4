// formats/overwriting.h - which files an output may not replace.
// Here:      the refusals, told from names before anything is computed.
// Not here:  how a file is replaced (base/output_file.h).
// A pattern that the shell expands gives a second net where the name of an output is expected.
#pragma once

#include <string>
#include <string_view>

namespace vorel::formats {

// Whether both names lead to one file, through links or not; also of names without a file.
bool is_same_file(const std::string& a, const std::string& b);

// False after an error: the output is a file that the run reads; `what` says of the file how ("is
// the input"). Devices and pipes can be both.
bool spares_input(const std::string& output, const std::string& input, std::string_view what);

// False after an error: the output is there, and its name is that of a net or a process.
bool spares_nets(const std::string& output);

}  // namespace vorel::formats
