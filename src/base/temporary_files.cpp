#include "base/temporary_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "base/messages.h"
#include "base/run_state.h"

namespace vorel::base {
namespace {

std::string temporary_directory() {
  const char* const chosen = std::getenv("TMPDIR");
  return chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
}

std::string reason_for(int error_number) {
  switch (error_number) {
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
      return "the file is either read-only or open";
    case ENOENT:
    case ENOTDIR:
    case EISDIR:
      return "the file name or path was not found, or the path specifies a directory";
    default:
      return "the reason is unknown";
  }
}

void delete_temporary_file(const std::string& name) {
  if (::unlink(name.c_str()) == 0) return;
  print_warning("failed to delete a temporary file " + name + ": " + reason_for(errno));
}

}  // namespace

std::FILE* create_temporary_file() {
  std::string name = temporary_directory() + "/_tmpXXXXXX";
  const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
  std::FILE* const stream = descriptor < 0 ? nullptr : ::fdopen(descriptor, "w+");
  if (stream == nullptr) {
    if (descriptor >= 0) {
      ::close(descriptor);
      ::unlink(name.c_str());
    }
    print_error("failed to create a temporary file (" + name + ")");
    return nullptr;
  }
  assert(name.substr(name.rfind('/')).starts_with("/_tmp"));
  run_state().temporary_files.push_back(std::move(name));
  return stream;
}

void delete_temporary_files() {
  auto& names = run_state().temporary_files;
  for (const std::string& name : names) delete_temporary_file(name);
  names.clear();
  assert(run_state().temporary_files.empty());
}

}  // namespace vorel::base
