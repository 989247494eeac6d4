#include "tools/arguments.h"

#include <algorithm>
#include <charconv>
#include <thread>
#include <vector>

#include "base/messages.h"
#include "formats/net_file.h"

namespace vorel::tools {
namespace {

// Ranges of the library let numbers pass that are too large for any type, or negative.
std::string count_fault(const std::string& text) {
  std::uint64_t count = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, count);
  if (error == std::errc() && stop == end && count > 0) return {};
  return "'" + text + "' is not a number of events above 0";
}

// Also refuses what is no number.
std::string time_fault(const std::string& text) {
  double seconds = 0;
  if (CLI::detail::lexical_cast(text, seconds) && seconds > 0 && seconds <= 1e9) return {};
  return "'" + text + "' is not a number of seconds above 0";
}

}  // namespace

std::string PlainHelp::make_option_opts(const CLI::Option* option) const {
  return option->get_type_name().empty() ? "" : " " + option->get_type_name();
}

CLI::Validator is_count_of_events() { return CLI::Validator(count_fault, "", "count"); }

CLI::Validator is_time() { return CLI::Validator(time_fault, "", "time"); }

std::uint32_t preset_threads() { return std::clamp(std::thread::hardware_concurrency(), 1u, 8u); }

void add_threads_option(CLI::App& app, std::uint32_t& threads) {
  app.add_option("--threads", threads, "threads (default: one for each processor, at most 8)")
      ->check(CLI::Range(1u, 256u).description(""))
      ->type_name("N");
}

void add_format_option(CLI::App& app, std::string& name) {
  std::vector<std::string> names;
  for (const formats::NetFormatRow& row : formats::net_formats) names.emplace_back(row.name);
  app.add_option("--format", name, "format of the input, whatever its name: g, ll_net or pnml")
      ->check(CLI::IsMember(names).description(""))
      ->type_name("NAME");
}

void add_usual_flags(CLI::App& app) {
  app.set_help_flag("-h,--help", "print this help");
  app.set_version_flag("--version", app.get_name() + " " VOREL_VERSION, "print the version");
}

bool parse_arguments(CLI::App& app, int argc, char** argv) {
  std::string fault;
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::Success& what_is_asked) {
    app.exit(what_is_asked);
    return false;
  } catch (const CLI::RequiredError& error) {
    // What is missing may be missing because of an option that there is not.
    const std::vector<std::string> unknown = app.remaining();
    fault = unknown.empty() ? error.what() : CLI::ExtrasError(unknown).what();
  } catch (const CLI::ParseError& error) {
    fault = error.what();
  }
  base::print_error(fault + " (" + app.get_name() + " --help tells more)");
  return false;
}

}  // namespace vorel::tools
