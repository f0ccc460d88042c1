#include "tests/waiting/ChildProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <utility>

namespace Waiting {
namespace {

constexpr std::chrono::milliseconds atOnce{20};

pid_t startedSleeper() {
  const pid_t process = fork();
  if (process == 0) {
    for (;;)
      pause();
  }
  EXPECT_GT(process, 0);
  return process;
}

pid_t startedExit(int status) {
  const pid_t process = fork();
  if (process == 0) _exit(status);
  EXPECT_GT(process, 0);
  return process;
}

// Reads without reaping. A process that is reaped is no child any more.
bool isReaped(pid_t process) {
  siginfo_t ended{};
  return waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT) < 0 &&
         errno == ECHILD;
}

TEST(ChildProcess, ReturnsTheStatusAtTheEnd) {
  ChildProcess process(startedExit(7));
  const pid_t id = process.id();
  const std::optional<int> status = process.end();
  ASSERT_TRUE(status);
  EXPECT_TRUE(WIFEXITED(*status));
  EXPECT_EQ(WEXITSTATUS(*status), 7);
  EXPECT_TRUE(isReaped(id));
  EXPECT_LT(process.id(), 1);
}

TEST(ChildProcess, ReturnsTheSignalThatEndedIt) {
  ChildProcess process(startedSleeper());
  EXPECT_TRUE(process.signal(SIGTERM));
  const std::optional<int> status = process.end();
  ASSERT_TRUE(status);
  EXPECT_TRUE(WIFSIGNALED(*status));
  EXPECT_EQ(WTERMSIG(*status), SIGTERM);
}

TEST(ChildProcess, IsKilledAndReapedAtTheDeadline) {
  ChildProcess process(startedSleeper());
  const pid_t id = process.id();
  EXPECT_EQ(process.end(Deadline(atOnce)), std::nullopt);
  EXPECT_TRUE(isReaped(id));
  EXPECT_FALSE(process.signal(SIGTERM));
}

TEST(ChildProcess, IsKilledAndReapedWithItsOwner) {
  pid_t id = -1;
  {
    const ChildProcess process(startedSleeper());
    id = process.id();
    EXPECT_FALSE(isReaped(id));
  }
  EXPECT_TRUE(isReaped(id));
}

TEST(ChildProcess, IsKilledWhenAnotherReplacesIt) {
  ChildProcess process(startedSleeper());
  const pid_t first = process.id();
  ChildProcess other(startedSleeper());
  const pid_t second = other.id();
  process = std::move(other);
  EXPECT_TRUE(isReaped(first));
  EXPECT_FALSE(isReaped(second));
  EXPECT_EQ(process.id(), second);
}

TEST(ChildProcess, IsOwnedOnceAfterAMove) {
  ChildProcess process(startedSleeper());
  const pid_t id = process.id();
  {
    ChildProcess taken(std::move(process));
    EXPECT_EQ(taken.id(), id);
    EXPECT_LT(process.id(), 1);
    EXPECT_FALSE(process.signal(SIGTERM));
  }
  EXPECT_TRUE(isReaped(id));
}

TEST(ChildProcess, OwnsNothingWhenForkFailed) {
  ChildProcess process(-1);
  EXPECT_FALSE(process.signal(SIGKILL));
  EXPECT_EQ(process.end(), std::nullopt);
}

}  // namespace
}  // namespace Waiting
