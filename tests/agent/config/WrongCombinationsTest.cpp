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
    {"TypeOfAnInstanceThatIsNotTheDefaultOne",
     {{"$RED/config/type", "DEFAULT_INSTANCE"}},
     "$RED/config/type",
     "must be L3VRF; the default instance is \"DEFAULT\""},
    {"TypeOfTheDefaultInstance",
     {{"$DEFAULT/config/type", "openconfig-network-instance-types:L3VRF"}},
     "$DEFAULT/config/type",
     "must be DEFAULT_INSTANCE for the instance called \"DEFAULT\""},
    {"TypeOfTheDefaultInstanceByItsOtherName",
     {{"$DEFAULT/name", "default"}, {"$DEFAULT/config/type", "L3VRF"}},
     "$DEFAULT/config/type",
     "must be DEFAULT_INSTANCE for the instance called \"default\""},
    {"PolicyOfNoInstance",
     {{"$BINDING/config/apply-vrf-selection-policy", "Q"}},
     "$BINDING/config/apply-vrf-selection-policy",
     "must be a policy of the same network instance, not \"Q\""},
    {"PolicyOfAnotherInstance",
     {{"$RED/policy-forwarding", json::parse(R"({"interfaces": {"interface": [{"interface-id": "b2",
                       "config": {"apply-vrf-selection-policy": "P"}}]}})")}},
     "$RED/policy-forwarding/interfaces/interface/0/config/apply-vrf-selection-policy",
     "must be a policy of the same network instance, not \"P\""},
    {"DscpBesideASetWithoutIt",
     {{"$RULE10/ipv4/config/dscp", 3}},
     "$RULE10/ipv4/config/dscp",
     "must be in the dscp-set beside it, not 3"},
    {"EmptyDscpSet",
     {{"$RULE20/ipv6/config/dscp-set", json::array()}},
     "$RULE20/ipv6/config/dscp-set",
     "must not be empty"},
    {"EmptyFragmentOffsets",
     {{"$RULE40/ipv4/config/fragment-offsets", json::array()}},
     "$RULE40/ipv4/config/fragment-offsets",
     "must not be empty"},
    {"AnyFragmentBesideAnOffset",
     {{"$RULE40/ipv4/config/fragment-offsets", {0, "ANY"}}},
     "$RULE40/ipv4/config/fragment-offsets/1",
     "ANY must stand alone"},
    {"EmptyTcpFlags",
     {{"$RULE40/transport/config/explicit-tcp-flags", json::array()}},
     "$RULE40/transport/config/explicit-tcp-flags",
     "must not be empty"},
    {"FlagGivenTwice",
     {{"$RULE40/transport/config/explicit-tcp-flags",
       {"TCP_SYN", "openconfig-packet-match-types:TCP_SYN"}}},
     "$RULE40/transport/config/explicit-tcp-flags/1",
     "is given twice; each value may stand once"},
    {"FlagsOfUdp",
     {{"$RULE40/ipv4/config/protocol", 17}},
     "$RULE40/transport/config/detail-mode",
     "needs the protocol IP_TCP in the ipv4 or ipv6 of the rule, not 17"},
    {"BuiltinFlagsOfUdp",
     {{"$RULE50/transport/config/builtin-detail", "TCP_INITIAL"}},
     "$RULE50/transport/config/detail-mode",
     "needs the protocol IP_TCP in the ipv4 or ipv6 of the rule, not 17"},
    {"FragmentWithoutFamily",
     {without("$RULE50/ipv6"),
      {"$RULE50/transport/config", {{"detail-mode", "BUILTIN"}, {"builtin-detail", "FRAGMENT"}}}},
     "$RULE50/transport/config/detail-mode",
     "needs ipv4 or ipv6 in the rule"},
    {"PortOfAnotherProtocol",
     {{"$RULE10/transport", {{"config", {{"source-port", 5}}}}}},
     "$RULE10/transport/config/source-port",
     "needs the protocol IP_TCP or IP_UDP in the ipv4 or ipv6 of the rule, not 4"},
    {"PortWithoutFamily",
     {{"$RULE30/transport", {{"config", {{"destination-port", "ANY"}}}}}},
     "$RULE30/transport/config/destination-port",
     "needs the protocol IP_TCP or IP_UDP in the ipv4 or ipv6 of the rule, not any"},
    {"PortSetWithoutProtocol",
     {{"$RULE20/transport", {{"config", {{"destination-port-set", "W"}}}}}},
     "$RULE20/transport/config/destination-port-set",
     "needs the protocol IP_TCP or IP_UDP in the ipv4 or ipv6 of the rule, not 41"},
    {"PortBesideAPortSet",
     {{"$RULE40/transport/config/source-port-set", "W"}},
     "$RULE40/transport/config",
     "has both \"source-port\" and \"source-port-set\"; give one of them"},
    {"ExplicitWithoutFlags",
     {without("$RULE40/transport/config/explicit-tcp-flags")},
     "$RULE40/transport/config",
     "lacks its member \"explicit-tcp-flags\""},
    {"ExplicitWithoutMatchMode",
     {without("$RULE40/transport/config/explicit-detail-match-mode")},
     "$RULE40/transport/config",
     "lacks its member \"explicit-detail-match-mode\""},
    {"BuiltinWithoutDetail",
     {without("$RULE50/transport/config/builtin-detail")},
     "$RULE50/transport/config",
     "lacks its member \"builtin-detail\""},
    {"BuiltinDetailBesideExplicit",
     {{"$RULE40/transport/config/builtin-detail", "FRAGMENT"}},
     "$RULE40/transport/config/builtin-detail",
     "must stand beside \"detail-mode\": \"BUILTIN\""},
    {"LaterFragmentsAtTheOffsetOfTheFirst",
     {{"$RULE40/ipv4/config/fragment-offsets", {0}},
      {"$RULE40/transport/config", {{"detail-mode", "BUILTIN"}, {"builtin-detail", "FRAGMENT"}}}},
     "$RULE40/transport/config/builtin-detail",
     "must not stand beside \"fragment-offsets\" of 0 only"},
    {"FlagsBesideBuiltin",
     {{"$RULE50/transport/config/explicit-tcp-flags", {"TCP_SYN"}}},
     "$RULE50/transport/config/explicit-tcp-flags",
     "must stand beside \"detail-mode\": \"EXPLICIT\""},
    {"BuiltinDetailWithoutMode",
     {without("$RULE50/transport/config/detail-mode")},
     "$RULE50/transport/config/builtin-detail",
     "must stand beside \"detail-mode\": \"BUILTIN\""},
    {"UnknownPrefixSet",
     {{"$RULE40/ipv4/config/source-address-prefix-set", "W"}},
     "$RULE40/ipv4/config/source-address-prefix-set",
     "must be the name of an entry of ipv4-prefix-set in defined-sets, not \"W\""},
    {"PrefixSetOfTheOtherFamily",
     {without("/defined-sets/ipv6-prefix-sets"),
      without("$RULE50/ipv6/config/destination-address-prefix-set")},
     "$RULE50/ipv6/config/source-address-prefix-set",
     "must be the name of an entry of ipv6-prefix-set in defined-sets, not \"S\""},
    {"UnknownPortSet",
     {{"$RULE50/transport/config/source-port-set", "S"}},
     "$RULE50/transport/config/source-port-set",
     "must be the name of an entry of port-set in defined-sets, not \"S\""},
    {"EmptyPrefixSet",
     {{"$V4SET/config/prefix", json::array()}},
     "$V4SET/config/prefix",
     "must not be empty"},
    {"PrefixSetWithoutPrefixes",
     {without("$V6SET/config/prefix")},
     "$V6SET/config",
     "lacks its member \"prefix\""},
    {"EmptyPortSet",
     {{"$PORTSET/config/port", json::array()}},
     "$PORTSET/config/port",
     "must not be empty"},
    {"PortSetOfNothing",
     {{"$PORTSET/config/exclude-port", {"0..100"}}},
     "$PORTSET/config/exclude-port",
     "must leave a port of the set"},
    {"PrefixSetOfNothing",
     {{"$V4SET/config/exclude-prefix", {"10.128.0.0/9", "10.0.0.0/9"}}},
     "$V4SET/config/exclude-prefix",
     "must leave an address of the set"},
    {"Ipv6PrefixSetOfNothing",
     {{"$V6SET/config/exclude-prefix", {"::/0"}}},
     "$V6SET/config/exclude-prefix",
     "must leave an address of the set"},
    {"FragmentOffsetsOfIpv6",
     {{"$RULE50/ipv6/config/fragment-offsets", {1}}},
     "$RULE50/ipv6/config/fragment-offsets",
     "is not supported; supported here: destination-address, destination-address-prefix-set, dscp, "
     "dscp-set, hop-limit, length, protocol, source-address or source-address-prefix-set"},
    {"ForwardingPolicyByTheOtherLeaf",
     {{"$BINDING/config/apply-vrf-selection-policy", "F"}},
     "$BINDING/config/apply-vrf-selection-policy",
     "must be a policy of type VRF_SELECTION_POLICY, not \"F\" of type PBR_POLICY"},
    {"VrfSelectionPolicyByTheOtherLeaf",
     {{"$BINDING/config/apply-forwarding-policy", "P"}},
     "$BINDING/config/apply-forwarding-policy",
     "must be a policy of type PBR_POLICY, not \"P\" of type VRF_SELECTION_POLICY"},
    {"UnknownForwardingPolicy",
     {{"$BINDING/config/apply-forwarding-policy", "Q"}},
     "$BINDING/config/apply-forwarding-policy",
     "must be a policy of the same network instance, not \"Q\""},
    {"SecondDefaultInstance",
     {{"$DEFAULT/name", "main"},
      {"$DEFAULT/config/name", "main"},
      {"$RED/config/type", "DEFAULT_INSTANCE"}},
     "$RED/config/type",
     "must be L3VRF; the default instance is \"main\""},
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
  EXPECT_EQ(listPlaces().size(), 12U);
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
