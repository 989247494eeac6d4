#include "base/temporary_files.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "base/messages.h"
#include "base/run_state.h"
#include "support/run_program.h"

namespace vorel::base {
namespace {

class TemporaryFiles : public testing::Test {
 protected:
  TemporaryFiles() { ::setenv("TMPDIR", folder.path().c_str(), 1); }
  ~TemporaryFiles() override { ::unsetenv("TMPDIR"); }

  std::string delete_and_capture() {
    testing::internal::CaptureStderr();
    delete_temporary_files();
    return testing::internal::GetCapturedStderr();
  }

  support::TemporaryFolder folder;
};

TEST_F(TemporaryFiles, LieInTheChosenFolderCanBeReadBackAndAreGoneAfterwards) {
  std::FILE* const stream = create_temporary_file();
  ASSERT_NE(stream, nullptr);
  const std::string name = run_state().temporary_files.at(0);
  EXPECT_TRUE(name.starts_with(folder.path("_tmp"))) << name;
  std::fputs("text", stream);
  std::rewind(stream);
  EXPECT_EQ(std::fgetc(stream), 't');
  std::fclose(stream);
  EXPECT_EQ(delete_and_capture(), "");
  EXPECT_FALSE(std::filesystem::exists(name));
  EXPECT_TRUE(run_state().temporary_files.empty());
}

TEST_F(TemporaryFiles, EachThatIsGoneGivesAWarningAndTheOthersAreStillDeleted) {
  for (int i = 0; i < 3; ++i) std::fclose(create_temporary_file());
  const std::vector<std::string> names = run_state().temporary_files;
  std::filesystem::remove(names[0]);
  std::filesystem::remove(names[1]);
  std::filesystem::create_directory(names[1]);
  const std::string reason =
      ": the file name or path was not found, or the path specifies a directory\n";
  EXPECT_EQ(delete_and_capture(), "\nWarning: failed to delete a temporary file " + names[0] +
                                      reason + "\nWarning: failed to delete a temporary file " +
                                      names[1] + reason);
  EXPECT_FALSE(std::filesystem::exists(names[2]));
}

TEST_F(TemporaryFiles, ThatCannotBeCreatedGiveAnErrorWithTheirName) {
  ::setenv("TMPDIR", folder.path("missing").c_str(), 1);
  testing::internal::CaptureStderr();
  EXPECT_EQ(create_temporary_file(), nullptr);
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(text.starts_with("\nError: failed to create a temporary file (" +
                               folder.path("missing/_tmp")))
      << text;
  EXPECT_TRUE(run_state().temporary_files.empty());
}

}  // namespace
}  // namespace vorel::base
