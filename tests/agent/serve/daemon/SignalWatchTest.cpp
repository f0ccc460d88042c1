// Signals on the event loop.
#include "agent/serve/daemon/SignalWatch.h"

#include <gmock/gmock.h>

#include <csignal>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace ZelAgent {
namespace {

class WatchedSignals : public ::testing::Test {
 protected:
  // Handles SIGHUP and SIGTERM.
  void watch() {
    onHangUp_.emplace(loop_, SIGHUP, [this] { handled_ += "HUP "; });
    onTerminate_.emplace(loop_, SIGTERM, [this] { handled_ += "TERM "; });
  }
  // What is handled when signals need not be waited for.
  std::string handled() {
    for (int round = 0; round < 3; ++round)
      uv_run(loop_.get(), UV_RUN_NOWAIT);
    return std::exchange(handled_, {});
  }

  EventLoop loop_;
  std::string handled_;
  std::optional<SignalWatch> onHangUp_;
  std::optional<SignalWatch> onTerminate_;
};

TEST_F(WatchedSignals, AreHandledWhenTheyArrivedBeforeTheLoopRan) {
  watch();
  std::raise(SIGHUP);
  EXPECT_EQ(handled_, "");
  EXPECT_EQ(handled(), "HUP ");
  std::raise(SIGHUP);
  EXPECT_EQ(handled(), "HUP ");
  EXPECT_EQ(handled(), "");
}

TEST_F(WatchedSignals, AreHandledAsOneWhenManyArriveBeforeTheLoopRuns) {
  watch();
  for (int i = 0; i < 60; ++i)
    std::raise(SIGHUP);
  EXPECT_EQ(handled(), "HUP ");
}

TEST_F(WatchedSignals, DoNotLoseASignalInAStormOfAnother) {
  watch();
  for (int i = 0; i < 10000; ++i)
    std::raise(SIGHUP);
  std::raise(SIGTERM);
  EXPECT_THAT(handled(), ::testing::AnyOf("HUP TERM ", "TERM HUP "));
}

TEST_F(WatchedSignals, AreHandledWhenTheyArrivedWhileTheyWereBlocked) {
  const BlockedSignal blocked(SIGHUP);
  std::raise(SIGHUP);
  watch();
  EXPECT_EQ(handled(), "HUP ");
}

TEST_F(WatchedSignals, AreDroppedAtTheEndOfTheirWatch) {
  watch();
  std::raise(SIGHUP);
  onHangUp_.reset();  // a SIGHUP that is delivered now ends the program
  watch();
  EXPECT_EQ(handled(), "");
}

TEST_F(WatchedSignals, StayBlockedAfterTheirWatchIfTheyWereBlockedBefore) {
  const BlockedSignal blocked(SIGHUP);
  watch();
  onHangUp_.reset();
  std::raise(SIGHUP);  // a SIGHUP that is delivered now ends the program
  watch();
  EXPECT_EQ(handled(), "HUP ");
}

TEST_F(WatchedSignals, AreDeliveredAgainAfterTheirWatch) {
  watch();
  onHangUp_.reset();
  EXPECT_EXIT(std::raise(SIGHUP), ::testing::KilledBySignal(SIGHUP), "");
}

TEST_F(WatchedSignals, AreNoSignalsThatCannotBeBlocked) {
  EXPECT_THROW(SignalWatch(loop_, SIGKILL, [] {}), std::runtime_error);
  EXPECT_THROW(SignalWatch(loop_, -1, [] {}), std::runtime_error);
}

}  // namespace
}  // namespace ZelAgent
