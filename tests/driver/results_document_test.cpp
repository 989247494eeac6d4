// Documents of every mode that writes them, against docs/results.xsd.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/run_program.h"

namespace vorel::driver {
namespace {

TEST(ResultsDocument, OfEveryModeKeepsToTheSchema) {
  const std::vector<std::string> table[] = {
      {"-D"},
      {"-D", "-a"},
      {"-F", "-d", "true"},
      {"-Fs", "-d", "false"},
      {"-U"},
      {"-C"},
      {"-C", "-a"},
      {"-N"},
      {"-N", "-a"},
      {"-E"},
      {"-G"},
      {"-S"},
  };
  const support::TemporaryFolder folder;
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (!entry.path().string().ends_with(".pnml")) continue;
    for (std::vector<std::string> arguments : table) {
      arguments.push_back(entry.path());
      arguments.push_back(folder.path(std::to_string(count) + ".xml"));
      support::run_vorel(arguments);
      count += std::filesystem::exists(arguments.back()) ? 1 : 0;
    }
  }
  // Readers take names that are empty, or hold what XML cannot.
  const std::string vme = support::read_text(support::example("vme_read_csc.unf.pnml"));
  const std::pair<std::string, std::string> names[] = {
      {"<text>csc</text>", "<text></text>"},
      {"<text>csc</text>", "<text> \xFF &#1; </text>"},
      {"<text>lds+</text>", "<text></text>"},
  };
  for (const auto& [name, odd] : names) {
    ASSERT_NE(vme.find(name), std::string::npos) << name;
    std::string text = vme;
    text.replace(text.find(name), name.size(), odd);
    folder.write("odd.pnml", text);
    for (std::vector<std::string> arguments : table) {
      if (arguments[0] == "-F") arguments[2] = "$S\"d\"";  // after some steps
      const std::string output = folder.path(std::to_string(count++) + ".xml");
      arguments.insert(arguments.end(), {folder.path("odd.pnml"), output});
      const support::ProgramRun run = support::run_vorel(arguments);
      EXPECT_TRUE(std::filesystem::exists(output)) << odd << arguments[0] << run.err;
    }
  }
  EXPECT_GT(count, 70u) << "conflicts and inputs that a mode does not take leave no document";
  const std::string schema = support::example("../docs/results.xsd");
  const support::ProgramRun run = folder.shell("xmllint --noout --schema '" + schema + "' *.xml");
  EXPECT_EQ(run.exit_code, 0) << run.err;
}

}  // namespace
}  // namespace vorel::driver
