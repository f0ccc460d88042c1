// The page that documents the configuration has the rows of the path table, and no others.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "agent/config/PathTable.h"
#include "tests/agent/config/FullDocument.h"

namespace ZelAgent {
namespace {

using Texts = std::vector<std::string>;

// What the line has between backticks.
Texts codeIn(const std::string& line) {
  Texts code;
  std::istringstream stream(line);
  bool isCode = false;
  for (std::string part; std::getline(stream, part, '`'); isCode = !isCode) {
    if (isCode) code.push_back(part);
  }
  return code;
}

// The rows of the tables of paths, each with its whole path.
Texts rowsOfThePage() {
  Texts rows;
  std::string container;
  std::ifstream file(ZEL_CONFIGURATION_PAGE);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("Leaves of `")) container = codeIn(line).at(0);
    const bool isOtherTable = line.starts_with("| M") || line.starts_with("| What");
    if (line.starts_with("#") || isOtherTable) container.clear();
    if (!container.empty() && line.starts_with("| `")) {
      rows.push_back(line.replace(3, 0, container + '/'));
    }
  }
  return rows;
}

std::string presenceText(Presence presence) {
  if (presence == Presence::keyCopy) return ", as the key";
  if (presence == Presence::required) return ", required";
  return presence == Presence::skipped ? ", skipped" : "";
}

Texts rowsOfTheTable() {
  Texts rows;
  for (const ConfigPath& path : configPaths()) {
    rows.push_back("| `" + path.path + "` | " + std::string(toText(path.type)) +
                   presenceText(path.presence) + " | `" + std::string(path.example) + "` | " +
                   std::string(path.meaning) + " |");
  }
  return rows;
}

TEST(ConfigurationPage, HasTheRowsOfThePathTable) {
  EXPECT_THAT(rowsOfThePage(), ::testing::ElementsAreArray(rowsOfTheTable()));
}

struct ProtocolIdentity {
  const char* name;
  std::uint8_t number;
};

// By the registry of protocol numbers.
constexpr ProtocolIdentity protocolsOfRules[] = {
    {"IP_ICMP", 1},  {"IP_IGMP", 2}, {"IP_IN_IP", 4}, {"IP_TCP", 6},   {"IP_UDP", 17},
    {"IP_RSVP", 46}, {"IP_GRE", 47}, {"IP_AUTH", 51}, {"IP_PIM", 103}, {"IP_L2TP", 115},
};

TEST(ConfigurationPage, NamesEachIdentityOfAProtocol) {
  Texts names;
  std::ifstream file(ZEL_CONFIGURATION_PAGE);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("Identities of `protocol`")) names = codeIn(line);
  }
  Texts expected{"protocol"};
  for (const ProtocolIdentity& identity : protocolsOfRules)
    expected.emplace_back(identity.name);
  EXPECT_EQ(names, expected);
}

TEST(ProtocolIdentities, AreNumbersWithAndWithoutTheirPrefix) {
  for (const ProtocolIdentity& identity : protocolsOfRules) {
    for (const std::string prefix : {"", "openconfig-packet-match-types:", "openconfig-any:"}) {
      Configuration expected = fullConfiguration();
      auto& rules = expected.networkInstances[0].policies[0].rules;
      rules[0].match.protocol = identity.number;
      rules[1].match.protocol = identity.number;
      const auto read = readOpenConfig(
          fullDocumentWith({{"$RULE10/ipv4/config/protocol", prefix + identity.name},
                            {"$RULE20/ipv6/config/protocol", prefix + identity.name}})
              .dump(),
          "f.json");
      EXPECT_TRUE(read.configuration == expected) << prefix << identity.name;
    }
  }
}

}  // namespace
}  // namespace ZelAgent
