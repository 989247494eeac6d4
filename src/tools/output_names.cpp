#include "tools/output_names.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/messages.h"
#include "formats/overwriting.h"
#include "tools/input_net.h"

namespace vorel::tools {
namespace {

namespace fs = std::filesystem;

using base::fail;

// Whether it looks so beforehand; whether it is so is seen when the file is written.
bool is_writable(const std::string& name) {
  std::error_code unknown;
  if (fs::exists(name, unknown)) {
    return !fs::is_directory(name, unknown) && ::access(name.c_str(), W_OK) == 0;
  }
  const fs::path folder = fs::path(name).parent_path();
  return fs::path(name).has_filename() &&
         ::access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0;
}

bool can_be_written(const OutputName& output, std::span<const InputName> inputs) {
  if (output.name == standard_stream) {
    return output.is_result || fail(std::string(output.what) + " needs the name of a file");
  }
  const auto is_spared = [&output](const InputName& input) {
    return formats::spares_input(output.name, input.name, input.what);
  };
  if (!std::ranges::all_of(inputs, is_spared)) return false;
  if (!output.is_result && !formats::spares_nets(output.name)) return false;
  return is_writable(output.name) || fail(base::cannot_open_for_output(output.name));
}

}  // namespace

bool can_be_written(std::span<const OutputName> outputs, std::span<const InputName> inputs) {
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const OutputName& output = outputs[i];
    if (output.name.empty()) continue;
    if (!can_be_written(output, inputs)) return false;
    for (const OutputName& before : outputs.first(i)) {
      if (!formats::is_same_file(output.name, before.name)) continue;
      return fail(std::string(output.what).append(" and ").append(before.what) +
                  " are the same file \"" + before.name + '"');
    }
  }
  return true;
}

}  // namespace vorel::tools
