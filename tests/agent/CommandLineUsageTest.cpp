// A wrong command line is one line, and no command is run.
#include <gtest/gtest.h>

#include "tests/agent/AgentCall.h"

namespace ZelAgent {
namespace {

struct Usage {
  const char* name;
  std::vector<std::string> arguments;
  const char* message;

  friend std::ostream& operator<<(std::ostream& stream, const Usage& usage) {
    return stream << usage.name;
  }
};

class BadUsageTest : public ::testing::TestWithParam<Usage> {};

TEST_P(BadUsageTest, IsRefusedInOneLine) {
  const CallOutcome outcome = callAgent(GetParam().arguments);
  EXPECT_EQ(outcome.err, std::string("error: ") + GetParam().message + " --help\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
}

INSTANTIATE_TEST_SUITE_P(
    Each, BadUsageTest,
    ::testing::Values(
        Usage{"NoCommand",
              {},
              "a command is required, one of: run, check, diff, fallback-graph, forward, explain, "
              "serve, ctl, trace, show; see zel-agent"},
        Usage{"UnknownCommand",
              {"walk"},
              "a command is required, one of: run, check, diff, fallback-graph, forward, explain, "
              "serve, ctl, trace, show; see zel-agent"},
        Usage{"EventsWithoutAFile",
              {"run", "x.json", "--events"},
              "--events: 1 required FILE missing; see zel-agent run"},
        Usage{"GraphWithoutAConfiguration",
              {"fallback-graph", "--dot"},
              "CONFIG is required; see zel-agent fallback-graph"},
        Usage{"GraphOfTwoConfigurations",
              {"fallback-graph", "x.json", "y.json"},
              "The following argument was not expected: y.json; see zel-agent fallback-graph"},
        Usage{"NoConfiguration", {"run"}, "CONFIG is required; see zel-agent run"},
        Usage{"UnknownOption",
              {"run", "x.json", "--fast"},
              "The following argument was not expected: --fast; see zel-agent run"},
        Usage{"CapacityIsNoNumber",
              {"run", "--chip-capacity", "many", "x.json"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not \"many\"; see "
              "zel-agent run"},
        Usage{"CapacityIsNegative",
              {"run", "--chip-capacity=-1", "x.json"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not \"-1\"; see "
              "zel-agent run"},
        Usage{"ForwardWithoutInterface",
              {"forward", "x.json", "--out", "d"},
              "--in is required; see zel-agent forward"},
        Usage{"ForwardWithoutFolder",
              {"forward", "x.json", "--in", "e=f"},
              "--out is required; see zel-agent forward"},
        Usage{"ForwardWithoutConfiguration",
              {"forward", "--in", "e=f", "--out", "d"},
              "CONFIG is required; see zel-agent forward"},
        Usage{"ForwardOfTwoConfigurations",
              {"forward", "x.json", "y.json", "--in", "e=f", "--out", "d"},
              "The following argument was not expected: y.json; see zel-agent forward"},
        Usage{"ForwardEventsWithoutAFile",
              {"forward", "x.json", "--in", "e=f", "--out", "d", "--events"},
              "--events: 1 required FILE missing; see zel-agent forward"},
        Usage{"ForwardInWithoutValue",
              {"forward", "x.json", "--out", "d", "--in"},
              "--in: 1 required INTERFACE=FILE missing; see zel-agent forward"},
        Usage{"ForwardStrict",
              {"forward", "x.json", "--in", "e=f", "--out", "d", "--strict"},
              "The following argument was not expected: --strict; see zel-agent forward"},
        Usage{"ExplainWithoutInterface",
              {"explain", "x.json", "--packet", "hex 00"},
              "--in is required; see zel-agent explain"},
        Usage{"ExplainWithoutPacket",
              {"explain", "x.json", "--in", "e"},
              "--packet is required; see zel-agent explain"},
        Usage{"ExplainWithoutConfiguration",
              {"explain", "--in", "e", "--packet", "hex 00"},
              "CONFIG is required; see zel-agent explain"},
        Usage{"ExplainOnTwoInterfaces",
              {"explain", "x.json", "--in", "e", "--in", "f", "--packet", "hex 00"},
              "--in: At Most 1 required but received 2; see zel-agent explain"},
        Usage{
            "ServeWithoutSocket", {"serve", "x.json"}, "--socket is required; see zel-agent serve"},
        Usage{"ServeWithoutConfiguration",
              {"serve", "--socket", "s"},
              "CONFIG is required; see zel-agent serve"},
        Usage{"ServeOfTwoConfigurations",
              {"serve", "x.json", "y.json", "--socket", "s"},
              "The following argument was not expected: y.json; see zel-agent serve"},
        Usage{"ServeJson",
              {"serve", "x.json", "--socket", "s", "--json"},
              "The following argument was not expected: --json; see zel-agent serve"},
        Usage{"ServeCapacityIsNoNumber",
              {"serve", "x.json", "--socket", "s", "--chip-capacity", "1x"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not \"1x\"; see "
              "zel-agent serve"},
        Usage{"ServeTimeoutIsNoNumber",
              {"serve", "x.json", "--socket", "s", "--client-timeout", "1.5"},
              "--client-timeout: must be a whole number from 0 to 4294967295, not \"1.5\"; see "
              "zel-agent serve"},
        Usage{"ServeTimeoutIsTooLarge",
              {"serve", "x.json", "--socket", "s", "--client-timeout", "4294967296"},
              "--client-timeout: must be a whole number from 0 to 4294967295, not \"4294967296\"; "
              "see zel-agent serve"},
        Usage{"CtlWithoutSocket", {"ctl", "show"}, "--socket is required; see zel-agent ctl"},
        Usage{"CtlSocketWithoutValue",
              {"ctl", "--socket"},
              "--socket: 1 required PATH missing; see zel-agent ctl"},
        Usage{"CtlUnknownOption",
              {"ctl", "--socket", "s", "--strict", "show"},
              "The following argument was not expected: --strict; see zel-agent ctl"},
        Usage{"ShowWithoutTopic", {"show"}, "WHAT is required; see zel-agent show"},
        Usage{"ShowOfAnUnknownTopic",
              {"show", "rules"},
              "WHAT: must be limits, not \"rules\"; see zel-agent show"},
        Usage{"TraceWithoutFile", {"trace"}, "FILE is required; see zel-agent trace"},
        Usage{"TraceOfTwoFiles",
              {"trace", "x", "y"},
              "The following argument was not expected: y; see zel-agent trace"},
        Usage{"TraceDot",
              {"trace", "x", "--dot"},
              "The following argument was not expected: --dot; see zel-agent trace"},
        Usage{"GraphJson",
              {"fallback-graph", "x.json", "--json"},
              "The following argument was not expected: --json; see zel-agent fallback-graph"},
        Usage{"RunDot",
              {"run", "x.json", "--dot"},
              "The following argument was not expected: --dot; see zel-agent run"},
        Usage{"RunTwoEventFiles",
              {"run", "x.json", "--events", "a", "--events", "b"},
              "--events: At Most 1 required but received 2; see zel-agent run"},
        Usage{"RunTraceRingWithoutAFile",
              {"run", "x.json", "--trace-ring"},
              "--trace-ring: 1 required FILE missing; see zel-agent run"},
        Usage{"CapacityIsEmpty",
              {"run", "--chip-capacity", "", "x.json"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not \"\"; see "
              "zel-agent run"},
        Usage{"CapacityHasASign",
              {"run", "--chip-capacity", "+1", "x.json"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not \"+1\"; see "
              "zel-agent run"},
        Usage{"CapacityIsHexadecimal",
              {"run", "--chip-capacity", "0x10", "x.json"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not \"0x10\"; see "
              "zel-agent run"},
        Usage{"CapacityIsGivenTwice",
              {"run", "--chip-capacity", "1", "--chip-capacity", "2", "x.json"},
              "--chip-capacity: At Most 1 required but received 2; see zel-agent run"},
        Usage{"TwoCommands",
              {"fallback-graph", "x.json", "run"},
              "The following argument was not expected: run; see zel-agent fallback-graph"},
        Usage{"UnknownOptionWithoutACommand",
              {"--fast"},
              "a command is required, one of: run, check, diff, fallback-graph, forward, explain, "
              "serve, ctl, trace, show; see zel-agent"},
        Usage{"OptionOfACommandInFrontOfIt",
              {"--json", "run", "x.json"},
              "The following argument was not expected: --json; see zel-agent run"},
        Usage{"CapacityIsTooLarge",
              {"run", "--chip-capacity", "4294967296", "x.json"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not "
              "\"4294967296\"; see zel-agent run"}),
    [](const auto& usage) { return std::string(usage.param.name); });

}  // namespace
}  // namespace ZelAgent
