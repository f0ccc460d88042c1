// SIGHUP to a command that has just started.
#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <ostream>
#include <sstream>
#include <string>

#include "agent/CommandLine.h"

namespace ZelAgent {
namespace {

// Sends SIGHUP to the process when it prints.
class HangUpText final : public std::stringbuf {
 private:
  std::streamsize xsputn(const char* bytes, std::streamsize size) override {
    std::raise(SIGHUP);
    return std::stringbuf::xsputn(bytes, size);
  }
};

// Runs a wrong command line, which prints one line.
[[noreturn]] void exitAfter(const char* command) {
  sigset_t hangUp{};
  sigemptyset(&hangUp);
  sigaddset(&hangUp, SIGHUP);
  pthread_sigmask(SIG_UNBLOCK, &hangUp, nullptr);  // another test may have started a daemon
  std::signal(SIGHUP, SIG_DFL);                    // nohup may have started the tests
  HangUpText text;
  std::ostream err(&text);
  const char* const arguments[] = {"zel-agent", command, "--wrong"};
  std::exit(static_cast<int>(runCommandLine(3, arguments, {err, err}, {err, err})));
}

TEST(EarlyHangUp, DoesNotEndADaemonThatReadsItsCommandLine) {
  EXPECT_EXIT(exitAfter("serve"), ::testing::ExitedWithCode(2), "");
}

TEST(EarlyHangUp, EndsOtherCommands) {
  EXPECT_EXIT(exitAfter("run"), ::testing::KilledBySignal(SIGHUP), "");
}

}  // namespace
}  // namespace ZelAgent
