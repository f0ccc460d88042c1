// Each leaf refuses each wrong value, with its path and with what is right.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <set>

#include "tests/agent/config/FullDocument.h"
#include "tests/agent/config/LeafTable.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

struct WrongValue {
  json value;
  std::string what;
};

bool isNumber(LeafKind kind) {
  return kind == LeafKind::number || kind == LeafKind::protocol || kind == LeafKind::port ||
         kind == LeafKind::fragment;
}

bool isText(LeafKind kind) {
  return kind != LeafKind::number && kind != LeafKind::numbers && kind != LeafKind::flag &&
         kind != LeafKind::port && kind != LeafKind::fragment;
}

std::string wordsFor(const Leaf& leaf) {
  if (leaf.kind == LeafKind::number) return "a whole number from 0 to " + std::to_string(leaf.most);
  if (leaf.kind == LeafKind::port || leaf.kind == LeafKind::fragment) {
    return "a number from 0 to " + std::to_string(leaf.most) + ", \"FIRST..LAST\" or ANY";
  }
  if (leaf.kind == LeafKind::protocol) {
    return "a number from 0 to 255 or an identity such as IP_IN_IP";
  }
  if (leaf.kind == LeafKind::numbers) return "an array";
  return leaf.kind == LeafKind::flag ? "true or false" : "a string";
}

WrongValue mustBe(const std::string& what, const json& value) {
  return {value, "must be " + what + ", not " + shownValue(value)};
}

// One value of each type that a leaf of this kind cannot have.
std::vector<WrongValue> wrongTypesOf(const Leaf& leaf) {
  std::vector<json> values{nullptr, json::object(), -1, 1.5, 1.0};
  if (!isText(leaf.kind)) values.insert(values.end(), {"", "1", "true"});
  if (!isNumber(leaf.kind)) values.insert(values.end(), {0, 1});
  if (leaf.kind != LeafKind::flag) values.insert(values.end(), {true, false});
  if (leaf.kind != LeafKind::numbers)
    values.insert(values.end(), {json::array(), json::array({1})});
  std::vector<WrongValue> wrong;
  for (const json& value : values)
    wrong.push_back(mustBe(wordsFor(leaf), value));
  return wrong;
}

std::vector<WrongValue> eachMustBe(const std::string& what, const std::vector<json>& values) {
  std::vector<WrongValue> wrong;
  for (const json& value : values)
    wrong.push_back(mustBe(what, value));
  return wrong;
}

// Values of the right type that are wrong nevertheless.
std::vector<WrongValue> wrongValuesOf(const Leaf& leaf) {
  constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
  const std::vector<json> noPrefixes{"",
                                     "10.0.0.0",
                                     "/8",
                                     "10.0.0.0/",
                                     "10.0.0/8",
                                     "10.0.0.0/33",
                                     "10.0.0.0/-1",
                                     "10.0.0.0/08",
                                     "10.0.0.0/8 ",
                                     "256.0.0.0/8",
                                     "2001:db8::/129",
                                     "nowhere"};
  switch (leaf.kind) {
    case LeafKind::name:
      return {{"", "must not be empty"},
              {std::string(101, 'n'), "must have at most 100 bytes, not 101"},
              {std::string(300, 'n'), "must have at most 100 bytes, not 300"}};
    case LeafKind::number:
      return eachMustBe(wordsFor(leaf), {leaf.most + 1, largest});
    case LeafKind::port:
    case LeafKind::fragment: {
      const std::string beyond = std::to_string(leaf.most + 1);
      auto wrong =
          eachMustBe(wordsFor(leaf), {leaf.most + 1, largest, "5", "any", "vendor:ANY", "..", "5..",
                                      "..5", "5..6..7", "5...6", " 5..6", "5..6 ", "-1..5", "5-6",
                                      "5.6", "5.." + beyond, beyond + ".." + beyond});
      wrong.push_back(mustBe("a range whose first number is not greater than its last", "5..4"));
      return wrong;
    }
    case LeafKind::protocol:
      return eachMustBe(wordsFor(leaf),
                        {256, largest, "", "4", "ip_in_ip", "IP_IN_IP ", "vendor:IP_IN_IP",
                         ":IP_IN_IP", "openconfig-a:b:IP_IN_IP", "openconfig:IP_TCP", "IP_IPV6"});
    case LeafKind::prefix:
      return eachMustBe("an IPv4 or IPv6 prefix such as \"192.0.2.0/24\"", noPrefixes);
    case LeafKind::prefixV4: {
      auto wrong = eachMustBe("an IPv4 prefix such as \"192.0.2.0/24\"", noPrefixes);
      wrong.push_back(mustBe("an IPv4 prefix such as \"192.0.2.0/24\"", "2001:db8::/32"));
      return wrong;
    }
    case LeafKind::prefixV6: {
      auto wrong = eachMustBe("an IPv6 prefix such as \"2001:db8::/32\"", noPrefixes);
      wrong.push_back(mustBe("an IPv6 prefix such as \"2001:db8::/32\"", "10.0.0.0/8"));
      return wrong;
    }
    case LeafKind::nextHop:
      return eachMustBe("an IP address or DROP", {"", "nowhere", "openconfig-a:192.0.2.1",
                                                  "192.0.2.256", "192.0.2.0/24", "2001:db8::g"});
    case LeafKind::text:
    case LeafKind::identity:
    case LeafKind::numbers:
    case LeafKind::flag:
      break;
  }
  return {};
}

std::string leafTestName(const ::testing::TestParamInfo<Leaf>& leaf) {
  std::string name = leaf.param.place;
  std::erase(name, '$');
  std::replace_if(
      name.begin(), name.end(), [](char byte) { return byte == '/' || byte == '-'; }, '_');
  return name;
}

class LeafTest : public ::testing::TestWithParam<Leaf> {
 protected:
  static void expectRefusals(const std::vector<WrongValue>& values) {
    for (const WrongValue& wrong : values) {
      const json document = fullDocumentWith({{GetParam().place, wrong.value}});
      EXPECT_EQ(refusalOf(document),
                "f.json: " + pathOf(document, GetParam().place) + ": " + wrong.what);
    }
  }
};

TEST_P(LeafTest, RefusesEachWrongType) {
  expectRefusals(wrongTypesOf(GetParam()));
}

TEST_P(LeafTest, RefusesEachWrongValue) {
  expectRefusals(wrongValuesOf(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Each, LeafTest, ::testing::ValuesIn(leafTable), leafTestName);

// A right value that no leaf of the full document has.
json anotherValueOf(const Leaf& leaf) {
  if (leaf.kind == LeafKind::number) return 11;
  return leaf.kind == LeafKind::prefix ? "198.51.100.0/24" : "another";
}

std::vector<Leaf> leavesOfRole(KeyRole role) {
  std::vector<Leaf> leaves;
  std::copy_if(std::begin(leafTable), std::end(leafTable), std::back_inserter(leaves),
               [role](const Leaf& leaf) { return leaf.role == role; });
  return leaves;
}

// ENTRY/config/KEY is the copy of ENTRY/KEY.
std::string keyOfCopy(const std::string& copy) {
  const std::string config = "/config";
  return std::string(copy).erase(copy.find(config), config.size());
}

class KeyCopyTest : public ::testing::TestWithParam<Leaf> {};

TEST_P(KeyCopyTest, ThatDiffersFromTheKeyIsRefused) {
  const std::string place = GetParam().place;
  const json document = fullDocumentWith({{place, anotherValueOf(GetParam())}});
  EXPECT_EQ(refusalOf(document),
            "f.json: " + pathOf(document, place) + ": must repeat the list key " +
                shownValue(document.at(toPointer(keyOfCopy(place)))) + ", not differ from it");
}

TEST_P(KeyCopyTest, MayBeAbsent) {
  const json document = fullDocumentWith({without(GetParam().place)});
  const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
  EXPECT_EQ(read.configuration, fullConfiguration());
  EXPECT_EQ(read.warnings, std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(Each, KeyCopyTest, ::testing::ValuesIn(leavesOfRole(KeyRole::copy)),
                         leafTestName);

class KeyTest : public ::testing::TestWithParam<Leaf> {};

TEST_P(KeyTest, ThatIsAbsentIsRefusedWithThePositionOfTheEntry) {
  const std::string place = GetParam().place;
  const std::string entry = place.substr(0, place.rfind('/'));
  const std::string key = place.substr(place.rfind('/') + 1);
  const std::string list = pointerOf(entry).substr(0, pointerOf(entry).rfind('/'));
  const std::string path =
      pathOf(fullDocument(), list) + '[' +
      std::to_string(std::stoul(pointerOf(entry).substr(list.size() + 1)) + 1) + ']';
  EXPECT_EQ(refusalOf(fullDocumentWith({without(place)})),
            "f.json: " + path + ": lacks its member \"" + key + '"');
}

INSTANTIATE_TEST_SUITE_P(Each, KeyTest, ::testing::ValuesIn(leavesOfRole(KeyRole::key)),
                         leafTestName);

TEST(LeafTable, HasEveryLeafOfTheFullDocument) {
  std::set<std::string> inTable;
  for (const Leaf& leaf : leafTable)
    inTable.insert(schemaPathOf(leaf.place));
  std::set<std::string> inDocument;
  const json document = fullDocument();
  for (const std::string& place : allPlaces()) {
    if (document.at(toPointer(place)).is_primitive()) inDocument.insert(schemaPathOf(place));
  }
  EXPECT_EQ(inTable, inDocument);
}

struct WrongIdentities {
  const char* place;
  const char* what;
  std::vector<const char*> values;
};

TEST(IdentityLeaves, RefuseEveryOtherIdentity) {
  const WrongIdentities rows[] = {
      {"$RULE40/transport/config/detail-mode",
       "must be EXPLICIT or BUILTIN",
       {"", "explicit", "EXPLICIT ", "vendor:EXPLICIT", "openconfig-a:b:BUILTIN"}},
      {"$RULE40/transport/config/explicit-detail-match-mode",
       "must be ALL or ANY",
       {"", "all", "NONE", "vendor:ALL"}},
      {"$RULE40/transport/config/explicit-tcp-flags/0",
       "must be an identity such as TCP_SYN",
       {"", "SYN", "tcp_syn", "vendor:TCP_SYN", "TCP_NS"}},
      {"$RULE50/transport/config/builtin-detail",
       "must be TCP_INITIAL, TCP_ESTABLISHED or FRAGMENT",
       {"", "fragment", "TCP_FINAL", "vendor:FRAGMENT"}},
  };
  for (const WrongIdentities& row : rows) {
    for (const char* const value : row.values) {
      const json document = fullDocumentWith({{row.place, value}});
      EXPECT_EQ(refusalOf(document), "f.json: " + pathOf(document, row.place) + ": " + row.what +
                                         ", not " + shownValue(value));
    }
  }
}

TEST(DscpSetLeaf, RefusesEachWrongElementAndEachSecondOne) {
  for (const std::string place : {"$RULE10/ipv4/config/dscp-set", "$RULE20/ipv6/config/dscp-set"}) {
    const std::string path = "f.json: " + pathOf(fullDocument(), place);
    EXPECT_EQ(refusalOf(fullDocumentWith({{place, {5, 64}}})),
              path + "[2]: must be a whole number from 0 to 63, not 64");
    EXPECT_EQ(refusalOf(fullDocumentWith({{place, {5, 6, 5}}})),
              path + "[3]: is given twice; each value may stand once");
  }
}

}  // namespace
}  // namespace ZelAgent
