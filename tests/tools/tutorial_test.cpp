// The tutorial: all its commands, run one after another in one folder, answer as it says.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "support/console_steps.h"
#include "support/run_program.h"

namespace vorel::tools {
namespace {

// Without what differs from run to run, and without empty lines around.
std::string comparable(const std::string& text) {
  static const std::regex times("[0-9]+\\.[0-9]+( s |/[0-9]+\\.[0-9]+)");
  const std::string masked = std::regex_replace(text, times, "TIME");
  const std::size_t first = masked.find_first_not_of('\n');
  if (first == std::string::npos) return "";
  return masked.substr(first, masked.find_last_not_of('\n') - first + 1);
}

TEST(Tutorial, SaysWhatItsCommandsAnswer) {
  const support::TemporaryFolder folder;
  const bool can_simulate = folder.shell("command -v iverilog && command -v vvp").exit_code == 0;
  const std::string programs = std::filesystem::path(VOREL_BINARY).parent_path();
  const auto steps =
      support::console_steps(support::read_text(VOREL_EXAMPLES "/../docs/tutorial.md"));
  EXPECT_GT(steps.size(), 15u);
  int exit_code = 0;
  for (const support::ConsoleStep& step : steps) {
    const bool simulates = step.command.find("iverilog") != std::string::npos ||
                           step.command.find("vvp") != std::string::npos;
    if (simulates && !can_simulate) continue;
    const auto run = folder.shell("PATH=" + programs + ":$PATH; (exit " +
                                  std::to_string(exit_code) + ")\n" + step.command);
    exit_code = run.exit_code;
    EXPECT_EQ(comparable(run.out + run.err), comparable(step.answer))
        << "docs/tutorial.md:" << step.line << ": " << step.command;
  }
  if (!can_simulate) GTEST_SKIP() << "without the simulation: Icarus Verilog is not installed";
}

}  // namespace
}  // namespace vorel::tools
