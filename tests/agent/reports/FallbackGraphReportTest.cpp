// The graph of fallback VRFs as text, as a drawing and as JSON.
#include "agent/reports/FallbackGraphReport.h"

#include <gtest/gtest.h>

#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

// A VRF for each combination of configured or not, with or without a fallback, on a cycle or not.
FallbackGraph graphOfEachKind() {
  FallbackGraph graph;
  graph.vrfs = {{"a", "", true, false},   {"b", "", false, false}, {"c", "a", true, false},
                {"d", "a", false, false}, {"e", "f", true, true},  {"f", "e", false, true}};
  graph.actions = {lookUpAction("a"), decapAction("c", "d", "e")};
  graph.cycles = {{"e", "f"}};
  return graph;
}

std::string graphText(const FallbackGraph& graph) {
  return printedBy([&](std::ostream& out) { writeTextReport(out, graph); });
}

std::string graphDrawing(const FallbackGraph& graph) {
  return printedBy([&](std::ostream& out) { writeDotReport(out, graph); });
}

TEST(FallbackGraphReport, EachKindOfVrfHasItsLine) {
  EXPECT_EQ(graphText(graphOfEachKind()),
            "VRF a\n"
            "VRF b, not configured\n"
            "VRF c, fallback -> a\n"
            "VRF d, not configured, fallback -> a\n"
            "VRF e, fallback -> f\n"
            "VRF f, not configured, fallback -> e\n"
            "action actionVrf a, vrfName -> a\n"
            "action actionDecapVrf c fallback d post-decap e, vrfName -> c\n"
            "action actionDecapVrf c fallback d post-decap e, fallbackVrfName -> d\n"
            "action actionDecapVrf c fallback d post-decap e, postDecapVrfName -> e\n"
            "cycle e -> f -> e\n");
}

TEST(FallbackGraphReport, EachKindOfVrfHasItsNode) {
  EXPECT_EQ(graphDrawing(graphOfEachKind()),
            "digraph fallbacks {\n"
            "  rankdir=LR;\n"
            "  // cycle: e -> f -> e\n"
            "  vrf1 [label=\"a\"];\n"
            "  vrf2 [label=\"b\", style=dashed];\n"
            "  vrf3 [label=\"c\"];\n"
            "  vrf4 [label=\"d\", style=dashed];\n"
            "  vrf5 [label=\"e\", color=red];\n"
            "  vrf6 [label=\"f\", style=dashed, color=red];\n"
            "  vrf3 -> vrf1 [label=\"fallback\"];\n"
            "  vrf4 -> vrf1 [label=\"fallback\"];\n"
            "  vrf5 -> vrf6 [label=\"fallback\", color=red, fontcolor=red];\n"
            "  vrf6 -> vrf5 [label=\"fallback\", color=red, fontcolor=red];\n"
            "  action1 [label=\"actionVrf a\", shape=box];\n"
            "  action1 -> vrf1 [label=\"vrfName\"];\n"
            "  action2 [label=\"actionDecapVrf c fallback d post-decap e\", shape=box];\n"
            "  action2 -> vrf3 [label=\"vrfName\"];\n"
            "  action2 -> vrf4 [label=\"fallbackVrfName\"];\n"
            "  action2 -> vrf5 [label=\"postDecapVrfName\"];\n"
            "}\n");
}

TEST(FallbackGraphReport, EachKindOfVrfHasItsMembers) {
  EXPECT_EQ(toJson(graphOfEachKind()).dump(),
            R"({"vrfs":[{"vrfName":"a","configured":true,"fallbackVrfName":""},)"
            R"({"vrfName":"b","configured":false,"fallbackVrfName":""},)"
            R"({"vrfName":"c","configured":true,"fallbackVrfName":"a"},)"
            R"({"vrfName":"d","configured":false,"fallbackVrfName":"a"},)"
            R"({"vrfName":"e","configured":true,"fallbackVrfName":"f"},)"
            R"({"vrfName":"f","configured":false,"fallbackVrfName":"e"}],)"
            R"("actions":[{"vrfName":"a","fallbackVrfName":"","postDecapVrfName":"",)"
            R"("action":"actionVrf"},{"vrfName":"c","fallbackVrfName":"d",)"
            R"("postDecapVrfName":"e","action":"actionDecapVrf"}],"cycles":[["e","f"]]})");
}

TEST(FallbackGraphReport, AnEmptyGraphHasNoLine) {
  EXPECT_EQ(graphText({}), "");
  EXPECT_EQ(graphDrawing({}), "digraph fallbacks {\n  rankdir=LR;\n}\n");
  EXPECT_EQ(toJson(FallbackGraph()).dump(), R"({"vrfs":[],"actions":[],"cycles":[]})");
}

TEST(FallbackGraphReport, NamesAreWordsAndAreEscapedInADrawing) {
  FallbackGraph graph;
  graph.vrfs = {{"a b", "", true, true}, {"q\"\\&", "", true, false}};
  graph.cycles = {{"a b"}};
  EXPECT_EQ(graphText(graph), "VRF 'a b'\nVRF 'q\"\\\\&'\ncycle 'a b' -> 'a b'\n");
  EXPECT_EQ(graphDrawing(graph),
            "digraph fallbacks {\n  rankdir=LR;\n"
            "  // cycle: 'a b' -> 'a b'\n"
            "  vrf1 [label=\"'a b'\", color=red];\n"
            "  vrf2 [label=\"'q\\\"\\\\\\\\&amp;'\"];\n}\n");
}

}  // namespace
}  // namespace ZelAgent
