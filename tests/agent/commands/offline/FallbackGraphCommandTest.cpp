// `zel-agent fallback-graph` from end to end.
#include <gtest/gtest.h>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

const SmallConfiguration cyclic{{{"red", "blue"}, {"blue", "red"}, {"me", "me"}}, {"red"}, {"e1"}};

TEST(FallbackGraphCommand, ShowsLines) {
  const AgentOutcome outcome = runAgent({"fallback-graph", examplePath("decap.json")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  const std::string action = "action actionDecapVrf decap fallback transit post-decap default, ";
  EXPECT_EQ(outcome.out,
            "VRF default\n"
            "VRF decap\n"
            "VRF repair, fallback -> default\n"
            "VRF transit, fallback -> repair\n" +
                action + "vrfName -> decap\n" + action + "fallbackVrfName -> transit\n" + action +
                "postDecapVrfName -> default\n"
                "action actionVrf transit, vrfName -> transit\n");
}

TEST(FallbackGraphCommand, ShowsDot) {
  const AgentOutcome outcome = runAgent({"fallback-graph", examplePath("decap.json"), "--dot"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "digraph fallbacks {\n"
            "  rankdir=LR;\n"
            "  vrf1 [label=\"default\"];\n"
            "  vrf2 [label=\"decap\"];\n"
            "  vrf3 [label=\"repair\"];\n"
            "  vrf4 [label=\"transit\"];\n"
            "  vrf3 -> vrf1 [label=\"fallback\"];\n"
            "  vrf4 -> vrf3 [label=\"fallback\"];\n"
            "  action1 [label=\"actionDecapVrf decap fallback transit post-decap default\", "
            "shape=box];\n"
            "  action1 -> vrf2 [label=\"vrfName\"];\n"
            "  action1 -> vrf4 [label=\"fallbackVrfName\"];\n"
            "  action1 -> vrf1 [label=\"postDecapVrfName\"];\n"
            "  action2 [label=\"actionVrf transit\", shape=box];\n"
            "  action2 -> vrf4 [label=\"vrfName\"];\n"
            "}\n");
}

TEST(FallbackGraphCommand, WarnsOfEachCycleAsTextAndAsDot) {
  const std::string file = writeFile("a.json", toJson(cyclic).dump());
  const std::string warning =
      "warning: " + file + ": fallback VRFs form a cycle; a lookup uses no VRF twice: ";
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"fallback-graph", file}, {"fallback-graph", "--dot", file}}) {
    const AgentOutcome outcome = runAgent(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, warning + "blue -> red -> blue\n" + warning + "me -> me\n");
  }
  EXPECT_EQ(runAgent({"fallback-graph", file}).out,
            "VRF default\n"
            "VRF blue, fallback -> red\n"
            "VRF me, fallback -> me\n"
            "VRF red, fallback -> blue\n"
            "action actionVrf red, vrfName -> red\n"
            "cycle blue -> red -> blue\n"
            "cycle me -> me\n");
}

TEST(FallbackGraphCommand, PrintsTheWarningsOfAConfiguration) {
  const std::string file = writeFile("a.json", toJson({{{"red", "late"}}, {}, {}}).dump());
  const AgentOutcome outcome = runAgent({"fallback-graph", file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "warning: " + file +
                             ": /network-instances/network-instance[name=red]/config/"
                             "fallback-network-instance: names network instance \"late\", which is "
                             "not configured\n");
}

TEST(FallbackGraphCommand, ABadConfigurationIsOneLine) {
  const std::string file = writeFile("bad.json", "[]");
  const AgentOutcome outcome = runAgent({"fallback-graph", "--dot", file});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "error: " + file + ": /: must be an object, not an array\n");
}

TEST(FallbackGraphCommand, OutputThatCannotBeWrittenIsAnError) {
  const AgentOutcome outcome =
      runAgentInto("/dev/full", {"fallback-graph", examplePath("decap.json")});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "error: standard output cannot be written\n");
}

}  // namespace
}  // namespace ZelAgent
