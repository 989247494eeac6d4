#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/option_table.h"
#include "support/run_program.h"

namespace vorel::driver {
namespace {

using Parts = std::vector<std::string>;

// Each text after the end of the one before it.
void expect_in_order(const std::string& text, const Parts& parts) {
  std::size_t position = 0;
  for (const std::string& part : parts) {
    const std::size_t found = text.find(part, position);
    ASSERT_NE(found, std::string::npos) << "missing or too early: " << part;
    position = found + part.size();
  }
}

// What stands in both helps, up to the options.
Parts common_parts() {
  Parts parts = {
      "\nVOREL model checking/synthesis system, version 6.11alpha Compiled Oct 27 2015.",
      "zChaff (version 2003.11.04)",
      "MiniSat (version 2.2.0)",
      "SIS (version 1.2)",
      "BREL",
      "\n\nUsage:\n\tvorel [-h]\nor\n\tvorel mode [options] inputfilename [outputfilename]",
      "\n\nModes:"};
  const std::string titles[] = {
      "\n  Reachability-like properties checking modes:",
      "\n  Encoding conflicts detection and resolution modes:", "\n  Synthesis modes:"};
  for (const ModeGroup group :
       {ModeGroup::reachability, ModeGroup::conflicts, ModeGroup::synthesis}) {
    parts.push_back(titles[static_cast<int>(group)]);
    for (const ModeRow& row : mode_table()) {
      if (row.group == group)
        parts.push_back(std::string(row.option) + " - " + std::string(row.line));
    }
  }
  parts.push_back("\n\nOptions:");
  return parts;
}

std::string entry_of(const OptionRow& row) {
  return "\n  " + std::string(row.form) + " - " + std::string(row.line);
}

TEST(Help, WithoutArgumentsIsBrief) {
  const support::ProgramRun run = support::run_vorel({});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  expect_in_order(run.out, common_parts());
  std::string end = "\n\nOptions:";
  for (const OptionRow& row : option_table()) end += row.line.empty() ? "" : entry_of(row);
  EXPECT_TRUE(run.out.ends_with(end + "\nType vorel -h for extended help.\n")) << run.out;
  EXPECT_EQ(run.out.find("-+"), std::string::npos) << "an option that is not listed";
}

TEST(Help, InFullExplainsEveryOptionWithTheCurrentDefaults) {
  const support::ProgramRun run = support::run_vorel({"-h", "x", "y"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  Parts parts = common_parts();
  for (const OptionRow& row : option_table()) {
    if (row.line.empty()) continue;
    parts.push_back(entry_of(row) + "\n  This option is available in ");
    parts.emplace_back(row.paragraph.substr(0, row.paragraph.find('{')));  // a value follows
  }
  expect_in_order(run.out, parts);
  expect_in_order(
      run.out,
      {"\n\nIf outputfilename is omitted then stdout is used.",
       "\n\nIf -h is specified then full help is printed. If no\n"
       "command-line parameters are given then brief help is printed.",
       "Exit codes:", "5 - out of memory", "\n\nOptions:",
       "\n  This option is available in the modes -D, -F, -Fs, -C, -N and -U,\n  and silently "
       "ignored in any other mode.\n  A configuration",
       "\n  +, -, *, /, %%,\n",
       "\n      csc=#s*8, usc=#s*4, del=#s*2, trig=#s*1, seq=#s*4, conc=#s*8, lock=50.",
       "docs/reach.md", "in ****t;\n", "The default is -p0.\n",
       "\n  This option is available in the mode -R.\n",
       "The default is -w0, and -w is equivalent to -w3.\n"});
  EXPECT_TRUE(run.out.ends_with(
      "\n  -x - Saves the results in vorel.xml.\n  This option is available in all modes.\n"));
  EXPECT_EQ(run.out.find('{'), std::string::npos) << "a name that got no value";
}

}  // namespace
}  // namespace vorel::driver
