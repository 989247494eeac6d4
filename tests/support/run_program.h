// tests/support/run_program.h - runs a program as a user would, and keeps what it wrote.
// Here:      arguments, standard input, working directory, limits; a folder for files.
// Not here:  messages of the test's own process (support/caught_messages.h, included).
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/caught_messages.h"

namespace vorel::support {

struct ProgramRun {
  int exit_code = -1;  // minus the number of the signal that ended the program
  std::string out, err;
};

struct RunOptions {
  std::string input = {};         // of the program
  std::string directory = {};     // empty: that of the test
  std::string output_path = {};   // empty: kept in ProgramRun::out
  std::string error_path = {};    // empty: kept in ProgramRun::err
  std::size_t address_space = 0;  // bytes; 0: unlimited
};

namespace run_program_details {

constexpr rlim_t most_seconds = 120;  // a program that hangs is killed by then

struct Capture {
  Capture() : file{std::tmpfile()} {
    if (file == nullptr) throw std::runtime_error("no temporary file for a test");
  }
  ~Capture() { std::fclose(file); }
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

  int descriptor() const { return ::fileno(file); }
  std::string text() const {
    std::string all;
    std::rewind(file);
    for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file))
      all.push_back(static_cast<char>(c));
    return all;
  }
  std::FILE* file;
};

inline void limit(int resource, rlim_t value) {
  const rlimit both{value, value};
  ::setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

[[noreturn]] inline void become(const std::vector<std::string>& command,
                                const RunOptions& options) {
  if (!options.directory.empty() && ::chdir(options.directory.c_str()) != 0) ::_exit(126);
  limit(RLIMIT_CPU, most_seconds);
  limit(RLIMIT_CORE, 0);
  if (options.address_space != 0) limit(RLIMIT_AS, options.address_space);
  std::vector<char*> arguments;
  for (const std::string& argument : command) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  ::execv(arguments.front(), arguments.data());
  ::_exit(127);
}

}  // namespace run_program_details

// command[0] is the path of the program.
inline ProgramRun run_program(const std::vector<std::string>& command,
                              const RunOptions& options = {}) {
  using namespace run_program_details;
  const Capture in, out, err;
  std::fputs(options.input.c_str(), in.file);
  std::rewind(in.file);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(in.descriptor(), STDIN_FILENO);
    ::dup2(options.output_path.empty() ? out.descriptor()
                                       : ::open(options.output_path.c_str(), O_WRONLY),
           STDOUT_FILENO);
    ::dup2(options.error_path.empty() ? err.descriptor()
                                      : ::open(options.error_path.c_str(), O_WRONLY | O_NOCTTY),
           STDERR_FILENO);
    become(command, options);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child) throw std::runtime_error("no process");
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), out.text(), err.text()};
}

#ifdef VOREL_BINARY
inline ProgramRun run_vorel(const std::vector<std::string>& arguments,
                            const RunOptions& options = {}) {
  std::vector<std::string> command{VOREL_BINARY};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run_program(command, options);
}
#endif

#ifdef VOREL_UNFOLD_BINARY
inline ProgramRun run_vorel_unfold(const std::vector<std::string>& arguments,
                                   const RunOptions& options = {}) {
  std::vector<std::string> command{VOREL_UNFOLD_BINARY};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run_program(command, options);
}
#endif

#ifdef VOREL_EXAMPLES
inline std::string example(const std::string& name) { return VOREL_EXAMPLES "/" + name; }
#endif

// A folder of its own for the files of one test.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = std::filesystem::temp_directory_path() / "vorel-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for a test");
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path(const std::string& name = "") const {
    return name.empty() ? path_ : path_ + "/" + name;
  }
  std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(path(name), std::ios::binary) << text;
    return path(name);
  }
  // A command of the shell that runs in the folder.
  ProgramRun shell(const std::string& command) const {
    return run_program({"/bin/sh", "-c", command}, {.directory = path_});
  }

 private:
  std::string path_;
};

inline std::string read_text(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vorel::support
