// base/output_file.h - an output file that appears whole or not at all.
// Here:      writing aside and renaming, for results and converted nets alike.
// Not here:  messages: the caller knows what its user is to be told.
//
// The text goes to a hidden temporary file in the folder of the target, which commit() renames.
// Written in place, so that a failure may leave a part, is what cannot be replaced: a device, a
// pipe, an open descriptor such as /dev/stdout, a file whose folder takes no new file or whose
// owner would change. A process that is killed leaves the temporary file behind.
#pragma once

#include <ext/stdio_filebuf.h>

#include <filesystem>
#include <ostream>
#include <string>

namespace vorel::base {

class OutputFile {
 public:
  // Follows symbolic links: their target is replaced, never the link. The permissions are those of
  // the replaced file, or those that any new file gets. A file that is not writable is refused.
  explicit OutputFile(const std::string& name);
  // Without a commit() that succeeded, the target stays as it was.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool is_open() const { return buffer_.is_open(); }
  std::ostream& stream();
  // Where the text goes until commit(), for a library that opens files itself.
  const std::string& written_path() const { return temporary_.empty() ? target_ : temporary_; }

  // Closes the file, which then only waits for its name: of several that are to appear together
  // none takes a descriptor meanwhile. False if it is not open or any write or the closing failed.
  bool finish();
  // Finishes the file, if that is not done, and renames it. False if any of it failed.
  bool commit();

 private:
  void open_by_kind();
  void open_in_place(int flags);
  void open_again(const std::filesystem::path& path);
  void open_aside();
  void discard();

  std::string target_;
  std::string temporary_;  // empty when written in place
  bool is_finished_ = false;
  __gnu_cxx::stdio_filebuf<char> buffer_;
  std::ostream stream_{&buffer_};
};

// For a thread that ends the process while others may be writing: removes what they have written
// aside. From now on no file gets its name, and whoever tries to waits forever.
void abandon_output_files();

}  // namespace vorel::base
