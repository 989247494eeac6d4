// The table of equations in README.md is what -E answers today.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "support/run_program.h"

namespace vorel {
namespace {

// "| `NAME` | `SIGNAL = EQUATION`, ... |", of the best alternatives; or the conflict instead.
std::string row_of(const std::string& name, const ProgramRun& run) {
  const std::string conflict = "Error: CSC conflict for output signal ";
  if (const std::size_t at = run.err.find(conflict); at != std::string::npos) {
    const std::size_t start = at + conflict.size();
    const std::string signal = run.err.substr(start, run.err.find(':', start) - start);
    return "| `" + name + "` | none: CSC conflict for `" + signal + "` |";
  }
  std::string cells, signal;
  std::istringstream lines(run.out);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("Signal ")) signal = line.substr(7, line.find(" (") - 7);
    if (!line.starts_with("Equation (") || signal.empty()) continue;
    cells +=
        (cells.empty() ? "`" : ", `") + signal + " = " + line.substr(line.find("): ") + 3) + '`';
    signal.clear();
  }
  return "| `" + name + "` | " + cells + " |";
}

TEST(EquationsTable, OfTheReadmeHoldsTheEquationsOfAllExamples) {
  const std::string readme = read_text(example("../README.md"));
  std::size_t rows = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (entry.path().extension() != ".g") continue;
    const std::string name = entry.path().stem();
    const std::string row = row_of(name, run_vorel({"-E", example(name + ".unf.pnml")}));
    EXPECT_NE(readme.find('\n' + row + '\n'), std::string::npos) << "there should be\n" << row;
    ++rows;
  }
  EXPECT_GT(rows, 5u);
}

}  // namespace
}  // namespace vorel
