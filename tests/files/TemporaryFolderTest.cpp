#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/waiting/ChildProcess.h"

namespace TestFiles {
namespace {

namespace fs = std::filesystem;

// Ends this process, which has written a file. Prints its folder to standard error.
[[noreturn]] void writeAndExit(int status) {
  std::ofstream(processFolder() / "file") << "text";
  if (fs::exists(processFolder() / "file")) std::fputs(processFolder().c_str(), stderr);
  std::exit(status);
}

bool isGone(const std::string& folder) {
  return folder.find("zel-") != std::string::npos && !fs::exists(folder);
}

TEST(ProcessFolder, IsTheSameForTheWholeProcess) {
  EXPECT_TRUE(fs::is_directory(processFolder()));
  EXPECT_EQ(processFolder(), processFolder());
}

TEST(ProcessFolderDeathTest, IsGoneAfterTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const int status : {0, 1}) {
    EXPECT_EXIT(writeAndExit(status), ::testing::ExitedWithCode(status), ::testing::Truly(isGone));
  }
}

TEST(ProcessFolder, OutlivesForkedProcessesThatExit) {
  ASSERT_TRUE(fs::exists(processFolder()));
  Waiting::ChildProcess process(fork());
  if (process.id() == 0) std::exit(0);
  EXPECT_TRUE(process.end());
  EXPECT_TRUE(fs::exists(processFolder()));
}

TEST(TemporaryFolder, IsEmptyAndInTheFolderOfTheProcess) {
  const TemporaryFolder folder;
  EXPECT_TRUE(fs::is_empty(folder.path()));
  EXPECT_EQ(folder.path().parent_path(), processFolder());
}

TEST(TemporaryFolder, IsNotSharedWithAnother) {
  const TemporaryFolder one;
  const TemporaryFolder other;
  EXPECT_NE(one.path(), other.path());
}

TEST(TemporaryFolder, IsRemovedWithItsContent) {
  fs::path path;
  {
    const TemporaryFolder folder;
    path = folder.path();
    std::ofstream(folder.path("file")) << "text";
    EXPECT_TRUE(fs::exists(path / "file"));
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(TemporaryFolder, LeavesRoomForTheNameOfASocket) {
  const TemporaryFolder folder;
  constexpr std::size_t longestSocketName = 107;
  EXPECT_LE(folder.path("agent.sock").size() - ::testing::TempDir().size(), longestSocketName - 60);
}

}  // namespace
}  // namespace TestFiles
