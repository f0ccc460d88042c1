// The agent started with a standard descriptor closed, as some supervisors start their programs.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/LogTimes.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/DaemonProcess.h"

namespace ZelAgent {
namespace {

using ::testing::HasSubstr;

constexpr const char* unwritable = "error: standard output cannot be written\n";

// During its lifetime agents are started with these redirections of the shell.
class Redirected final {
 public:
  explicit Redirected(const std::string& redirection) {
    const std::string script =
        writeFile("agent", "#!/bin/sh\nexec '" + agentBinary() + "' \"$@\" " + redirection + '\n');
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    if (const char* const before = std::getenv("ZEL_AGENT")) before_ = before;
    setenv("ZEL_AGENT", script.c_str(), 1);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;
  ~Redirected() {
    if (before_.empty()) {
      unsetenv("ZEL_AGENT");
    } else {
      setenv("ZEL_AGENT", before_.c_str(), 1);
    }
  }

 private:
  std::string before_;
};

class ClosedDescriptors : public ::testing::Test {
 protected:
  [[nodiscard]] AgentOutcome runWith(const std::string& redirection) const {
    const Redirected redirected(redirection);
    return runAgent({"run", config_, "--trace", "--trace-ring", ring_});
  }
  // The messages of the ring.
  [[nodiscard]] std::string messages() const {
    const AgentOutcome outcome = runAgent({"trace", ring_});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }

  SocketFolder folder_;
  std::string socket_ = folder_.path("s");
  std::string ring_ = folder_.path("ring");
  std::string config_ = writeFile("red.json", toJson({{{"red"}}, {"red"}, {"e1"}}).dump());
};

TEST_F(ClosedDescriptors, OutputDoesNotOverwriteTheTraceRing) {
  const AgentOutcome outcome = runWith(">&-");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr(unwritable));
  EXPECT_THAT(messages(), HasSubstr("Deleting VRF Hw resource. VRF:red"));
}

TEST_F(ClosedDescriptors, ErrorsDoNotOverwriteTheTraceRing) {
  const AgentOutcome outcome = runWith("2>&-");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("all removed"));
  EXPECT_THAT(messages(), HasSubstr("Deleting VRF Hw resource. VRF:red"));
}

TEST_F(ClosedDescriptors, AllThreeMayBeClosed) {
  EXPECT_EQ(runWith("<&- >&- 2>&-").status, 1);
  EXPECT_THAT(messages(), HasSubstr("Deleting VRF Hw resource. VRF:red"));
}

TEST_F(ClosedDescriptors, ADaemonThatCannotAnnounceItselfEnds) {
  const Redirected redirected(">&-");
  const AgentOutcome outcome = runAgent({"serve", config_, "--socket", socket_});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(withoutTimes(outcome.err), unwritable);
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(ClosedDescriptors, ADaemonWithoutInputEndsAtSigterm) {
  const Redirected redirected("<&-");
  DaemonProcess daemon(config_, socket_);
  EXPECT_EQ(daemon.end(), 0);
}

TEST_F(ClosedDescriptors, ADaemonWithoutErrorOutputEndsAtSigterm) {
  const Redirected redirected("2>&-");
  DaemonProcess daemon(config_, socket_);
  EXPECT_EQ(daemon.end(), 0);
}

}  // namespace
}  // namespace ZelAgent
