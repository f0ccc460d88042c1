// A daemon in this process: what it prints. The streams that it prints on send it signals.
#include "agent/serve/daemon/Daemon.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <ostream>
#include <sstream>
#include <utility>

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
  EXPECT_THAT(errText_.str(), ::testing::StartsWith("warning: " + file_ + ": "));
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(DaemonInProcess, PrintsTheResultOfAReloadAfterOneThatCouldNotBePrinted) {
  outText_.onFlush = [] { return std::raise(SIGHUP) == 0; };
  bool isFirst = true;
  errText_.onFlush = [&isFirst] {
    if (!std::exchange(isFirst, false)) return true;
    std::raise(SIGHUP);
    std::raise(SIGTERM);
    return false;
  };
  EXPECT_EQ(serve({{{"red"}}, {"red"}, {"e1"}}), ExitStatus::success);
  EXPECT_EQ(errText_.str(), file_ + " applied\n");
}

}  // namespace
}  // namespace ZelAgent
