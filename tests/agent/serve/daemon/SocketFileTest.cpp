// The socket of a daemon that is a process, from its start to its end.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <deque>
#include <filesystem>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/LogTimes.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"
#include "tests/agent/serve/daemon/SocketClient.h"

namespace ZelAgent {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class ServeSocket : public ::testing::Test {
 protected:
  // Tries to serve; this must fail with the status, one line on standard error, and no other.
  std::string refusal(const std::string& configuration, const std::string& socket, int status) {
    const AgentOutcome outcome = runAgent({"serve", configuration, "--socket", socket});
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(beginsWithTime(outcome.err));
    const std::string line = withoutTimes(outcome.err);
    EXPECT_THAT(line, StartsWith("error: "));
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1) << line;
    return line;
  }

  // Leaves a socket on which no process listens.
  void makeStaleSocket() const {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(socket);
    ASSERT_TRUE(std::filesystem::is_socket(path_));
  }

  SocketFolder folder_;
  std::string path_ = folder_.path("s");
  std::string config_ = writeFile("red.json", toJson({{{"red"}}, {"red"}, {"e1"}}).dump());
};

TEST_F(ServeSocket, IsReadableAndWritableByItsOwnerOnlyWhateverTheMask) {
  const mode_t before = umask(0);
  const DaemonProcess daemon(config_, path_);
  umask(before);
  struct stat file {};
  ASSERT_EQ(stat(path_.c_str(), &file), 0);
  EXPECT_TRUE(S_ISSOCK(file.st_mode));
  EXPECT_EQ(file.st_mode & 0777U, 0600U);
}

TEST_F(ServeSocket, OfADaemonThatWasKilledIsReplaced) {
  {
    DaemonProcess killed(config_, path_);
    killed.signal(SIGKILL);
    EXPECT_EQ(killed.exitStatus(), -1);
  }
  ASSERT_TRUE(std::filesystem::is_socket(path_));
  DaemonProcess daemon(config_, path_);
  EXPECT_EQ(daemon.end(), 0);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(ServeSocket, OfARunningDaemonIsRefusedAndThatDaemonContinues) {
  DaemonProcess first(config_, path_);
  EXPECT_EQ(refusal(config_, path_, 1),
            "error: " + path_ + ": a daemon listens there already; end it, or give another path\n");
  EXPECT_THAT(SocketClient(path_).text("show config"), HasSubstr(config_));
  EXPECT_EQ(first.end(), 0);
}

TEST_F(ServeSocket, ThatManyDaemonsReplaceAtOnceIsServedByOne) {
  makeStaleSocket();
  std::deque<DaemonProcess> daemons;
  for (int i = 0; i < 8; ++i)
    daemons.emplace_back(Unawaited{}, config_, path_);
  int serving = 0;
  for (DaemonProcess& daemon : daemons) {
    if (daemon.outLine() == "serving on " + path_) {
      ++serving;
    } else {
      EXPECT_EQ(daemon.exitStatus(), 1);
    }
  }
  EXPECT_EQ(serving, 1);
  EXPECT_THAT(SocketClient(path_).text("show config"), HasSubstr(config_));
}

TEST_F(ServeSocket, IsNotCreatedIfTheConfigurationIsBad) {
  const std::string bad = writeFile("bad.json", "{\"network-instances\": 7}");
  EXPECT_THAT(refusal(bad, path_, 2), HasSubstr(bad + ": /network-instances: "));
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(ServeSocket, IsNotCreatedIfTheConfigurationCannotBeRead) {
  EXPECT_THAT(refusal(folder_.path("none.json"), path_, 2), HasSubstr("cannot be read"));
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(ServeSocket, IsRequired) {
  const AgentOutcome outcome = runAgent({"serve", config_});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("--socket is required"));
}

TEST_F(ServeSocket, IsRemovedIfStandardOutputCannotBeWritten) {
  const AgentOutcome outcome = runAgentInto("/dev/full", {"serve", config_, "--socket", path_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(withoutTimes(outcome.err), "error: standard output cannot be written\n");
  EXPECT_FALSE(std::filesystem::exists(path_));
}

}  // namespace
}  // namespace ZelAgent
