#include "agent/model/forwarding/FallbackGraph.h"

#include <gtest/gtest.h>

#include <sstream>

#include "agent/config/OpenConfigReader.h"
#include "agent/reports/FallbackGraphReport.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

FallbackGraph graphOf(const SmallConfiguration& small) {
  return fallbackGraphOf(readOpenConfig(toJson(small).dump(), "small").configuration);
}

std::string textOf(const FallbackGraph& graph) {
  std::ostringstream text;
  writeTextReport(text, graph);
  return text.str();
}

std::string dotOf(const FallbackGraph& graph) {
  std::ostringstream text;
  writeDotReport(text, graph);
  return text.str();
}

TEST(FallbackGraph, OfTheLeastConfigurationIsTheDefaultVrf) {
  const FallbackGraph graph = graphOf({});
  EXPECT_EQ(textOf(graph), "VRF default\n");
  EXPECT_EQ(dotOf(graph), "digraph fallbacks {\n  rankdir=LR;\n  vrf1 [label=\"default\"];\n}\n");
}

TEST(FallbackGraph, HoldsVrfsThatAreConfiguredOrNamed) {
  EXPECT_EQ(textOf(graphOf({{{"red", "far"}, {"blue", "DEFAULT"}}, {"blue", "late"}, {"e1"}})),
            "VRF default\n"
            "VRF blue, fallback -> default\n"
            "VRF far, not configured\n"
            "VRF late, not configured\n"
            "VRF red, fallback -> far\n"
            "action actionVrf blue, vrfName -> blue\n"
            "action actionVrf late, vrfName -> late\n");
}

TEST(FallbackGraph, LeavesOutActionsThatNobodyUses) {
  EXPECT_EQ(textOf(graphOf({{{"red"}}, {"red", "late"}, {}})), "VRF default\nVRF red\n");
}

TEST(FallbackGraph, DoesNotDependOnTheOrderOfTheConfiguration) {
  const FallbackGraph graph =
      graphOf({{{"a", "b"}, {"b", "c"}, {"c", "a"}, {"d", "d"}}, {"d", "a"}, {"e1"}});
  const FallbackGraph other =
      graphOf({{{"d", "d"}, {"c", "a"}, {"b", "c"}, {"a", "b"}}, {"a", "d"}, {"e2", "e1"}});
  EXPECT_EQ(textOf(graph), textOf(other));
  EXPECT_EQ(dotOf(graph), dotOf(other));
}

TEST(FallbackGraph, NamesEachCycleFromItsLeastName) {
  const FallbackGraph graph = graphOf(
      {{{"z", "b"}, {"b", "c"}, {"c", "a"}, {"a", "b"}, {"self", "self"}, {"y", "z"}}, {}, {}});
  EXPECT_EQ(graph.cycles, (std::vector<FallbackCycle>{{"a", "b", "c"}, {"self"}}));
  std::vector<L3::VrfName> onCycles;
  for (const GraphVrf& vrf : graph.vrfs) {
    if (vrf.isOnCycle) onCycles.push_back(vrf.name);
  }
  EXPECT_EQ(onCycles, (std::vector<L3::VrfName>{"a", "b", "c", "self"}));
  EXPECT_EQ(toText(graph.cycles.at(0)), "a -> b -> c -> a");
  EXPECT_EQ(toText(graph.cycles.at(1)), "self -> self");
}

TEST(FallbackGraph, AChainIsNoCycle) {
  EXPECT_TRUE(graphOf({{{"a", "b"}, {"b", "c"}, {"c"}, {"d", "b"}}, {}, {}}).cycles.empty());
}

TEST(FallbackGraph, LabelsTheFieldsOfAnAction) {
  VrfAction action("a", PolicyMap::ActionType::decapVrf);
  action.postDecapVrfNameIs("b");
  auto named = vrfsNamedBy(action);
  ASSERT_EQ(named.size(), 2U);
  EXPECT_STREQ(named[0].field, "vrfName");
  EXPECT_STREQ(named[1].field, "postDecapVrfName");
  action.fallbackVrfNameIs("c");
  named = vrfsNamedBy(action);
  ASSERT_EQ(named.size(), 3U);
  EXPECT_STREQ(named[1].field, "fallbackVrfName");
  EXPECT_EQ(named[1].vrf, L3::VrfName("c"));
}

TEST(FallbackGraph, DotColoursAndNamesCycles) {
  EXPECT_EQ(
      dotOf(graphOf({{{"red", "blue"}, {"blue", "red"}, {"in", "red"}}, {"in", "late"}, {"e"}})),
      "digraph fallbacks {\n"
      "  rankdir=LR;\n"
      "  // cycle: blue -> red -> blue\n"
      "  vrf1 [label=\"default\"];\n"
      "  vrf2 [label=\"blue\", color=red];\n"
      "  vrf3 [label=\"in\"];\n"
      "  vrf4 [label=\"late\", style=dashed];\n"
      "  vrf5 [label=\"red\", color=red];\n"
      "  vrf2 -> vrf5 [label=\"fallback\", color=red, fontcolor=red];\n"
      "  vrf3 -> vrf5 [label=\"fallback\"];\n"
      "  vrf5 -> vrf2 [label=\"fallback\", color=red, fontcolor=red];\n"
      "  action1 [label=\"actionVrf in\", shape=box];\n"
      "  action1 -> vrf3 [label=\"vrfName\"];\n"
      "  action2 [label=\"actionVrf late\", shape=box];\n"
      "  action2 -> vrf4 [label=\"vrfName\"];\n"
      "}\n");
}

TEST(FallbackGraph, DotShowsNamesAsTheyAre) {
  EXPECT_EQ(dotOf(graphOf({{{"\"q\" \\N &lt; <b>\n//"}, {"b\xc3\xbcro"}}, {}, {}})),
            "digraph fallbacks {\n"
            "  rankdir=LR;\n"
            "  vrf1 [label=\"default\"];\n"
            "  vrf2 [label=\"'\\\"q\\\" \\\\\\\\N &amp;lt; <b>\\\\n//'\"];\n"
            "  vrf3 [label=\"b\xc3\xbcro\"];\n"
            "}\n");
}

}  // namespace
}  // namespace ZelAgent
