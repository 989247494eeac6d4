// tools/output_names.h - whether files can be written, told from their names before any work.
// Here:      what is read or written twice, nets that would be replaced, permissions.
// Not here:  what single names mean; how a file is replaced (base/output_file.h).
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vorel::tools {

struct InputName {
  std::string_view what;  // "is the input"
  std::string name;
};

struct OutputName {
  std::string_view what;  // "the output", "--dot"
  std::string name;       // empty: there is none
  // The result itself may go to the standard output, and replace what by its name is a net.
  bool is_result = false;
};

// False after an error.
bool can_be_written(std::span<const OutputName> outputs, std::span<const InputName> inputs);

}  // namespace vorel::tools
