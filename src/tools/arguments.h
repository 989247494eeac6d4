// tools/arguments.h - what the command lines of the companions have in common.
// Here:      the run of the parser with its errors, the layout of the help, kinds of values.
// Not here:  the options of one companion.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

namespace vorel::tools {

// The table of options with no more than what an option is given: the descriptions say the rest.
class PlainHelp : public CLI::Formatter {
 public:
  PlainHelp() { column_width(24); }
  std::string make_option_opts(const CLI::Option* option) const override;
};

// A number above 0, whole ("events") or a fraction ("seconds"), as the check of an option.
CLI::Validator is_count_of_events();
CLI::Validator is_time();

// The threads of a run that is not told how many.
std::uint32_t preset_threads();

// Adds the option --threads.
void add_threads_option(CLI::App& app, std::uint32_t& threads);

// Adds the option --format, which sets the name of a format of nets.
void add_format_option(CLI::App& app, std::string& name);

// Gives the application, which is called like the program, --help and --version.
void add_usual_flags(CLI::App& app);

// False where nothing is left to do: after --help, --version or a reported error.
bool parse_arguments(CLI::App& app, int argc, char** argv);

}  // namespace vorel::tools
