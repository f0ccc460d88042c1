// Bad input ends the agent with status 2 and one line. Nothing of the bad input is applied.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/agent/AgentCall.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/config/BadInputs.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

constexpr const char* nothingApplied =
    "all removed\n  no VRF actions\n"
    "  chip: 0 of 1024 VRF resources in use; 0 creates, 0 updates, 0 deletes, 0 failed\n"
    "  rules: 0 of 65536 rule entries in use, at most 0; 0 refused\n";

void expectRefused(const std::string& file, const std::string& message) {
  const CallOutcome outcome = callAgent({"run", file});
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
  expectRefused(folder, folder + ": is a directory; give a readable JSON file");
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
  const CallOutcome outcome = callAgent({"run", "--json", exampleFile("four-rules.json"), bad,
                                         exampleFile("four-rules-changed.json")});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "error: " + bad + ": /: must be an object, not an array\n");
  const auto documents = outcome.documents();
  ASSERT_EQ(documents.size(), 2U);
  EXPECT_EQ(documents[0]["configuration"], exampleFile("four-rules.json"));
  EXPECT_EQ(documents[0]["actions"].size(), 2U);
  EXPECT_EQ(documents[1]["configuration"], nullptr);
  EXPECT_EQ(documents[1]["actions"].size(), 0U);
  EXPECT_EQ(documents[1]["chip"]["used"], 0);
  EXPECT_EQ(documents[1]["chip"]["creates"], 2);
  EXPECT_EQ(documents[1]["chip"]["deletes"], 2);
}

}  // namespace
}  // namespace ZelAgent
