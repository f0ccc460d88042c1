// Where the console keeps its history.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "agent/serve/console/LineEditor.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

// Sets a variable of the environment during its lifetime.
class EnvironmentVariable final {
 public:
  EnvironmentVariable(const char* name, const std::string& value) : name_(name) {
    const char* const before = std::getenv(name);
    hadValue_ = before != nullptr;
    if (hadValue_) before_ = before;
    setenv(name, value.c_str(), 1);
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() {
    if (hadValue_) {
      setenv(name_, before_.c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }

 private:
  const char* name_;
  bool hadValue_ = false;
  std::string before_;
};

class HistoryFile : public ::testing::Test {
 protected:
  static std::string fileFor(const std::string& state, const std::string& home) {
    const EnvironmentVariable stateVariable("XDG_STATE_HOME", state);
    const EnvironmentVariable homeVariable("HOME", home);
    return historyFile();
  }

  std::string folder_ = pathInTestFolder("state");
};

TEST_F(HistoryFile, IsInTheFolderOfStates) {
  std::filesystem::remove_all(folder_);
  EXPECT_EQ(fileFor(folder_, "/home/one"), folder_ + "/zel-agent/history");
  EXPECT_TRUE(std::filesystem::is_directory(folder_ + "/zel-agent"));
}

TEST_F(HistoryFile, IsInTheHomeFolderWithoutAnAbsoluteFolderOfStates) {
  EXPECT_EQ(fileFor("", "/home/one"), "/home/one/.zel-agent_history");
  EXPECT_EQ(fileFor("state", "/home/one"), "/home/one/.zel-agent_history");
}

TEST_F(HistoryFile, IsNowhereWithoutAnAbsoluteFolder) {
  EXPECT_EQ(fileFor("", ""), "");
  EXPECT_EQ(fileFor("state", "home"), "");
}

TEST_F(HistoryFile, IsNowhereIfItsFolderCannotBeCreated) {
  EXPECT_EQ(fileFor(writeFile("file", "") + "/state", "/home/one"), "");
}

}  // namespace
}  // namespace ZelAgent
