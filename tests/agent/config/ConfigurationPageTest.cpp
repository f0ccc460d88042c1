// The page that documents the configuration lists the leaves and identities that are read.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "tests/agent/config/FullDocument.h"
#include "tests/agent/config/LeafTable.h"

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

// "a/{b,c}" is "a/b" and "a/c".
Texts alternativesOf(const std::string& path) {
  const auto open = path.find('{');
  if (open == std::string::npos) return {path};
  Texts paths;
  std::istringstream names(path.substr(open + 1, path.find('}') - open - 1));
  for (std::string name; std::getline(names, name, ',');)
    paths.push_back(path.substr(0, open) + name);
  return paths;
}

// "a/list[key]/b" names the leaf "a/list/key" and, if it is one, "a/list/b".
Texts leavesNamedBy(std::string path) {
  Texts leaves;
  for (auto open = path.find('['); open != std::string::npos; open = path.find('[')) {
    const auto close = path.find(']');
    leaves.push_back(path.substr(0, open) + '/' + path.substr(open + 1, close - open - 1));
    path.erase(open, close - open + 1);
    while (path.substr(open, 1) == "[") {
      const auto next = path.find(']');
      leaves.push_back(path.substr(0, open) + '/' + path.substr(open + 1, next - open - 1));
      path.erase(open, next - open + 1);
    }
    if (open == path.size()) return leaves;
  }
  leaves.push_back(path);
  return leaves;
}

struct Page {
  std::set<std::string> leaves;                 // paths, each without its beginning
  std::map<std::string, Texts> valuesOfFields;  // by the first name in the row
};

Page readPage() {
  Page page;
  Texts bases;
  std::ifstream file(ZEL_CONFIGURATION_PAGE);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("Paths are relative to") || line.find(" of a rule, in `") < line.size()) {
      bases = codeIn(line);
      for (const std::string& base : bases) {
        for (const std::string& leaf : leavesNamedBy(base))
          if (leaf != base) page.leaves.insert('/' + leaf);
      }
    }
    const auto secondCell = line.find('|', 1);
    if (!line.starts_with("| `")) continue;
    const Texts cell = codeIn(line.substr(0, secondCell));
    page.valuesOfFields[cell.front()] = codeIn(line.substr(secondCell));
    for (const std::string& base : bases) {
      for (const std::string& code : cell) {
        for (const std::string& path : alternativesOf(base + '/' + code))
          for (const std::string& leaf : leavesNamedBy(path))
            page.leaves.insert('/' + leaf);
      }
    }
  }
  return page;
}

class ConfigurationPage : public ::testing::Test {
 protected:
  const Page page_ = readPage();
};

TEST_F(ConfigurationPage, NamesEachLeafThatIsNoCopyOfAKey) {
  for (const Leaf& leaf : leafTable) {
    if (leaf.role == KeyRole::copy) continue;
    const std::string path = schemaPathOf(leaf.place);
    EXPECT_TRUE(
        std::any_of(page_.leaves.begin(), page_.leaves.end(),
                    [&](const std::string& documented) { return path.ends_with(documented); }))
        << path;
  }
}

TEST_F(ConfigurationPage, NamesNoOtherLeaf) {
  ASSERT_FALSE(page_.leaves.empty());
  for (const std::string& documented : page_.leaves) {
    EXPECT_TRUE(std::any_of(std::begin(leafTable), std::end(leafTable), [&](const Leaf& leaf) {
      return schemaPathOf(leaf.place).ends_with(documented);
    })) << documented;
  }
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

TEST_F(ConfigurationPage, NamesEachIdentityOfAProtocol) {
  Texts names;
  for (const ProtocolIdentity& identity : protocolsOfRules)
    names.emplace_back(identity.name);
  EXPECT_EQ(page_.valuesOfFields.at("protocol"), names);
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
