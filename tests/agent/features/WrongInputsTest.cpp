// A wrong configuration is refused with its place and with what is right, and changes nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "tests/agent/TestPackets.h"
#include "tests/agent/features/WrongInputs.h"
#include "tests/agent/model/fresh/VisibleState.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

using nlohmann::json;
using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

// An agent with a right configuration in force, which each test tries to replace by a wrong one.
class WrongInputFixture {
 public:
  WrongInputFixture() : served_(file(), 64) {
    write(rightConfiguration().dump());
    served_.start();
    inForce_ = state();
  }

  [[nodiscard]] std::string file() const { return folder_.path("f.json"); }
  void write(const std::string& text) const { std::ofstream(file(), std::ios::binary) << text; }

  // The lines of the error. The agent must be as it was.
  Lines refusal() {
    Lines lines;
    try {
      served_.reload();
      ADD_FAILURE() << "it was applied";
    } catch (const ConfigError& error) {
      lines = linesOf(error.what());
    }
    EXPECT_EQ(firstDifference(state(), inForce_), "");
    return lines;
  }

 private:
  [[nodiscard]] std::string state() {
    Probes probes;
    probes.packets = {{"e1.7", ipv6Packet({"2001:db8:1::1", "2001:db8::1"})},
                      {"e2.5", ipv4Packet({"192.0.2.1", "10.1.2.3"})}};
    return visibleState(served_, probes, Scope::everything);
  }

  TestFiles::TemporaryFolder folder_;
  ServedAgent served_;
  std::string inForce_;
};

std::unique_ptr<WrongInputFixture>& agentInForce() {
  static std::unique_ptr<WrongInputFixture> agent;
  return agent;
}

template <class Parameter>
class WrongDocumentTest : public ::testing::TestWithParam<Parameter> {
 protected:
  static void SetUpTestSuite() { agentInForce() = std::make_unique<WrongInputFixture>(); }
  static void TearDownTestSuite() { agentInForce().reset(); }
};

std::string wordsIn(const std::string& text) {
  std::string words;
  for (const char byte : text) {
    const bool isWord = std::isalnum(static_cast<unsigned char>(byte)) != 0;
    if (isWord) words += byte;
    if (!isWord && !words.empty() && words.back() != '_') words += '_';
  }
  return words;
}

// "FILE: PATH: WHAT"
void expectLine(const std::string& line, const std::string& path, const std::string& says) {
  const std::string start = agentInForce()->file() + ": " + path + ": ";
  EXPECT_EQ(line.substr(0, start.size()), start);
  EXPECT_NE(line.find(says, std::min(line.size(), start.size())), std::string::npos)
      << "does not say: " << says << "\n in: " << line;
}

class WrongInputTest : public WrongDocumentTest<WrongInput> {};

TEST_P(WrongInputTest, IsRefusedWithItsPathAndChangesNothing) {
  agentInForce()->write(changed(GetParam()).dump());
  const Lines lines = agentInForce()->refusal();
  ASSERT_EQ(lines.size(), 1U) << ::testing::PrintToString(lines);
  expectLine(lines.front(), expectedPath(GetParam()), GetParam().says);
}

INSTANTIATE_TEST_SUITE_P(Each, WrongInputTest, ::testing::ValuesIn(wrongInputs()),
                         [](const auto& row) {
                           return std::to_string(row.index) + '_' + wordsIn(row.param.at);
                         });

TEST(WrongInputs, AreMoreThanTwoHundredChangesToARightConfiguration) {
  EXPECT_EQ(readOpenConfig(rightConfiguration().dump(), "f.json").warnings, Lines{});
  EXPECT_GE(wrongInputs().size(), 200U);
}

// A text that is not the JSON of a configuration.
struct WrongText {
  const char* name;
  std::function<std::string(const std::string& right)> text;
  const char* says;

  friend std::ostream& operator<<(std::ostream& stream, const WrongText& wrong) {
    return stream << wrong.name;
  }
};

std::function<std::string(const std::string&)> always(const std::string& text) {
  return [text](const std::string& /*right*/) { return text; };
}

std::function<std::string(const std::string&)> cutTo(unsigned quarters) {
  return
      [quarters](const std::string& right) { return right.substr(0, right.size() * quarters / 4); };
}

// The right text with its first `what` replaced.
std::function<std::string(const std::string&)> with(const std::string& what,
                                                    const std::string& instead) {
  return [what, instead](std::string right) {
    return right.replace(right.find(what), what.size(), instead);
  };
}

std::string inUtf16(const std::string& text, bool isBigEndian) {
  std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char byte : text) {
    if (isBigEndian) bytes += '\0';
    bytes += byte;
    if (!isBigEndian) bytes += '\0';
  }
  return bytes;
}

std::string nested(std::size_t levels) {
  return std::string(levels, '[') + std::string(levels, ']');
}

constexpr const char* atALine = ": malformed JSON: ";  // behind the line and the column

const WrongText wrongTexts[] = {
    {"Empty", always(""), atALine},
    {"OnlySpaces", always("  \n\t\n"), atALine},
    {"Null", always("null"), "object"},
    {"AnArray", always("[]"), "object"},
    {"ANumber", always("5"), "object"},
    {"AText", always("\"network-instances\""), "object"},
    {"AnEmptyObject", always("{}"), "network-instances"},
    {"OnlyAnotherModule", always(R"({"openconfig-system:system": {}})"), "network-instances"},
    {"AQuarter", cutTo(1), atALine},
    {"AHalf", cutTo(2), atALine},
    {"ThreeQuarters", cutTo(3), atALine},
    {"WithoutItsLastByte",
     [](const std::string& right) { return right.substr(0, right.size() - 1); }, atALine},
    {"WithAByteMore", [](const std::string& right) { return right + "x"; }, atALine},
    {"WithABracketMore", [](const std::string& right) { return right + "}"; }, atALine},
    {"Twice", [](const std::string& right) { return right + right; }, atALine},
    {"Utf16", [](const std::string& right) { return inUtf16(right, false); }, atALine},
    {"Utf16BigEndian", [](const std::string& right) { return inUtf16(right, true); }, atALine},
    {"Utf16WithoutAMark", [](const std::string& right) { return inUtf16(right, false).substr(2); },
     atALine},
    {"Latin1",
     with("\"red\"",
          "\"r\xE9"
          "d\""),
     atALine},
    {"OverlongUtf8",
     with("\"red\"",
          "\"r\xC0\x80"
          "d\""),
     atALine},
    {"SurrogateInUtf8",
     with("\"red\"",
          "\"r\xED\xA0\x80"
          "d\""),
     atALine},
    {"LoneSurrogate", with("\"red\"", R"("r\ud800d")"), atALine},
    {"WrongEscape", with("\"red\"", R"("r\xed")"), atALine},
    {"NulByteInAText", with("\"red\"", std::string("\"r\0d\"", 5)), atALine},
    {"NulByteAtTheEnd", [](const std::string& right) { return right + '\0'; }, atALine},
    {"NulByteAndMore", [](const std::string& right) { return right + '\0' + "nothing"; }, atALine},
    {"LineEndInAText", with("\"red\"", "\"r\nd\""), atALine},
    {"SingleQuotes", with("\"red\"", "'red'"), atALine},
    {"NameWithoutQuotes", with("\"red\"", "red"), atALine},
    {"Comment", with("{", "{ // mine\n"), atALine},
    {"CommaAtTheEnd", with("[10,18]", "[10,18,]"), atALine},
    {"NoComma", with("[10,18]", "[10 18]"), atALine},
    {"HexadecimalNumber", with("[10,18]", "[0x10,18]"), atALine},
    {"LeadingZero", with("[10,18]", "[010,18]"), atALine},
    {"PlusSign", with("[10,18]", "[+10,18]"), atALine},
    {"NotANumber", with("[10,18]", "[NaN,18]"), atALine},
    {"PythonTrue", with("true", "True"), atALine},
    {"Xml", always("<config><network-instances/></config>"), atALine},
    {"Yaml", always("network-instances:\n  network-instance: []\n"), atALine},
    {"Compressed", always("\x1F\x8B\x08"), atALine},
    {"AMemberTwice", with("\"dscp\":10", "\"dscp\":10,\"dscp\":11"), "dscp"},
    {"TheTopMemberTwice", always(R"({"network-instances": {}, "network-instances": {}})"),
     "network-instances"},
    {"TooManyLevels", always(nested(101)), "100"},
    {"AHundredThousandLevels", always(nested(100000)), "100"},
    {"OnlyOpenBrackets", always(std::string(100000, '[')), "100"},
    {"AWrapperWithoutAValue", always(R"({"path": "/network-instances"})"), ""},
    {"AWrapperOfANumber", always(R"({"path": "/network-instances", "val": 5})"), "object"},
    {"AWrapperOfAList", always(R"({"path": "/network-instances", "val": []})"), "object"},
};

class WrongTextTest : public WrongDocumentTest<WrongText> {};

TEST_P(WrongTextTest, IsRefusedInOneLineAndChangesNothing) {
  agentInForce()->write(GetParam().text(rightConfiguration().dump()));
  const Lines lines = agentInForce()->refusal();
  ASSERT_EQ(lines.size(), 1U) << ::testing::PrintToString(lines);
  const std::string start = agentInForce()->file() + ':';
  EXPECT_EQ(lines.front().substr(0, start.size()), start);
  EXPECT_NE(lines.front().find(GetParam().says), std::string::npos) << lines.front();
}

INSTANTIATE_TEST_SUITE_P(Each, WrongTextTest, ::testing::ValuesIn(wrongTexts),
                         [](const auto& row) { return std::string(row.param.name); });

class WrongFile : public ::testing::Test {
 protected:
  WrongFile() { agentInForce() = std::make_unique<WrongInputFixture>(); }
  ~WrongFile() override { agentInForce().reset(); }
};

TEST_F(WrongFile, OfHundredMegabytesIsNotRead) {
  std::filesystem::resize_file(agentInForce()->file(), std::uintmax_t{100} << 20U);
  const Lines lines = agentInForce()->refusal();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(lines.front().find("64 MiB"), std::string::npos) << lines.front();
}

TEST_F(WrongFile, ThatIsGoneIsNamed) {
  std::filesystem::remove(agentInForce()->file());
  const Lines lines = agentInForce()->refusal();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines.front().substr(0, agentInForce()->file().size()), agentInForce()->file());
}

// All errors are printed, in the order of the document.
TEST_F(WrongFile, WithSeveralErrorsNamesThemAll) {
  json document = rightConfiguration();
  auto& instances = document["openconfig-network-instance:network-instances"]["network-instance"];
  auto& rules = instances[0]["policy-forwarding"]["policies"]["policy"][0]["rules"]["rule"];
  rules[0]["ipv4"]["config"]["dscp"] = 64;
  rules[0]["ipv4"]["config"]["tenant"] = 7;
  rules[1]["action"]["config"].erase("post-decap-network-instance");
  rules[4]["action"]["config"]["next-hop"] = "192.0.2.1";
  instances[1]["config"]["fallback-network-instance"] = 5;
  instances[1]["interfaces"]["interface"][0]["config"]["subinterface"] = "x";
  agentInForce()->write(document.dump());
  const std::string top = "/network-instances/network-instance";
  const std::string rule =
      top + "[name=DEFAULT]/policy-forwarding/policies/policy[policy-id=P]/rules/rule[sequence-id=";
  Lines lines = agentInForce()->refusal();
  ASSERT_EQ(lines.size(), 6U) << ::testing::PrintToString(lines);
  std::sort(lines.begin(), lines.end());
  expectLine(lines[0], rule + "10]/ipv4/config/dscp", "0 to 63");
  expectLine(lines[1], rule + "10]/ipv4/config/tenant", "");
  expectLine(lines[2], rule + "20]/action/config", "post-decap-network-instance");
  expectLine(lines[3], rule + "50]/action/config/next-hop", "");
  expectLine(lines[4], top + "[name=red]/config/fallback-network-instance", "string");
  expectLine(lines[5], top + "[name=red]/interfaces/interface[id=e2.5]/config/subinterface",
             "4294967295");
}

json configurationWithWrongRules(unsigned wrong) {
  json document = rightConfiguration();
  auto& rules = document["openconfig-network-instance:network-instances"]["network-instance"][0]
                        ["policy-forwarding"]["policies"]["policy"][0]["rules"]["rule"];
  for (unsigned number = 1; number <= wrong; ++number) {
    const unsigned sequence = 1000 + number;
    rules.push_back({{"sequence-id", sequence},
                     {"ipv4", {{"config", {{"dscp", 64}}}}},
                     {"action", {{"config", {{"discard", true}}}}}});
  }
  return document;
}

TEST_F(WrongFile, WithFiftyErrorsNamesThemAll) {
  agentInForce()->write(configurationWithWrongRules(50).dump());
  const Lines lines = agentInForce()->refusal();
  ASSERT_EQ(lines.size(), 50U);
  for (const std::string& line : lines)
    EXPECT_NE(line.find("/ipv4/config/dscp: "), std::string::npos) << line;
}

TEST_F(WrongFile, WithMoreThanFiftyErrorsNamesFiftyAndCountsTheOthers) {
  agentInForce()->write(configurationWithWrongRules(173).dump());
  const Lines lines = agentInForce()->refusal();
  ASSERT_EQ(lines.size(), 51U);
  EXPECT_NE(lines.front().find("rule[sequence-id=1001]/"), std::string::npos) << lines.front();
  EXPECT_NE(lines[49].find("rule[sequence-id=1050]/"), std::string::npos) << lines[49];
  EXPECT_NE(lines.back().find("123 more"), std::string::npos) << lines.back();
}

}  // namespace
}  // namespace ZelAgent
