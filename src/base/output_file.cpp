#include "base/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cassert>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <mutex>
#include <vector>

namespace vorel::base {
namespace {

namespace fs = std::filesystem;

constexpr int max_links = 40;              // as many as the kernel follows
constexpr int max_temporary_names = 1000;  // only left-over files make a second one necessary

// Where a name leads when all symbolic links at its end are followed, whether that exists or not.
struct Destination {
  fs::path path;
  bool is_open_file = false;  // which has no name to rename to; `path` is in /proc
};

Destination follow_links(fs::path path) {
  std::error_code error;
  for (int links = 0; links < max_links && fs::is_symlink(path, error); ++links) {
    const fs::path folder = fs::weakly_canonical(path.parent_path(), error);
    if (folder.native().starts_with("/proc/")) return {folder / path.filename(), true};
    path = path.parent_path() / fs::read_symlink(path, error);
  }
  return {path};
}

// True for /proc/PID/fd/N with the number of this process.
bool is_own_descriptor(const fs::path& path) {
  return path.parent_path() == "/proc/" + std::to_string(getpid()) + "/fd";
}

// -1 for a descriptor that cannot be written: what it reads from is no place for output.
int copy_of_descriptor(const fs::path& path) {
  assert(is_own_descriptor(path));
  const std::string digits = path.filename().string();
  int number = -1;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const int flags = fcntl(number, F_GETFL);
  if (flags < 0 || (flags & O_ACCMODE) == O_RDONLY) return -1;
  return fcntl(number, F_DUPFD_CLOEXEC, 0);
}

// Gives the new file the owner and the permissions of the old one.
bool take_over_attributes(int file, const struct stat& old) {
  struct stat current;
  if (fstat(file, &current) != 0) return false;
  const bool same_owner = current.st_uid == old.st_uid && current.st_gid == old.st_gid;
  if (!same_owner && fchown(file, old.st_uid, old.st_gid) != 0) return false;
  return fchmod(file, old.st_mode & 07777) == 0;
}

// The folder is that of the target, as renaming works within one file system only.
std::string temporary_name(const std::string& target, int number) {
  const std::string base = ".vorel-" + std::to_string(getpid()) + "-" + std::to_string(number);
  return (fs::path(target).parent_path() / (base + ".tmp")).string();
}

std::mutex unfinished_mutex;
std::vector<std::string> unfinished;  // guarded by unfinished_mutex: files that were written aside

}  // namespace

OutputFile::OutputFile(const std::string& name) : target_{name} { open_by_kind(); }

OutputFile::~OutputFile() { discard(); }

void OutputFile::open_by_kind() {
  struct stat old;
  const bool exists = stat(target_.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return;
  if (exists && !S_ISREG(old.st_mode)) return open_in_place(O_TRUNC);
  const Destination target = follow_links(target_);
  if (target.is_open_file) return open_again(target.path);
  if (!target.path.has_filename()) return;
  target_ = target.path.string();
  if (exists && faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) return;
  open_aside();
  const bool replaceable = is_open() && (!exists || take_over_attributes(buffer_.fd(), old));
  if (replaceable) return;
  discard();
  if (exists) open_in_place(O_TRUNC);
}

std::ostream& OutputFile::stream() {
  assert(is_open());
  return stream_;
}

bool OutputFile::finish() {
  if (!is_open()) return false;
  const bool flushed = stream_.flush().good();
  const bool closed = buffer_.close() != nullptr;
  is_finished_ = flushed && closed;
  if (!is_finished_) discard();
  return is_finished_;
}

bool OutputFile::commit() {
  if (!is_finished_ && !finish()) return false;
  is_finished_ = false;
  if (temporary_.empty()) return true;
  {
    const std::scoped_lock lock(unfinished_mutex);
    if (std::rename(temporary_.c_str(), target_.c_str()) == 0) {
      std::erase(unfinished, temporary_);
      temporary_.clear();
      return true;
    }
  }
  discard();
  return false;
}

void OutputFile::open_in_place(int flags) {
  assert(!is_open() && temporary_.empty());
  const int file = open(target_.c_str(), O_WRONLY | O_CLOEXEC | flags);
  if (file >= 0) buffer_ = __gnu_cxx::stdio_filebuf<char>(file, std::ios::out);
}

// A copy of the descriptor shares its position: what was written stays, and what is written later
// comes after the text. A file that only another process has open is appended to.
void OutputFile::open_again(const fs::path& path) {
  if (!is_own_descriptor(path)) return open_in_place(O_APPEND);
  const int file = copy_of_descriptor(path);
  if (file >= 0) buffer_ = __gnu_cxx::stdio_filebuf<char>(file, std::ios::out);
}

void OutputFile::open_aside() {
  assert(!is_open() && temporary_.empty());
  const std::scoped_lock lock(unfinished_mutex);
  for (int number = 0; number < max_temporary_names; ++number) {
    const std::string name = temporary_name(target_, number);
    const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0 && errno == EEXIST) continue;
    if (file < 0) return;
    temporary_ = name;
    unfinished.push_back(name);
    buffer_ = __gnu_cxx::stdio_filebuf<char>(file, std::ios::out);
    return;
  }
}

void OutputFile::discard() {
  if (is_open()) buffer_.close();
  if (!temporary_.empty()) {
    const std::scoped_lock lock(unfinished_mutex);
    unlink(temporary_.c_str());
    std::erase(unfinished, temporary_);
  }
  temporary_.clear();
  assert(!is_open());
}

void abandon_output_files() {
  unfinished_mutex.lock();
  for (const std::string& name : unfinished) unlink(name.c_str());
}

}  // namespace vorel::base
