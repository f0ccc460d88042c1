// What zel-agent prints about itself.
#include <gtest/gtest.h>

#include "tests/agent/AgentProcess.h"

namespace ZelAgent {
namespace {

TEST(CommandLine, VersionIsThatOfTheProject) {
  const AgentOutcome outcome = runAgent({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, "zel-agent " ZEL_PROJECT_VERSION "\n");
}

TEST(CommandLine, OutputThatCannotBeWrittenIsAnError) {
  for (const char* const option : {"--version", "--help"}) {
    const AgentOutcome outcome = runAgentInto("/dev/full", {option});
    EXPECT_EQ(outcome.status, 1) << option;
    EXPECT_EQ(outcome.err, "error: standard output cannot be written\n") << option;
  }
}

// The lines of the help below "Exit status:".
std::string exitStatusesIn(const std::string& help) {
  const std::string title = "\nExit status:\n";
  const auto at = help.find(title);
  return at == std::string::npos ? "" : help.substr(at + title.size());
}

struct Help {
  const char* command;  // empty for none
  const char* statuses;

  friend std::ostream& operator<<(std::ostream& stream, const Help& help) {
    return stream << '"' << help.command << '"';
  }
};

class HelpTest : public ::testing::TestWithParam<Help> {};

TEST_P(HelpTest, NamesEachExitStatus) {
  const std::string command = GetParam().command;
  const AgentOutcome outcome =
      command.empty() ? runAgent({"--help"}) : runAgent({command, "--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(exitStatusesIn(outcome.out), GetParam().statuses);
}

INSTANTIATE_TEST_SUITE_P(
    Each, HelpTest,
    ::testing::Values(
        Help{"",
             "  0  the command succeeded\n"
             "  1  the command failed: its --help says when\n"
             "  2  the command line, a configuration or another input file is wrong\n"},
        Help{"run",
             "  0  every configuration and event was applied\n"
             "  1  with --strict, a rule or an action was not programmed on the chip; or standard "
             "output or FILE of --trace-ring cannot be written\n"
             "  2  the command line, a configuration or the event file is wrong\n"},
        Help{"check",
             "  0  every configuration is right\n"
             "  1  standard output cannot be written\n"
             "  2  the command line or a configuration is wrong\n"},
        Help{"diff",
             "  0  the configurations do not differ\n"
             "  1  they differ, or standard output cannot be written\n"
             "  2  the command line or a configuration is wrong\n"},
        Help{"fallback-graph",
             "  0  the graph was printed\n"
             "  1  standard output cannot be written\n"
             "  2  the command line or the configuration is wrong\n"},
        Help{"forward",
             "  0  every packet was forwarded or dropped, and the captures were written\n"
             "  1  standard output or FILE of --trace-ring cannot be written\n"
             "  2  the command line, the configuration, the event file or a capture is wrong, or a "
             "capture cannot be written\n"},
        Help{"explain",
             "  0  the path of the packet was printed\n"
             "  1  standard output or FILE of --trace-ring cannot be written\n"
             "  2  the command line, the configuration or the event file is wrong\n"},
        Help{"serve",
             "  0  SIGTERM or SIGINT ended the daemon\n"
             "  1  the socket cannot be used, or standard output or FILE of --trace-ring cannot be "
             "written\n"
             "  2  the command line is wrong, or the configuration was wrong at the start\n"},
        Help{"ctl",
             "  0  every command succeeded, or the console ended\n"
             "  1  no daemon answers, a command failed, or standard output cannot be written\n"
             "  2  the command line or a command is wrong, or a configuration that a command "
             "applies\n"
             "  Several commands return the highest of their statuses.\n"},
        Help{"trace",
             "  0  the messages were printed\n"
             "  1  standard output cannot be written\n"
             "  2  the command line is wrong, or FILE cannot be read as a trace ring\n"}));

}  // namespace
}  // namespace ZelAgent
