#include "formats/overwriting.h"

#include <cassert>
#include <filesystem>

#include "base/messages.h"
#include "formats/net_file.h"

namespace vorel::formats {
namespace {

namespace fs = std::filesystem;

bool refuse(const std::string& output, std::string_view reason) {
  assert(!output.empty());
  base::print_error("refusing to overwrite " + output + ", which " + std::string(reason));
  return false;
}

// By its ending, which ".gz" may follow.
bool names_net_or_process(std::string_view name) {
  if (net_format_of(name)) return true;
  if (name.ends_with(".gz")) name.remove_suffix(3);
  return name.ends_with(".mci") || name.ends_with(".mp");
}

}  // namespace

bool is_same_file(const std::string& a, const std::string& b) {
  std::error_code missing;
  return fs::equivalent(a, b, missing) ||
         fs::path(a).lexically_normal() == fs::path(b).lexically_normal();
}

bool spares_input(const std::string& output, const std::string& input, std::string_view what) {
  std::error_code missing;
  if (!fs::is_regular_file(output, missing) || !is_same_file(output, input)) return true;
  return refuse(output, what);
}

bool spares_nets(const std::string& output) {
  std::error_code missing;
  if (!names_net_or_process(output) || !fs::exists(output, missing)) return true;
  return refuse(output, "is a net or process by its name (give the output another one)");
}

}  // namespace vorel::formats
