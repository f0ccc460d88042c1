// When memory ends while a daemon serves: every third allocation of its work fails in turn. Nobody
// is answered twice, and no configuration is in force in part.
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <csignal>
#include <functional>
#include <new>
#include <ostream>
#include <sstream>
#include <string>

#include "Mox/TraceHandle.h"
#include "agent/commands/served/ServedAgent.h"
#include "agent/language/Limits.h"
#include "agent/serve/daemon/ControlServer.h"
#include "agent/serve/daemon/Daemon.h"
#include "agent/serve/daemon/ReloadReport.h"
#include "agent/serve/protocol/ControlService.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/memory/FailingAllocation.h"
#include "tests/agent/memory/ForkedProcess.h"
#include "tests/agent/serve/daemon/ManualScheduler.h"
#include "tests/agent/serve/daemon/ScriptedClient.h"

namespace ZelAgent {
namespace {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

// What a process reports that reached the end of its work.
constexpr std::string_view noneFailed = "no allocation failed";

class ServedOutOfMemory : public ::testing::Test {
 protected:
  // Makes `work` for each third number of allocations that succeed, in a new process each, until
  // none fails. Its text goes to `check`, unless the process was aborted with the one line.
  static int endedOf(const std::function<std::string(std::size_t passing)>& work,
                     const std::function<void(const std::string&)>& check) {
    int ended = 0;
    for (std::size_t passing = 0; !HasFailure(); passing += 3) {
      SCOPED_TRACE("after " + std::to_string(passing) + " allocations");
      const Remains remains = inForkedProcess([&](const Report& report) {
        Mox::traceSinkIs([](std::string_view) {});
        report(work(passing));
      });
      if (remains.reported == noneFailed) break;
      if (remains.reported.empty()) {
        EXPECT_TRUE(WIFSIGNALED(remains.status) && WTERMSIG(remains.status) == SIGABRT);
        EXPECT_THAT(remains.onStderr, MatchesRegex("out of memory(: [0-9]+ bytes)?\n"));
        ++ended;
      } else {
        check(remains.reported);
      }
    }
    return ended;
  }

  // The configuration at the start of each process.
  static std::string redFile() { return writeSmall("served.json", {{{"red"}}, {"red"}, {"e1"}}); }
};

TEST_F(ServedOutOfMemory, AnswersARequestOnceOrEndsTheDaemon) {
  const int ended = endedOf(
      [&](std::size_t passing) -> std::string {
        ServedAgent served(redFile(), 8);
        served.start();
        ManualScheduler scheduler;
        ControlServer server(scheduler, served, {});
        ScriptedClient client;
        server.accept(client.connect());
        allocationFailsAfter(passing);
        client.send("vrf red id 2\n");
        scheduler.rounds();
        if (!allocationsSucceed()) return std::string(noneFailed);
        return client.received();
      },
      [](const std::string& answer) { EXPECT_EQ(answer, "vrf red id 2\n  no hook call\n.\n"); });
  EXPECT_GT(ended, 0);
}

TEST_F(ServedOutOfMemory, ReloadsWhollyOrNotAtAllOrEndsTheDaemon) {
  const int ended = endedOf(
      [&](std::size_t passing) -> std::string {
        ServedAgent served(redFile(), 8);
        served.start();
        writeSmall("served.json", {{{"blue"}}, {"blue"}, {"e2"}});
        allocationFailsAfter(passing);
        const auto lines = reportReload("it", [&] { return served.reload().warnings; });
        if (!allocationsSucceed()) return std::string(noneFailed);
        ControlService service(served, Limits::answerBytes);
        return lines.back() + '\n' + service.reply({RequestLine::Kind::whole, "show users"}).bytes;
      },
      [](const std::string& reported) {
        if (reported.starts_with("it applied\n")) {
          EXPECT_THAT(reported, HasSubstr("blue"));
          EXPECT_THAT(reported, Not(HasSubstr("red")));
        } else {
          EXPECT_THAT(reported, HasSubstr("; the configuration in force is unchanged\n"));
          EXPECT_THAT(reported, HasSubstr("red"));
          EXPECT_THAT(reported, Not(HasSubstr("blue")));
        }
      });
  EXPECT_GT(ended, 0);
}

// A stream that sends SIGTERM to the daemon that serves.
class EndedText final : public std::stringbuf {
 private:
  int sync() override { return std::raise(SIGTERM); }
};

TEST_F(ServedOutOfMemory, EndsADaemonInOneLineFromItsStartToItsEnd) {
  const int ended = endedOf(
      [&](std::size_t passing) -> std::string {
        DaemonOptions options;
        options.configuration = redFile();
        options.socket = pathInTestFolder("s");
        EndedText text;
        std::ostream out(&text);
        std::ostringstream err;
        allocationFailsAfter(passing);
        const ExitStatus status = serve(options, out, err);
        if (!allocationsSucceed()) return std::string(noneFailed);
        return status == ExitStatus::success ? "served" : err.str();
      },
      [](const std::string& reported) {
        EXPECT_THAT(reported, MatchesRegex("served|error: .+\n"));
      });
  EXPECT_GT(ended, 0);
}

// The process may have a new-handler of its own. What it throws is no answer.
TEST_F(ServedOutOfMemory, IsNoAnswerWhereTheNewHandlerThrows) {
  const Remains remains = inForkedProcess([&](const Report& report) {
    ServedAgent served(redFile(), 8);
    ControlService service(served, Limits::answerBytes);
    const RequestLine line{RequestLine::Kind::whole,
                           "{\"command\": \"" + std::string(1000, 'x') + "\"}"};
    std::set_new_handler([] { throw std::bad_alloc(); });
    allocationFailsAfter(0);
    report(service.reply(line).bytes);
  });
  EXPECT_EQ(remains.reported, "");
  EXPECT_EQ(remains.onStderr, "out of memory\n");
  EXPECT_TRUE(WIFSIGNALED(remains.status) && WTERMSIG(remains.status) == SIGABRT);
}

}  // namespace
}  // namespace ZelAgent
