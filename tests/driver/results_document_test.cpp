// Documents of every mode that writes them, against docs/results.xsd.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/run_program.h"

namespace vorel {
namespace {

std::string schema() { return example("../docs/results.xsd"); }

// Of the files named by a pattern of the shell.
ProgramRun validate(const TemporaryFolder& folder, const std::string& files) {
  return run_program({"/bin/sh", "-c", "xmllint --noout --schema '" + schema() + "' " + files},
                     {.directory = folder.path()});
}

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
  const TemporaryFolder folder;
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(VOREL_EXAMPLES)) {
    if (!entry.path().string().ends_with(".pnml")) continue;
    for (std::vector<std::string> arguments : table) {
      arguments.push_back(entry.path());
      arguments.push_back(folder.path(std::to_string(count) + ".xml"));
      run_vorel(arguments);
      count += std::filesystem::exists(arguments.back()) ? 1 : 0;
    }
  }
  EXPECT_GT(count, 70u) << "conflicts and inputs that a mode does not take leave no document";
  const ProgramRun run = validate(folder, "*.xml");
  EXPECT_EQ(run.exit_code, 0) << run.err;
}

TEST(ResultsDocument, IsRefusedBySchemaWhenChanged) {
  const TemporaryFolder folder;
  const struct {
    const char *mode, *input, *right, *wrong;
  } table[] = {
      {"-D", "philosophers4", "status=\"success\"", "status=\"failure\""},
      {"-D", "philosophers4", "cost=\"4\"", ""},
      {"-D", "philosophers4", "event=\"", "event=\"-"},
      {"-C", "vme_read", "<trace>", "<traces>"},
      {"-N", "toggle", "reason=\"", "reason=\"no_"},
      {"-E", "celement", "<signal>c</signal>", ""},
      {"-S", "celement", "<equation>", "<equation kind=\"\">"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(std::string(row.mode) + ' ' + row.right);
    const std::string file = folder.path("a.xml");
    run_vorel({row.mode, example(row.input + std::string(".unf.pnml")), file});
    EXPECT_EQ(validate(folder, "a.xml").exit_code, 0);
    std::string document = read_text(file);
    const std::size_t at = document.find(row.right);
    ASSERT_NE(at, std::string::npos) << document;
    folder.write("a.xml", document.replace(at, std::string(row.right).size(), row.wrong));
    EXPECT_NE(validate(folder, "a.xml").exit_code, 0);
  }
}

}  // namespace
}  // namespace vorel
