// `zel-agent check --yang`: how it calls yanglint, and what it prints of its messages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "agent/commands/offline/OfflineCommands.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

constexpr const char* smallest =
    R"({"openconfig-network-instance:network-instances": {"network-instance": [
      {"name": "DEFAULT", "config": {"name": "DEFAULT", "type": "DEFAULT_INSTANCE"}}]}})";

constexpr const char* smallModel = R"(module openconfig-network-instance {
  namespace "urn:test"; prefix t;
  container network-instances { list network-instance {
    key name; leaf name { type string; }
    container config { leaf name { type string; } leaf type { type string { length 1..9; } } }
  } }
})";

class CheckYang : public ::testing::Test {
 protected:
  CheckYang() : path_(std::getenv("PATH")) {
    std::filesystem::create_directory(models());
    write("models/openconfig-network-instance.yang", smallModel);
    file_ = write("small.json", smallest);
  }
  ~CheckYang() override { setenv("PATH", path_.c_str(), 1); }

  [[nodiscard]] std::string models() const { return folder_.path("models"); }

  std::string write(const std::string& name, const std::string& text) const {
    std::ofstream(folder_.path(name)) << text;
    return folder_.path(name);
  }

  // A yanglint that writes its arguments to the file "arguments", then runs `script`.
  void yanglintIs(const std::string& script) const {
    const std::string program = write("yanglint", "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" +
                                                      folder_.path("arguments") + "'\n" + script);
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    setenv("PATH", (folder_.path().string() + ':' + path_).c_str(), 1);
  }

  [[nodiscard]] std::string arguments() const {
    std::ostringstream text;
    text << std::ifstream(folder_.path("arguments")).rdbuf();
    return text.str();
  }

  void expectCheck(ExitStatus status, const std::string& out, const std::string& err) const {
    std::ostringstream printed;
    std::ostringstream errors;
    EXPECT_EQ(checkConfigurations(
                  {.configurations = {file_}, .leniency = Leniency::strict, .yangFolder = folder()},
                  printed, errors),
              status);
    EXPECT_EQ(printed.str(), out);
    EXPECT_EQ(errors.str(), err);
  }

  void expectRight() const { expectCheck(ExitStatus::success, file_ + ": right\n", ""); }
  void expectErrors(const std::string& err) const { expectCheck(ExitStatus::badInput, "", err); }

  [[nodiscard]] std::string folder() const { return yangFolder_.empty() ? models() : yangFolder_; }

  TestFiles::TemporaryFolder folder_;
  std::string path_;
  std::string file_;
  std::string yangFolder_{};
};

TEST_F(CheckYang, GivesYanglintEachArgumentAsItIs) {
  file_ = write("it's; touch x $(touch y) \"z\".json", smallest);
  yanglintIs("exit 0\n");
  expectRight();
  EXPECT_EQ(arguments(), "-Q\n-i\n-i\n-D\n-p\n" + models() + "\n-t\nconfig\n" + models() +
                             "/openconfig-network-instance.yang\n" + file_ + '\n');
}

TEST_F(CheckYang, TakesTheNewestRevisionAndTheModulesOfAllMembers) {
  for (const char* const name :
       {"models/openconfig-network-instance@2021-01-01.yang", "models/iana-if-type.yang",
        "models/openconfig-network-instance@2023-01-01.yang", "models/openconfig-system.yang",
        "models/openconfig-other.yang", "models/openconfig-nested.yang"})
    write(name, smallModel);
  std::string text = smallest;
  file_ = write(
      "small.json",
      text.replace(
          0, 1, R"({"openconfig-system:system": [{"openconfig-nested:state": 1, "state": {}}],)"));
  yanglintIs("exit 0\n");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(checkConfigurations({.configurations = {file_}, .yangFolder = models()}, out, err),
            ExitStatus::success);
  // With state in the configuration, the data are complete ones.
  EXPECT_EQ(arguments(), "-Q\n-i\n-i\n-D\n-p\n" + models() + "\n-t\ndata\n" + models() +
                             "/iana-if-type.yang\n" + models() + "/openconfig-nested.yang\n" +
                             models() + "/openconfig-network-instance@2023-01-01.yang\n" +
                             models() + "/openconfig-system.yang\n" + file_ + '\n');
}

TEST_F(CheckYang, PrintsEachMessageAsAPrintableLineWithTheFile) {
  yanglintIs(
      "printf 'libyang err : No \\033[31mred\\nlibyang err : No blue\\n' >&2\n"
      "echo 'YANGLINT[E]: Failed to parse input data file.'\nexit 7\n");
  expectErrors("error: " + file_ + ": No \\x1b[31mred\nerror: " + file_ + ": No blue\n");
}

TEST_F(CheckYang, PrintsFiftyMessagesAndCountsTheOthers) {
  yanglintIs("yes 'libyang err : x' | head -n 1000\nyes | head -c 1000000\nexit 7\n");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(checkConfigurations({.configurations = {file_}, .yangFolder = models()}, out, err),
            ExitStatus::badInput);
  const std::string text = err.str();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 51);
  // 1000 lines of 16 bytes, and as many of 2 bytes as fit in the 50000 bytes that are kept.
  EXPECT_TRUE(text.ends_with("\nerror: " + file_ + ": ... and 17950 more yanglint messages\n"));
}

TEST_F(CheckYang, SaysWhichStatusCameWithoutAMessage) {
  yanglintIs("exit 7\n");
  expectErrors("error: --yang: yanglint ended with status 7 and without a message\n");
  yanglintIs("kill -9 $$\n");
  expectErrors("error: --yang: yanglint ended with status 137 and without a message\n");
}

TEST_F(CheckYang, SaysInOneLineThatTheModelsCannotBeLoaded) {
  yanglintIs(
      "echo 'libyang err : Data model \"x\" not found in local searchdirs.'\n"
      "echo 'libyang err : Loading \"x\" module failed.'\n"
      "echo 'YANGLINT[E]: Parsing schema module \"m\" failed.'\nexit 1\n");
  expectErrors("error: " + models() +
               ": yanglint cannot load the models: Data model \"x\" not found in local "
               "searchdirs.\n");
}

TEST_F(CheckYang, SaysInOneLineThatYanglintIsNotInstalled) {
  setenv("PATH", models().c_str(), 1);
  expectErrors(
      "error: --yang: yanglint is required to validate configurations; install libyang2-tools\n");
}

TEST_F(CheckYang, SaysInOneLineThatTheFolderHasNotTheModule) {
  yangFolder_ = folder_.path("empty");
  std::filesystem::create_directory(yangFolder_);
  expectErrors("error: " + yangFolder_ +
               ": must have the module openconfig-network-instance.yang, in the folder or below "
               "it; the models are published as the repository openconfig/public\n");
  yangFolder_ = folder_.path("gone");
  expectErrors("error: " + yangFolder_ +
               ": cannot be read: No such file or directory; give a folder of YANG modules\n");
}

TEST_F(CheckYang, DoesNotCallYanglintForAFileThatIsNoJson) {
  file_ = write("small.json", "{");
  yanglintIs("exit 0\n");
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(checkConfigurations({.configurations = {file_}, .yangFolder = models()}, out, err),
            ExitStatus::badInput);
  EXPECT_EQ(arguments(), "");
}

TEST_F(CheckYang, FindsWhatTheModelForbids) {
  expectErrors("error: " + file_ +
               ": Unsatisfied length - string \"DEFAULT_INSTANCE\" length is not allowed. (Data "
               "location \"/openconfig-network-instance:network-instances/"
               "network-instance[name='DEFAULT']/config/type\", line number 2.)\n");
  std::string model = smallModel;
  model.replace(model.find("1..9"), 4, "1..16");
  write("models/openconfig-network-instance.yang", model);
  expectRight();
}

}  // namespace
}  // namespace ZelAgent
