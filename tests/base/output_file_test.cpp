#include "base/output_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "support/run_program.h"

namespace vorel::base {
namespace {

namespace fs = std::filesystem;

// Writes and commits.
bool save(const std::string& name, const std::string& text) {
  OutputFile file(name);
  if (!file.is_open()) return false;
  file.stream() << text;
  return file.commit();
}

uid_t owner_of(const std::string& name) {
  struct stat now;
  EXPECT_EQ(stat(name.c_str(), &now), 0);
  return now.st_uid;
}

class OutputFileTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return folder_.path(name); }
  std::string get(const std::string& name) const { return support::read_text(path(name)); }
  std::ptrdiff_t entry_count() const {
    return std::distance(fs::directory_iterator(folder_.path()), {});
  }

  support::TemporaryFolder folder_;
};

TEST_F(OutputFileTest, WithoutACommitTheTargetStaysAsItWas) {
  folder_.write("old.txt", "old");
  for (const char* name : {"old.txt", "new.txt"}) {
    OutputFile file(path(name));
    ASSERT_TRUE(file.is_open());
    file.stream() << "half" << std::flush;
  }
  EXPECT_EQ(get("old.txt"), "old");
  EXPECT_EQ(entry_count(), 1) << "neither new.txt nor a temporary file may be left";
}

TEST_F(OutputFileTest, AFinishedFileWaitsForItsNameAndGoesWithoutACommit) {
  folder_.write("old.txt", "old");
  for (const bool commits : {false, true}) {
    OutputFile file(path("old.txt"));
    file.stream() << "new";
    ASSERT_TRUE(file.finish());
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(get("old.txt"), "old");
    if (commits) {
      EXPECT_TRUE(file.commit());
    }
  }
  EXPECT_EQ(get("old.txt"), "new");
  EXPECT_EQ(entry_count(), 1);
}

TEST_F(OutputFileTest, AFailedWriteLeavesTheTargetAlone) {
  folder_.write("old.txt", "old");
  OutputFile file(path("old.txt"));
  file.stream() << "half";
  file.stream().setstate(std::ios::badbit);
  EXPECT_FALSE(file.commit());
  EXPECT_FALSE(file.commit()) << "there is nothing left to commit";
  EXPECT_EQ(get("old.txt"), "old");
  EXPECT_EQ(entry_count(), 1);
}

TEST_F(OutputFileTest, ASymbolicLinkStaysAndItsTargetIsWritten) {
  folder_.write("old.txt", "old");
  fs::create_symlink("old.txt", path("link"));
  fs::create_symlink("link", path("link_to_link"));
  fs::create_symlink("new.txt", path("dangling"));
  ASSERT_TRUE(save(path("link_to_link"), "one"));
  ASSERT_TRUE(save(path("dangling"), "two"));
  EXPECT_EQ(get("old.txt"), "one");
  EXPECT_EQ(get("new.txt"), "two");
  for (const char* name : {"link", "link_to_link", "dangling"})
    EXPECT_TRUE(fs::is_symlink(path(name))) << name;
  EXPECT_EQ(entry_count(), 5);
}

TEST_F(OutputFileTest, OwnerAndPermissionsAreThoseOfTheReplacedFileOrOfAnyNewFile) {
  const uid_t owner = geteuid() == 0 ? 1234 : geteuid();  // only root can give a file away
  folder_.write("old.txt", "old");
  ASSERT_EQ(chown(path("old.txt").c_str(), owner, getegid()), 0);
  ASSERT_EQ(chmod(path("old.txt").c_str(), 0640), 0);
  folder_.write("plain.txt", "");
  ASSERT_TRUE(save(path("old.txt"), "x"));
  ASSERT_TRUE(save(path("new.txt"), "x"));
  EXPECT_EQ(owner_of(path("old.txt")), owner);
  EXPECT_EQ(fs::status(path("old.txt")).permissions(), fs::perms{0640});
  EXPECT_EQ(fs::status(path("new.txt")).permissions(), fs::status(path("plain.txt")).permissions());
}

TEST_F(OutputFileTest, WhatCannotBeAFileIsNotOpened) {
  fs::create_symlink("loop", path("loop"));
  folder_.write("file", "");
  for (const std::string& name : {std::string(), folder_.path("/"), path("missing/a.txt"),
                                  path("file/a.txt"), path("new/"), path("loop"), folder_.path()}) {
    OutputFile file(name);
    EXPECT_FALSE(file.is_open()) << name;
    EXPECT_FALSE(file.commit()) << name;
  }
  EXPECT_EQ(entry_count(), 2);
}

TEST_F(OutputFileTest, ADescriptorThatIsOnlyReadIsRefused) {
  folder_.write("input", "text");
  std::FILE* open_file = std::fopen(path("input").c_str(), "r");
  EXPECT_FALSE(save("/proc/self/fd/" + std::to_string(fileno(open_file)), "x"));
  std::fclose(open_file);
  EXPECT_EQ(get("input"), "text");
}

constexpr uid_t nobody = 65534;

// Root may write everywhere: these run as another user, in a process of their own.
int save_as_nobody(const std::string& name) {
  const pid_t child = fork();
  if (child == 0) {
    const bool changed = geteuid() != 0 || (setgid(nobody) == 0 && setuid(nobody) == 0);
    OutputFile file(name);
    bool saved = false;
    if (changed && file.is_open()) {
      file.stream() << "new";
      saved = file.commit();
    }
    _exit(saved ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WEXITSTATUS(status);
}

TEST_F(OutputFileTest, AFileIsReplacedOnlyWhereItsOwnerStaysAndItCouldBeWritten) {
  folder_.write("shared.txt", "old");
  folder_.write("locked.txt", "old");
  chmod(path("shared.txt").c_str(), 0666);
  if (geteuid() == 0) {  // what is locked is locked to its owner too
    ASSERT_EQ(chown(path("locked.txt").c_str(), nobody, nobody), 0);
  }
  chmod(path("locked.txt").c_str(), 0444);
  chmod(folder_.path().c_str(), 0555);
  EXPECT_EQ(save_as_nobody(path("shared.txt")), 0);
  EXPECT_EQ(save_as_nobody(path("locked.txt")), 1);
  EXPECT_EQ(save_as_nobody(path("new.txt")), 1);
  EXPECT_EQ(get("shared.txt"), "new");
  chmod(folder_.path().c_str(), 0777);
  EXPECT_EQ(save_as_nobody(path("shared.txt")), 0);
  EXPECT_EQ(save_as_nobody(path("locked.txt")), 1);
  EXPECT_EQ(owner_of(path("shared.txt")), geteuid());
  EXPECT_EQ(get("locked.txt"), "old");
}

}  // namespace
}  // namespace vorel::base
