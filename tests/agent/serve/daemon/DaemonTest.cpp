// A daemon in this process: what it prints. The streams that it prints on send it signals.
#include "agent/serve/daemon/Daemon.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <ostream>
#include <sstream>
#include <utility>

#include "agent/serve/daemon/SignalWatch.h"
#include "tests/agent/LogTimes.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

// Keeps what is printed, and calls a function when it is flushed.
class WatchedText final : public std::stringbuf {
 public:
  // Returns whether the text could be written. The text is lost if not.
  std::function<bool()> onFlush = [] { return true; };

 private:
  int sync() override {
    if (onFlush()) return 0;
    str("");
    return -1;
  }
};

class DaemonInProcess : public ::testing::Test {
 protected:
  ExitStatus serve(const SmallConfiguration& configuration) {
    DaemonOptions options;
    options.configuration = file_ = writeSmall("served.json", configuration);
    options.socket = socket_;
    return ZelAgent::serve(options, out_, err_);
  }

  std::string socket_ = pathInTestFolder("s");
  std::string file_;
  WatchedText outText_;
  WatchedText errText_;
  std::ostream out_{&outText_};
  std::ostream err_{&errText_};
};

TEST_F(DaemonInProcess, PrintsTheWarningsOfItsConfigurationAndThatItServes) {
  outText_.onFlush = [] { return std::raise(SIGTERM) == 0; };
  EXPECT_EQ(serve({{}, {"nowhere"}, {"e1"}}), ExitStatus::success);
  EXPECT_EQ(outText_.str(), "serving on " + socket_ + "\n");
  const std::string log = '\n' + withoutTimes(errText_.str());
  EXPECT_THAT(log, ::testing::HasSubstr("\nwarning: " + file_ + ": "));
  EXPECT_THAT(log, ::testing::HasSubstr("\nwarning: not programmed: actionVrf nowhere: "));
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(DaemonInProcess, PrintsTheResultOfAReloadAfterOneThatCouldNotBePrinted) {
  outText_.onFlush = [] { return std::raise(SIGHUP) == 0; };
  bool isFirst = true;
  errText_.onFlush = [&isFirst] {
    const bool fails = std::exchange(isFirst, false);
    std::raise(fails ? SIGHUP : SIGTERM);
    return !fails;
  };
  EXPECT_EQ(serve({{{"red"}}, {"red"}, {"e1"}}), ExitStatus::success);
  EXPECT_EQ(withoutTimes(errText_.str()), file_ + " applied\n");
}

TEST_F(DaemonInProcess, ReloadsOnceForManyHangUps) {
  outText_.onFlush = [] {
    for (int i = 0; i < 60; ++i)
      std::raise(SIGHUP);
    return true;
  };
  errText_.onFlush = [] { return std::raise(SIGTERM) == 0; };
  EXPECT_EQ(serve({{{"red"}}, {"red"}, {"e1"}}), ExitStatus::success);
  EXPECT_EQ(withoutTimes(errText_.str()), file_ + " applied\n");
}

TEST_F(DaemonInProcess, EndsByATerminationThatArrivesInAStormOfHangUps) {
  outText_.onFlush = [] {
    for (int i = 0; i < 10000; ++i)
      std::raise(SIGHUP);
    return std::raise(SIGTERM) == 0;
  };
  EXPECT_EQ(serve({{{"red"}}, {"red"}, {"e1"}}), ExitStatus::success);
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(DaemonInProcess, ReloadsAfterItsStartForAHangUpThatArrivedBefore) {
  const BlockedSignal blocked(SIGHUP);
  std::raise(SIGHUP);
  errText_.onFlush = [] { return std::raise(SIGTERM) == 0; };
  EXPECT_EQ(serve({{{"red"}}, {"red"}, {"e1"}}), ExitStatus::success);
  EXPECT_EQ(outText_.str(), "serving on " + socket_ + "\n");
  EXPECT_EQ(withoutTimes(errText_.str()), file_ + " applied\n");
}

}  // namespace
}  // namespace ZelAgent
