// Bad input ends the agent with status 2 and one line. Nothing of the bad input is applied.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/agent/AgentProcess.h"
#include "tests/agent/config/BadInputs.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

constexpr const char* nothingApplied =
    "all removed\n  no VRF actions\n"
    "  chip: 0 of 1024 VRF resources in use; 0 creates, 0 updates, 0 deletes, 0 failed\n";

void expectRefused(const std::string& file, const std::string& message) {
  const AgentOutcome outcome = runAgent({"run", file});
  EXPECT_EQ(outcome.err, "error: " + message + '\n');
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, nothingApplied);
}

class BadInputTest : public ::testing::TestWithParam<BadInput> {};

TEST_P(BadInputTest, IsRefusedInOneLine) {
  const std::string file = writeFile("bad.json", documentOf(GetParam()).dump());
  expectRefused(file, file + ": " + messageOf(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Each, BadInputTest, ::testing::ValuesIn(badInputs),
                         [](const auto& input) { return std::string(input.param.name); });

TEST(BadFileTest, MissingFile) {
  const std::string file = TestFiles::processFolder() / "no-such-file.json";
  expectRefused(file,
                file + ": cannot be read: No such file or directory; give a readable JSON file");
}

TEST(BadFileTest, Folder) {
  const std::string folder = TestFiles::processFolder();
  expectRefused(folder, folder + ": cannot be read: Is a directory; give a readable JSON file");
}

TEST(BadFileTest, MalformedJson) {
  const std::string file = writeFile("bad.json", "{\"network-instances\":\n  {]}");
  expectRefused(file, file +
                          ":2:4: malformed JSON: while parsing object key - unexpected ']'; "
                          "expected string literal");
}

TEST(BadFileTest, MemberTwice) {
  const std::string file = writeFile("bad.json", "{\n \"a\": 1,\n \"a\": 1}");
  expectRefused(file,
                file + ":3:2: member \"a\" is given twice in one object; give each member once");
}

TEST(BadFileTest, NameOverHundredBytes) {
  auto document = rightDocument();
  auto& rule = document["network-instances"]["network-instance"][0]["policy-forwarding"]["policies"]
                       ["policy"][0]["rules"]["rule"][0];
  rule["action"]["config"]["network-instance"] = std::string(101, 'n');
  const std::string file = writeFile("bad.json", document.dump());
  expectRefused(file, file + ": " + spellOut("$RULE10/action/config/network-instance", false) +
                          ": must have at most 100 bytes, not 101");
}

TEST(BadFileTest, WarningsOfABadFileAreNotShown) {
  auto document = rightDocument();
  document["unknown"] = 1;
  document["network-instances"]["network-instance"][1].erase("config");
  const std::string file = writeFile("bad.json", document.dump());
  expectRefused(file, file +
                          ": /network-instances/network-instance[name=red]/config: lacks its "
                          "member \"type\"");
}

TEST(BadFileTest, WhatWasAppliedBeforeIsShownAndRemovedInOrder) {
  const std::string bad = writeFile("bad.json", "[]");
  const AgentOutcome outcome = runAgent({"run", "--json", examplePath("four-rules.json"), bad,
                                         examplePath("four-rules-changed.json")});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: " + bad + ": /: must be an object, not an array\n");
  const auto documents = outcome.documents();
  ASSERT_EQ(documents.size(), 2U);
  EXPECT_EQ(documents[0]["configuration"], examplePath("four-rules.json"));
  EXPECT_EQ(documents[0]["actions"].size(), 2U);
  EXPECT_EQ(documents[1]["configuration"], nullptr);
  EXPECT_EQ(documents[1]["actions"].size(), 0U);
  EXPECT_EQ(documents[1]["chip"]["used"], 0);
  EXPECT_EQ(documents[1]["chip"]["creates"], 2);
  EXPECT_EQ(documents[1]["chip"]["deletes"], 2);
}

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
  const AgentOutcome outcome = runAgent(GetParam().arguments);
  EXPECT_EQ(outcome.err, std::string("error: ") + GetParam().message + " --help\n");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
}

INSTANTIATE_TEST_SUITE_P(
    Each, BadUsageTest,
    ::testing::Values(
        Usage{"NoCommand",
              {},
              "a command is required, one of: run, fallback-graph, forward, explain, serve, ctl, "
              "trace; see zel-agent"},
        Usage{"UnknownCommand",
              {"walk"},
              "a command is required, one of: run, fallback-graph, forward, explain, serve, ctl, "
              "trace; see zel-agent"},
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
        Usage{"CapacityIsTooLarge",
              {"run", "--chip-capacity", "4294967296", "x.json"},
              "--chip-capacity: must be a whole number from 0 to 4294967295, not "
              "\"4294967296\"; see zel-agent run"}),
    [](const auto& usage) { return std::string(usage.param.name); });

}  // namespace
}  // namespace ZelAgent
