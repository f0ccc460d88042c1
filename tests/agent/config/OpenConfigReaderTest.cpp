#include "agent/config/OpenConfigReader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "agent/language/Errors.h"
#include "agent/language/Limits.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

std::string example(const std::string& name) {
  return std::string(ZEL_EXAMPLES_DIR) + '/' + name;
}

std::optional<IpPrefix> prefix(const std::string& text) {
  return parseIpPrefix(text);
}

// One instance of every row that is read.
constexpr const char* everyRow = R"({
  "openconfig-network-instance:network-instances": {"network-instance": [
    {"name": "DEFAULT", "config": {"name": "DEFAULT", "type": "DEFAULT_INSTANCE"},
     "openconfig-network-instance:policy-forwarding": {
       "policies": {"policy": [{
         "policy-id": "P", "config": {"policy-id": "P", "type": "openconfig-policy-forwarding:VRF_SELECTION_POLICY"},
         "rules": {"rule": [
           {"sequence-id": 20, "config": {"sequence-id": 20},
            "ipv6": {"config": {"protocol": 59, "source-address": "2001:db8::/32", "dscp-set": [1, 2]}},
            "action": {"config": {"network-instance": "DEFAULT"}}},
           {"sequence-id": 10, "config": {"sequence-id": 10},
            "ipv4": {"config": {"protocol": "openconfig-packet-match-types:IP_IN_IP", "dscp": 63, "dscp-set": [63],
                                "source-address": "10.1.2.3/8", "destination-address": "192.0.2.1/32"}},
            "action": {"config": {"decap-network-instance": "red",
                                  "decap-fallback-network-instance": "blue",
                                  "post-decap-network-instance": "DEFAULT"}}},
           {"sequence-id": 4294967295, "action": {"config": {"discard": true}}},
           {"sequence-id": 0, "action": {"config": {"discard": false}}},
           {"sequence-id": 30, "ipv4": {}}
         ]}}]},
       "interfaces": {"interface": [
         {"interface-id": "Ethernet1", "config": {"interface-id": "Ethernet1", "apply-vrf-selection-policy": "P"}},
         {"interface-id": "uplink", "config": {"interface-id": "uplink", "apply-vrf-selection-policy": "P"},
          "interface-ref": {"config": {"interface": "Ethernet2", "subinterface": 7}}},
         {"interface-id": "Ethernet3", "config": {"interface-id": "Ethernet3"},
          "interface-ref": {"config": {"interface": "Ethernet3", "subinterface": 0}}}]}}},
    {"name": "red", "config": {"name": "red", "type": "openconfig-network-instance-types:L3VRF",
                               "fallback-network-instance": "blue"},
     "interfaces": {"interface": [
       {"id": "Ethernet4", "config": {"id": "Ethernet4"}},
       {"id": "x", "config": {"id": "x", "interface": "Ethernet5", "subinterface": 100}}]},
     "protocols": {"protocol": [
       {"identifier": "openconfig-policy-types:STATIC", "name": "s",
        "config": {"identifier": "STATIC", "name": "s"},
        "static-routes": {"static": [
          {"prefix": "192.0.2.0/24", "config": {"prefix": "192.0.2.0/24"},
           "next-hops": {"next-hop": [
             {"index": "a", "config": {"index": "a", "next-hop": "198.51.100.1"},
              "interface-ref": {"config": {"interface": "Ethernet6", "subinterface": 2}}},
             {"index": "b", "config": {"index": "b", "next-hop": "2001:db8::1"}}]}},
          {"prefix": "2001:db8::/32", "next-hops": {"next-hop": [
             {"index": "0", "config": {"next-hop": "openconfig-local-routing:DROP"}}]}},
          {"prefix": "0.0.0.0/0", "next-hops": {"next-hop": [
             {"index": "0", "interface-ref": {"config": {"interface": "Ethernet7"}}}]}}]}}]}},
    {"name": "blue", "config": {"name": "blue", "type": "L3VRF"}}
  ]}})";

TEST(OpenConfigReader, ReadsEveryRow) {
  const ReadConfiguration read = readOpenConfig(everyRow, "f.json");
  EXPECT_EQ(read.warnings, std::vector<std::string>{});

  NetworkInstance byDefault;
  byDefault.name = "default";
  byDefault.type = InstanceType::defaultInstance;
  RuleMatch tunnel;
  tunnel.family = IpFamily::v4;
  tunnel.protocol = std::uint8_t{4};
  tunnel.dscp = std::uint8_t{63};
  tunnel.dscpSet = {63};
  tunnel.source = prefix("10.0.0.0/8");
  tunnel.destination = prefix("192.0.2.1/32");
  RuleMatch ipv6;
  ipv6.family = IpFamily::v6;
  ipv6.protocol = std::uint8_t{59};
  ipv6.dscpSet = {1, 2};
  ipv6.source = prefix("2001:db8::/32");
  RuleMatch anyIpv4;
  anyIpv4.family = IpFamily::v4;
  byDefault.policies = {{"P",
                         {{0, {}, NoAction{}},
                          {10, tunnel, Decapsulate{"red", "blue", "default"}},
                          {20, ipv6, LookUp{"default"}},
                          {30, anyIpv4, NoAction{}},
                          {4294967295, {}, Discard{}}}}};
  byDefault.policyBindings = {{"Ethernet1", "P"}, {"Ethernet2.7", "P"}, {"Ethernet3", ""}};

  NetworkInstance red;
  red.name = "red";
  red.fallback = "blue";
  red.interfaces = {"Ethernet4", "Ethernet5.100"};
  red.staticRoutes = {{*prefix("192.0.2.0/24"),
                       {{"a", parseIpAddress("198.51.100.1"), "Ethernet6.2", false},
                        {"b", parseIpAddress("2001:db8::1"), "", false}}},
                      {*prefix("2001:db8::/32"), {{"0", std::nullopt, "", true}}},
                      {*prefix("0.0.0.0/0"), {{"0", std::nullopt, "Ethernet7", false}}}};

  NetworkInstance blue;
  blue.name = "blue";

  EXPECT_EQ(read.configuration, (Configuration{{byDefault, red, blue}}));
}

std::string with(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

TEST(OpenConfigReader, TheDefaultInstanceHasTwoNames) {
  const ReadConfiguration read =
      readOpenConfig(with(everyRow, R"("DEFAULT")", R"("default")"), "f.json");
  EXPECT_EQ(read.configuration, readOpenConfig(everyRow, "f.json").configuration);
  EXPECT_EQ(read.warnings, std::vector<std::string>{});
}

TEST(OpenConfigReader, AReferenceMayUseTheOtherNameOfTheDefaultInstance) {
  const std::string reference = R"("network-instance": ")";
  const ReadConfiguration read = readOpenConfig(
      with(everyRow, reference + R"(DEFAULT")", reference + R"(default")"), "f.json");
  EXPECT_EQ(read.configuration, readOpenConfig(everyRow, "f.json").configuration);
  EXPECT_EQ(read.warnings, std::vector<std::string>{});
}

TEST(OpenConfigReader, WarnsOnceOfEachUnknownMember) {
  auto document = nlohmann::json::parse(everyRow);
  auto& instances = document["openconfig-network-instance:network-instances"]["network-instance"];
  instances[2]["config"]["mtu"] = 1500;
  instances[2]["vendor:name"] = {{"deep", {{"deeper", 1}}}};
  document["openconfig-system:system"] = nlohmann::json::object();
  const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
  EXPECT_EQ(read.warnings,
            (std::vector<std::string>{
                "f.json: /network-instances/network-instance[name=blue]/config/mtu: unknown "
                "member, ignored",
                "f.json: /network-instances/network-instance[name=blue]/vendor:name: unknown "
                "member, ignored",
                "f.json: /openconfig-system:system: unknown member, ignored"}));
  EXPECT_EQ(read.configuration, readOpenConfig(everyRow, "f.json").configuration);
}

TEST(OpenConfigReader, SkipsTheInterfacesAtTheTopSilently) {
  auto document = nlohmann::json::parse(everyRow);
  document["openconfig-interfaces:interfaces"] = {{"interface", 5}};
  const ReadConfiguration read = readOpenConfig(document.dump(), "f.json");
  EXPECT_EQ(read.warnings, std::vector<std::string>{});
  EXPECT_EQ(read.configuration, readOpenConfig(everyRow, "f.json").configuration);
}

TEST(OpenConfigReader, WarnsOfProtocolsThatAreNotStatic) {
  auto document = nlohmann::json::parse(everyRow);
  document["openconfig-network-instance:network-instances"]["network-instance"][2]["protocols"] =
      nlohmann::json::parse(R"({"protocol": [{"identifier": "BGP", "name": "b"}]})");
  EXPECT_EQ(readOpenConfig(document.dump(), "f.json").warnings,
            std::vector<std::string>{
                "f.json: /network-instances/network-instance[name=blue]/protocols/"
                "protocol[identifier=BGP][name=b]: only protocols with the identifier STATIC are "
                "read, ignored"});
}

TEST(OpenConfigReader, WarnsOfEachReferenceToAnInstanceThatIsNotConfigured) {
  auto document = nlohmann::json::parse(everyRow);
  document["openconfig-network-instance:network-instances"]["network-instance"].erase(2);
  EXPECT_EQ(
      readOpenConfig(document.dump(), "f.json").warnings,
      (std::vector<std::string>{
          "f.json: /network-instances/network-instance[name=DEFAULT]/policy-forwarding/policies/"
          "policy[policy-id=P]/rules/rule[sequence-id=10]/action/config/"
          "decap-fallback-network-instance: names network instance \"blue\", which is not "
          "configured",
          "f.json: /network-instances/network-instance[name=red]/config/"
          "fallback-network-instance: names network instance \"blue\", which is not "
          "configured"}));
}

TEST(OpenConfigReader, TakesANameOfExactlyHundredBytes) {
  auto document = nlohmann::json::parse(everyRow);
  auto& instance = document["openconfig-network-instance:network-instances"]["network-instance"][2];
  const std::string name(100, 'n');
  instance["name"] = instance["config"]["name"] = name;
  EXPECT_EQ(readOpenConfig(document.dump(), "f").configuration.networkInstances[2].name, name);
}

TEST(OpenConfigReader, PoliciesOfDifferentInstancesMayShareAnId) {
  auto document = nlohmann::json::parse(everyRow);
  auto& instances = document["openconfig-network-instance:network-instances"]["network-instance"];
  instances[1]["policy-forwarding"]["policies"] =
      instances[0]["openconfig-network-instance:policy-forwarding"]["policies"];
  const auto read = readOpenConfig(document.dump(), "f").configuration;
  EXPECT_EQ(read.networkInstances[1].policies, read.networkInstances[0].policies);
}

TEST(OpenConfigReader, ExamplesAreRightAndWithoutWarnings) {
  for (const char* const name : {"four-rules.json", "four-rules-changed.json", "decap.json"}) {
    const ReadConfiguration read = readOpenConfigFile(example(name));
    EXPECT_EQ(read.warnings, std::vector<std::string>{}) << name;
    EXPECT_GE(read.configuration.networkInstances.size(), 3U) << name;
  }
}

// The system has Ethernet1, Ethernet2 and Ethernet2.7. Two entries are not enabled.
constexpr const char* namedInterfaces = R"({
  "openconfig-interfaces:interfaces": {"interface": [
    {"name": "Ethernet1"}, {"name": ""}, {"name": 7}, {},
    {"name": "Ethernet2", "config": {"enabled": true}, "subinterfaces": {"subinterface": [
      {"index": 0}, {"index": 7}, {"index": "8"}, {}]}}]},
  "network-instances": {"network-instance": [
    {"name": "DEFAULT", "policy-forwarding": {
      "policies": {"policy": [{"policy-id": "P", "config": {"type": "VRF_SELECTION_POLICY"}}]},
      "interfaces": {"interface": [{"interface-id": "Ethernet3", "config":
        {"enabled": false, "apply-vrf-selection-policy": "P"}}]}}},
    {"name": "red", "config": {"type": "L3VRF"}, "interfaces": {"interface": [
      {"id": "Ethernet1", "config": {"id": "Ethernet1"}},
      {"id": "x", "config": {"enabled": false, "interface": "Ethernet4", "subinterface": 2}}]}}]}})";

TEST(OpenConfigReader, KeepsTheNamesOfInterfacesThatAreNotUsed) {
  const Configuration read = readOpenConfig(namedInterfaces, "f.json").configuration;
  EXPECT_EQ(read.otherInterfaces, (std::set<std::string>{"Ethernet1", "Ethernet2", "Ethernet2.7",
                                                         "Ethernet3", "Ethernet4.2"}));
  ASSERT_EQ(read.networkInstances.size(), 2U);
  EXPECT_EQ(read.networkInstances[0].policyBindings.size(), 0U);
  EXPECT_EQ(read.networkInstances[1].interfaces, std::vector<std::string>{"Ethernet1"});
}

TEST(OpenConfigReader, LeavesOutAnInterfaceOfTheSystemWhoseNameIsTooLong) {
  const std::string longest(Limits::nameBytes, 'e');
  const auto namesOf = [](const std::string& name) {
    return readOpenConfig(
               with(namedInterfaces, R"({"name": "Ethernet1"})", R"({"name": ")" + name + R"("})"),
               "f.json")
        .configuration.otherInterfaces;
  };
  EXPECT_TRUE(namesOf(longest).contains(longest));
  EXPECT_FALSE(namesOf(longest + 'e').contains(longest + 'e'));
}

// A clock that advances by an hour each time it is read.
class HourClock final {
 public:
  Progress::Time operator()() { return now_ += std::chrono::hours(1); }

 private:
  Progress::Time now_;
};

// A document with a policy of so many rules.
std::string textWithRules(std::size_t rules) {
  nlohmann::json list = nlohmann::json::array();
  for (std::size_t number = 1; number <= rules; ++number)
    list.push_back({{"sequence-id", number}});
  nlohmann::json policy{{"policy-id", "P"}, {"config", {{"type", "VRF_SELECTION_POLICY"}}}};
  policy["rules"]["rule"] = std::move(list);
  nlohmann::json instance{{"name", "DEFAULT"}};
  instance["policy-forwarding"]["policies"]["policy"] = nlohmann::json::array({policy});
  nlohmann::json document;
  document["network-instances"]["network-instance"] = nlohmann::json::array({instance});
  return document.dump();
}

std::string fileWith(const std::string& text) {
  std::string file = TestFiles::processFolder() / "progress.json";
  std::ofstream(file) << text;
  return file;
}

TEST(OpenConfigReader, ShowsHowManyRulesItHasReadAndErasesItAtTheEnd) {
  const std::string file = fileWith(textWithRules(Progress::stepsOfALook));
  std::string shown;
  Progress progress([&shown](std::string_view text) { shown += text; }, HourClock());
  (void)readOpenConfigFile(file, Leniency::strict, progress);
  const std::string erase = "\r\x1b[K";
  EXPECT_TRUE(shown.starts_with(erase + "reading " + file + erase)) << shown;
  EXPECT_NE(shown.find(erase + "reading " + file + ": "), std::string::npos) << shown;
  EXPECT_TRUE(shown.ends_with(" rules" + erase)) << shown;
}

TEST(OpenConfigReader, ErasesTheProgressBeforeAnErrorIsPrinted) {
  const std::string file = fileWith(textWithRules(Progress::stepsOfALook) + "x");
  std::string shown;
  Progress progress([&shown](std::string_view text) { shown += text; }, HourClock());
  EXPECT_THROW((void)readOpenConfigFile(file, Leniency::strict, progress), ConfigError);
  EXPECT_TRUE(shown.ends_with("reading " + file + "\r\x1b[K")) << shown;
}

}  // namespace
}  // namespace ZelAgent
