// Leaves that exclude each other, leaves that need another, and entries that are given twice.
#include <gtest/gtest.h>

#include <array>

#include "tests/agent/config/FullDocument.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

struct WrongCombination {
  const char* name;
  std::vector<Change> changes;
  const char* place;  // which the message names
  const char* what;

  friend std::ostream& operator<<(std::ostream& stream, const WrongCombination& wrong) {
    return stream << wrong.name;
  }
};

constexpr const char* bothKinds =
    "has both \"network-instance\" and a decapsulation; give one of them";
constexpr const char* bothDiscardAndInstance =
    "has both \"discard\" and a network instance; give one of them";
constexpr const char* bothFamilies = "has both \"ipv4\" and \"ipv6\"; give at most one of them";
constexpr const char* noInterface = "must stand beside \"interface\"";

const WrongCombination wrongCombinations[] = {
    {"Ipv6BesideIpv4", {{"$RULE10/ipv6", json::object()}}, "$RULE10", bothFamilies},
    {"Ipv4BesideIpv6", {{"$RULE20/ipv4", json::object()}}, "$RULE20", bothFamilies},
    {"DecapBesideLookUp",
     {{"$RULE10/action/config/decap-network-instance", "red"}},
     "$RULE10/action/config",
     bothKinds},
    {"DecapFallbackBesideLookUp",
     {{"$RULE10/action/config/decap-fallback-network-instance", "red"}},
     "$RULE10/action/config",
     bothKinds},
    {"PostDecapBesideLookUp",
     {{"$RULE10/action/config/post-decap-network-instance", "red"}},
     "$RULE10/action/config",
     bothKinds},
    {"LookUpBesideDecap",
     {{"$RULE20/action/config/network-instance", "red"}},
     "$RULE20/action/config",
     bothKinds},
    {"DiscardBesideLookUp",
     {{"$RULE10/action/config/discard", true}},
     "$RULE10/action/config",
     bothDiscardAndInstance},
    {"LookUpBesideDiscard",
     {{"$RULE30/action/config/network-instance", "red"}},
     "$RULE30/action/config",
     bothDiscardAndInstance},
    {"DecapBesideDiscard",
     {{"$RULE30/action/config/decap-network-instance", "red"}},
     "$RULE30/action/config",
     bothDiscardAndInstance},
    {"DecapFallbackBesideDiscard",
     {{"$RULE30/action/config/decap-fallback-network-instance", "red"}},
     "$RULE30/action/config",
     bothDiscardAndInstance},
    {"PostDecapBesideDiscard",
     {{"$RULE30/action/config/post-decap-network-instance", "red"}},
     "$RULE30/action/config",
     bothDiscardAndInstance},
    {"DiscardBesideDecap",
     {{"$RULE20/action/config/discard", true}},
     "$RULE20/action/config",
     bothDiscardAndInstance},
    {"DecapAlone",
     {{"$RULE20/action/config", {{"decap-network-instance", "red"}}}},
     "$RULE20/action/config",
     "lacks its member \"decap-fallback-network-instance\""},
    {"DecapFallbackAlone",
     {{"$RULE20/action/config", {{"decap-fallback-network-instance", "red"}}}},
     "$RULE20/action/config",
     "lacks its member \"decap-network-instance\""},
    {"PostDecapAlone",
     {{"$RULE20/action/config", {{"post-decap-network-instance", "red"}}}},
     "$RULE20/action/config",
     "lacks its member \"decap-network-instance\""},
    {"DecapWithoutPostDecap",
     {without("$RULE20/action/config/post-decap-network-instance")},
     "$RULE20/action/config",
     "lacks its member \"post-decap-network-instance\""},
    {"DropBesideAnInterface",
     {{"$HOP/config/next-hop", "DROP"}},
     "$HOP/interface-ref",
     "must be absent where the next hop is DROP"},
    {"NeitherNextHopNorInterface",
     {without("$HOP/config"), without("$HOP/interface-ref")},
     "$HOP",
     "must have a \"next-hop\" in its config, or an \"interface-ref\""},
    {"EmptyInterfaceRefAlone",
     {without("$HOP/config/next-hop"), {"$HOP/interface-ref", json::object()}},
     "$HOP",
     "must have a \"next-hop\" in its config, or an \"interface-ref\""},
    {"NoNextHops", {without("$ROUTE/next-hops")}, "$ROUTE", "must have at least one next-hop"},
    {"EmptyListOfNextHops",
     {{"$ROUTE/next-hops/next-hop", json::array()}},
     "$ROUTE",
     "must have at least one next-hop"},
    {"SubinterfaceOfAnInstanceWithoutInterface",
     {without("$INTERFACE/config/interface")},
     "$INTERFACE/config/subinterface",
     noInterface},
    {"Subinterface0WithoutInterface",
     {without("$INTERFACE/config/interface"), {"$INTERFACE/config/subinterface", 0}},
     "$INTERFACE/config/subinterface",
     noInterface},
    {"SubinterfaceOfANextHopWithoutInterface",
     {without("$HOP/interface-ref/config/interface")},
     "$HOP/interface-ref/config/subinterface",
     noInterface},
    {"SubinterfaceOfABindingWithoutInterface",
     {without("$BINDING/interface-ref/config/interface")},
     "$BINDING/interface-ref/config/subinterface",
     noInterface},
    {"NoTypeOfAnInstance",
     {without("$RED/config/type")},
     "$RED/config",
     "lacks its member \"type\""},
    {"NoTypeOfAPolicy",
     {without("$POLICY/config/type")},
     "$POLICY/config",
     "lacks its member \"type\""},
    {"TypeOfAnInstanceThatIsNotTheDefaultOne",
     {{"$RED/config/type", "DEFAULT_INSTANCE"}},
     "$RED/config/type",
     "must be L3VRF; the default instance is the one called DEFAULT or default"},
    {"TypeOfTheDefaultInstance",
     {{"$DEFAULT/config/type", "openconfig-network-instance-types:L3VRF"}},
     "$DEFAULT/config/type",
     "must be DEFAULT_INSTANCE for the instance called \"DEFAULT\""},
    {"TypeOfTheDefaultInstanceByItsOtherName",
     {{"$DEFAULT/name", "default"}, {"$DEFAULT/config/type", "L3VRF"}},
     "$DEFAULT/config/type",
     "must be DEFAULT_INSTANCE for the instance called \"default\""},
    {"NoInstanceAtAll",
     {{"/network-instances", json::object()}},
     "/network-instances",
     "must have exactly one instance of type DEFAULT_INSTANCE, called DEFAULT or default"},
    {"PolicyOfNoInstance",
     {{"$BINDING/config/apply-vrf-selection-policy", "Q"}},
     "$BINDING/config/apply-vrf-selection-policy",
     "must be a policy of the same network instance, not \"Q\""},
    {"PolicyOfAnotherInstance",
     {{"$RED/policy-forwarding", json::parse(R"({"interfaces": {"interface": [{"interface-id": "b2",
                       "config": {"apply-vrf-selection-policy": "P"}}]}})")}},
     "$RED/policy-forwarding/interfaces/interface/0/config/apply-vrf-selection-policy",
     "must be a policy of the same network instance, not \"P\""},
    {"RouteOfTwoProtocols",
     {{"$RED/protocols/protocol/1",
       json::parse(R"({"identifier": "STATIC", "name": "t", "static-routes": {"static": [
                       {"prefix": "203.0.113.9/24", "next-hops": {"next-hop": [
                         {"index": "0", "config": {"next-hop": "DROP"}}]}}]}})")}},
     "$RED/protocols/protocol/1/static-routes/static/0",
     "is given twice; each key may stand once in its list"},
};

class WrongCombinationTest : public ::testing::TestWithParam<WrongCombination> {};

TEST_P(WrongCombinationTest, IsRefusedWithItsPath) {
  const WrongCombination& wrong = GetParam();
  const json document = fullDocumentWith(wrong.changes);
  const bool isMember = document.contains(toPointer(wrong.place));
  ASSERT_TRUE(isMember);
  EXPECT_EQ(refusalOf(document), "f.json: " + pathOf(document, wrong.place) + ": " + wrong.what);
}

INSTANTIATE_TEST_SUITE_P(Each, WrongCombinationTest, ::testing::ValuesIn(wrongCombinations),
                         [](const auto& row) { return std::string(row.param.name); });

// The lists of the full document, which are the arrays of objects.
std::vector<std::string> listPlaces() {
  std::vector<std::string> lists;
  const json document = fullDocument();
  for (const std::string& place : allPlaces()) {
    const json& value = document.at(toPointer(place));
    if (value.is_array() && value[0].is_object()) lists.push_back(place);
  }
  return lists;
}

// The entry without what would be refused before its key.
json bareEntry(json entry) {
  for (const char* const container : {"interfaces", "protocols"})
    entry.erase(container);
  return entry;
}

TEST(Lists, AreThoseOfTheModel) {
  EXPECT_EQ(listPlaces().size(), 8U);
}

TEST(Lists, RefuseAnEntryThatIsGivenTwice) {
  for (const std::string& list : listPlaces()) {
    json document = fullDocument();
    json& entries = document[toPointer(list)];
    entries.push_back(bareEntry(entries.back()));
    const std::string entry = list + '/' + std::to_string(entries.size() - 1);
    EXPECT_EQ(refusalOf(document), "f.json: " + pathOf(document, entry) +
                                       ": is given twice; each key may stand once in its list");
  }
}

TEST(Lists, RefuseAKeyThatIsGivenTwiceInOtherWords) {
  struct OtherWords {
    const char* key;
    json value;
  };
  const OtherWords rows[] = {{"$DEFAULT/name", "default"},
                             {"$PROTOCOL/identifier", "openconfig-policy-types:STATIC"},
                             {"$ROUTE/prefix", "203.0.113.77/24"}};
  for (const OtherWords& row : rows) {
    json document = fullDocument();
    const auto key = toPointer(row.key);
    json entry = document[key.parent_pointer()];
    entry.erase("policy-forwarding");
    entry.erase("static-routes");
    entry[key.back()] = row.value;
    json& entries = document[key.parent_pointer().parent_pointer()];
    entries.push_back(std::move(entry));
    const std::string second = key.parent_pointer().parent_pointer().to_string() + '/' +
                               std::to_string(entries.size() - 1);
    EXPECT_EQ(refusalOf(document), "f.json: " + pathOf(document, second) +
                                       ": is given twice; each key may stand once in its list");
  }
}

struct BoundTwice {
  const char* list;
  json entry;
  const char* owner;
  const char* interface;
};

TEST(Interfaces, AreBoundOnceByWhateverName) {
  const BoundTwice rows[] = {
      {"$RED/interfaces/interface", {{"id", "e2.2"}}, "$INTERFACE", "e2.2"},
      {"$RED/interfaces/interface",
       {{"id", "x"}, {"config", {{"interface", "e2.2"}, {"subinterface", 0}}}},
       "$INTERFACE",
       "e2.2"},
      {"$DEFAULT/policy-forwarding/interfaces/interface",
       {{"interface-id", "e1.1"}},
       "$BINDING",
       "e1.1"},
      {"$DEFAULT/policy-forwarding/interfaces/interface",
       {{"interface-id", "x"},
        {"interface-ref", {{"config", {{"interface", "e1"}, {"subinterface", 1}}}}}},
       "$BINDING",
       "e1.1"},
      {"$RED/policy-forwarding/interfaces/interface",
       {{"interface-id", "e1.1"}},
       "$BINDING",
       "e1.1"},
  };
  for (const BoundTwice& row : rows) {
    json document = fullDocument();
    json& list = document[toPointer(row.list)];
    list.push_back(row.entry);
    const std::string entry = std::string(row.list) + '/' + std::to_string(list.size() - 1);
    EXPECT_EQ(refusalOf(document), "f.json: " + pathOf(document, entry) + ": binds interface \"" +
                                       row.interface + "\" again, which " +
                                       pathOf(document, row.owner) + " does; bind it once");
  }
}

}  // namespace
}  // namespace ZelAgent
