// Each kind of step of a path with each of its values, as the line of text and as JSON.
#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>

#include "agent/config/IpPrefix.h"
#include "agent/reports/PathReport.h"

namespace ZelAgent {
namespace {

using Chips::DropReason;
using Chips::GoOnReason;
using Chips::OwnVrfReason;
using Chips::PacketHeader;
using Chips::Route;
using Chips::RuleField;

// The only step of the report.
void expectStep(const PathReport& path, const std::string& line, const std::string& step) {
  EXPECT_EQ(path.text(), line + '\n');
  EXPECT_EQ(path.json().dump(), '[' + step + ']');
}

PathReport emptyPath() {
  return PathReport({});
}

struct DropRow {
  DropReason reason;
  const char* name;
  const char* text;
};

constexpr std::array<DropRow, Chips::dropReasons> dropRows{{
    {DropReason::malformed, "malformed", "the IP header is malformed"},
    {DropReason::badChecksum, "badChecksum", "the checksum of the IPv4 header is wrong"},
    {DropReason::discardedByRule, "discardedByRule", "the rule discards it"},
    {DropReason::intfClosed, "intfClosed",
     "the rules of the policy do not fit the chip, so the interface is closed"},
    {DropReason::noVrfResource, "noVrfResource",
     "the action of the rule has no resource on the chip"},
    {DropReason::noVrfId, "noVrfId", "no VRF that it was to be looked up in has a hardware id"},
    {DropReason::noRoute, "noRoute", "no VRF that it was looked up in has a route"},
    {DropReason::dropRoute, "dropRoute", "the route drops it"},
    {DropReason::decapDisabled, "decapDisabled", "the route decapsulates, which is not enabled"},
    {DropReason::notATunnel, "notATunnel",
     "the route decapsulates, and the packet is not IP in IPv4"},
    {DropReason::fragmentedTunnel, "fragmentedTunnel",
     "the route decapsulates, and the packet is a fragment"},
    {DropReason::innerMalformed, "innerMalformed", "the packet inside the tunnel is malformed"},
    {DropReason::congestion, "congestion",
     "the tunnel met congestion, and the packet inside cannot carry the mark"},
    {DropReason::nestedDecap, "nestedDecap",
     "a second route decapsulates; only one tunnel is taken off"},
    {DropReason::ttlExpired, "ttlExpired", "its time to live is over"},
}};

TEST(PathSteps, ADropHasItsReasonAndTheTextOfTheReason) {
  for (std::size_t reason = 0; reason < Chips::dropReasons; ++reason) {
    const DropRow& row = dropRows[reason];
    ASSERT_EQ(static_cast<std::size_t>(row.reason), reason);
    PathReport path = emptyPath();
    path.dropped(row.reason, "");
    expectStep(path, std::string("drop ") + row.name + ": " + row.text,
               std::string(R"({"step":"drop","reason":")") + row.name + R"(","detail":")" +
                   row.text + "\"}");
  }
}

TEST(PathSteps, ADropShowsADetailInPlaceOfTheTextOfTheReason) {
  PathReport path = emptyPath();
  path.dropped(DropReason::malformed, "the version is 7");
  expectStep(path, "drop malformed: the version is 7",
             R"({"step":"drop","reason":"malformed","detail":"the version is 7"})");
}

std::string wordsOf(OwnVrfReason reason) {
  switch (reason) {
    case OwnVrfReason::noRuleMatched:
      return "no rule matches";
    case OwnVrfReason::ruleWithoutAction:
      return "the rule has no action";
    case OwnVrfReason::noPostDecapVrf:
      return "the action names no post-decapsulation VRF";
  }
  return "";
}

TEST(PathSteps, TheVrfOfTheInterfaceHasItsReason) {
  for (const OwnVrfReason reason : {OwnVrfReason::noRuleMatched, OwnVrfReason::ruleWithoutAction,
                                    OwnVrfReason::noPostDecapVrf}) {
    PathReport path = emptyPath();
    path.ownVrfTaken("red", reason);
    expectStep(path, "interface VRF red: " + wordsOf(reason),
               R"({"step":"interfaceVrf","vrfName":"red","because":")" + wordsOf(reason) + "\"}");
  }
}

std::string wordsOf(GoOnReason reason) {
  switch (reason) {
    case GoOnReason::noRoute:
      return "no route";
    case GoOnReason::noVrfId:
      return "the VRF has no hardware id";
    case GoOnReason::decapDisabled:
      return "decap-nh is off, and decap-nh-fallback is on";
  }
  return "";
}

TEST(PathSteps, AFallbackHasItsReason) {
  for (const GoOnReason reason :
       {GoOnReason::noRoute, GoOnReason::noVrfId, GoOnReason::decapDisabled}) {
    PathReport path = emptyPath();
    path.wentOn({"red", 2, {}, {}}, {"blue", 3, {}, {}}, reason);
    expectStep(
        path, "fall back to VRF blue: " + wordsOf(reason),
        R"({"step":"fallback","from":"red","to":"blue","because":")" + wordsOf(reason) + "\"}");
  }
}

// A report of one rule, which is at place 4 of its interface.
PathReport pathWithOneRule(const PolicyMap::ClassMatch& match = {}) {
  RuleState rule;
  rule.rule.match = match;
  rule.user = {"e1", "red", "P", 30};
  rule.place = 4;
  return PathReport({rule});
}

TEST(PathSteps, ARuleThatDiffersNamesTheField) {
  const std::pair<RuleField, std::string> fields[] = {
      {RuleField::family, "family"},
      {RuleField::protocol, "protocol"},
      {RuleField::dscp, "dscp"},
      {RuleField::source, "source-address"},
      {RuleField::destination, "destination-address"},
      {RuleField::sourceSet, "source-set"},
      {RuleField::destinationSet, "destination-set"},
      {RuleField::hopLimit, "hop-limit"},
      {RuleField::length, "length"},
      {RuleField::fragment, "fragment"},
      {RuleField::fragmentOffset, "fragment-offset"},
      {RuleField::sourcePort, "source-port"},
      {RuleField::destinationPort, "destination-port"},
      {RuleField::tcpFlags, "tcp-flags"}};
  for (const auto& [field, name] : fields) {
    PathReport path = pathWithOneRule();
    path.ruleTried(4, {}, field);
    expectStep(path, "rule 30 of P, any: differs by " + name,
               R"({"step":"rule","place":4,"policy":"P","rule":30,"match":"any","matches":false,)"
               R"("differsBy":")" +
                   name + "\"}");
  }
}

TEST(PathSteps, ARuleThatMatchesDiffersByNothing) {
  PolicyMap::ClassMatch match;
  match.family = Ip::Family::v6;
  PathReport path = pathWithOneRule(match);
  path.ruleTried(4, {}, std::nullopt);
  expectStep(path, "rule 30 of P, ipv6: matches",
             R"({"step":"rule","place":4,"policy":"P","rule":30,"match":"ipv6","matches":true,)"
             R"("differsBy":null})");
}

struct ActionRow {
  PolicyMap::RuleAction action;
  std::optional<Chips::ResourceUse> resource;
  const char* line;
  const char* step;
};

TEST(PathSteps, AnActionHasItsResource) {
  using PolicyMap::ActionType;
  const PolicyMap::RuleAction lookUp{ActionType::vrf, "red", {}, {}};
  const PolicyMap::RuleAction decap{ActionType::decapVrf, "red", "blue", "green"};
  const ActionRow rows[] = {
      {lookUp, Chips::ResourceUse{7, false}, "action actionVrf red, resource 7",
       R"({"vrfName":"red","fallbackVrfName":"","postDecapVrfName":"","action":"actionVrf"},)"
       R"("resource":{"index":7,"stale":false})"},
      {lookUp, Chips::ResourceUse{8, true}, "action actionVrf red, resource 8 (stale)",
       R"({"vrfName":"red","fallbackVrfName":"","postDecapVrfName":"","action":"actionVrf"},)"
       R"("resource":{"index":8,"stale":true})"},
      {lookUp, std::nullopt, "action actionVrf red, no resource",
       R"({"vrfName":"red","fallbackVrfName":"","postDecapVrfName":"","action":"actionVrf"},)"
       R"("resource":null)"},
      {decap, std::nullopt, "action actionDecapVrf red fallback blue post-decap green, no resource",
       R"({"vrfName":"red","fallbackVrfName":"blue","postDecapVrfName":"green",)"
       R"("action":"actionDecapVrf"},"resource":null)"},
      {{ActionType::discard, {}, {}, {}},
       std::nullopt,
       "action discard",
       R"({"action":"actionDiscard"},"resource":null)"},
      {{ActionType::none, {}, {}, {}}, std::nullopt, "action -", R"(null,"resource":null)"},
  };
  for (const ActionRow& row : rows) {
    PathReport path = emptyPath();
    path.actionTaken(row.action, row.resource);
    expectStep(path, row.line, std::string(R"({"step":"action","action":)") + row.step + '}');
  }
}

std::string wordsOf(Route::Kind kind) {
  switch (kind) {
    case Route::Kind::egress:
      return "via e9";
    case Route::Kind::drop:
      return "drop";
    case Route::Kind::decap:
      return "decap";
  }
  return "";
}

TEST(PathSteps, ALookUpHasItsRoute) {
  const Ip::Address destination = *parseIpAddress("203.0.113.1");
  for (const Route::Kind kind : {Route::Kind::egress, Route::Kind::drop, Route::Kind::decap}) {
    for (const bool exactMatch : {false, true}) {
      const Route route{kind, "e9"};
      PathReport path = emptyPath();
      path.lookedUp({"red", 2, {}, {}}, destination,
                    Chips::RouteHit{*parseIpPrefix("203.0.113.0/24"), &route, exactMatch});
      expectStep(path,
                 "look up 203.0.113.1 in VRF red (id 2): 203.0.113.0/24 " + wordsOf(kind) +
                     (exactMatch ? " (exact match)" : ""),
                 R"({"step":"lookUp","vrfName":"red","vrfId":2,"destination":"203.0.113.1",)"
                 R"("prefix":"203.0.113.0/24","route":")" +
                     wordsOf(kind) + R"(","exactMatch":)" + (exactMatch ? "true}" : "false}"));
    }
  }
}

TEST(PathSteps, ALookUpThatMissesHasNoRoute) {
  PathReport path = emptyPath();
  path.lookedUp({"red", 0, {}, {}}, *parseIpAddress("2001:db8::1"), std::nullopt);
  expectStep(path, "look up 2001:db8::1 in VRF red (id 0): miss",
             R"({"step":"lookUp","vrfName":"red","vrfId":0,"destination":"2001:db8::1",)"
             R"("prefix":null,"route":null,"exactMatch":false})");
}

PacketHeader headerOf(const char* source, const char* destination) {
  PacketHeader header;
  header.source = *parseIpAddress(source);
  header.destination = *parseIpAddress(destination);
  header.family = header.source.family;
  header.protocol = 17;
  header.ttl = 64;
  header.totalLength = 100;
  return header;
}

struct HeaderRow {
  void (*change)(PacketHeader&);
  const char* text;
  const char* members;
};

TEST(PathSteps, APacketHasEachFieldThatIsSet) {
  const HeaderRow rows[] = {
      {[](PacketHeader&) {}, "protocol 17 ttl 64, 100 bytes",
       R"("protocol":17,"dscp":0,"ecn":0,"ttl":64,"bytes":100)"},
      {[](PacketHeader& header) { header.dscp = 1; }, "protocol 17 dscp 1 ttl 64, 100 bytes",
       R"("protocol":17,"dscp":1,"ecn":0,"ttl":64,"bytes":100)"},
      {[](PacketHeader& header) { header.ecn = 2; }, "protocol 17 ecn 2 ttl 64, 100 bytes",
       R"("protocol":17,"dscp":0,"ecn":2,"ttl":64,"bytes":100)"},
      {[](PacketHeader& header) { header.fragment.more = true; },
       "protocol 17 ttl 64 fragment-offset 0, 100 bytes",
       R"("protocol":17,"dscp":0,"ecn":0,"ttl":64,"bytes":100,)"
       R"("fragmentOffset":0,"moreFragments":true)"},
      {[](PacketHeader& header) { header.fragment.offset = 1; },
       "protocol 17 ttl 64 fragment-offset 1, 100 bytes",
       R"("protocol":17,"dscp":0,"ecn":0,"ttl":64,"bytes":100,)"
       R"("fragmentOffset":1,"moreFragments":false)"},
      {[](PacketHeader& header) { header.ports = Chips::Ports{}; }, "protocol 17 ttl 64, 100 bytes",
       R"("protocol":17,"dscp":0,"ecn":0,"ttl":64,"bytes":100,)"
       R"("sourcePort":0,"destinationPort":0)"},
      {[](PacketHeader& header) {
         header.ports = {80, 443};
         header.tcpFlags = 0x12;
       },
       "protocol 17 ttl 64 source-port 80 destination-port 443 tcp-flags syn,ack, 100 bytes",
       R"("protocol":17,"dscp":0,"ecn":0,"ttl":64,"bytes":100,)"
       R"("sourcePort":80,"destinationPort":443,"tcpFlags":"syn,ack")"},
      {[](PacketHeader& header) {
         header.protocol = 0;
         header.dscp = 63;
         header.ecn = 3;
         header.ttl = 0;
         header.totalLength = 0;
       },
       "protocol 0 dscp 63 ecn 3 ttl 0, 0 bytes",
       R"("protocol":0,"dscp":63,"ecn":3,"ttl":0,"bytes":0)"},
  };
  for (const HeaderRow& row : rows) {
    PacketHeader header = headerOf("192.0.2.1", "192.0.2.2");
    row.change(header);
    PathReport path = emptyPath();
    path.parsed(header);
    expectStep(path, std::string("packet ipv4 192.0.2.1 to 192.0.2.2 ") + row.text,
               R"({"step":"packet","packet":{"family":"ipv4","source":"192.0.2.1",)"
               R"("destination":"192.0.2.2",)" +
                   std::string(row.members) + "}}");
  }
}

TEST(PathSteps, APacketThatLeavesHasItsInterfaceAndItsVrf) {
  PathReport path = emptyPath();
  path.left("e 9", "red", headerOf("2001:db8::1", "2001:db8::2"));
  expectStep(path,
             "forward via 'e 9': ipv6 2001:db8::1 to 2001:db8::2 protocol 17 ttl 64, 100 bytes",
             R"({"step":"forward","interface":"e 9","vrfName":"red","packet":{"family":"ipv6",)"
             R"("source":"2001:db8::1","destination":"2001:db8::2","protocol":17,"dscp":0,)"
             R"("ecn":0,"ttl":64,"bytes":100}})");
}

TEST(PathSteps, ATunnelThatIsTakenOffHasThreeHeaders) {
  PathReport path = emptyPath();
  PacketHeader outer = headerOf("192.0.2.1", "192.0.2.2");
  outer.protocol = 4;
  PacketHeader arrived = headerOf("192.0.2.3", "192.0.2.4");
  arrived.ttl = 200;
  PacketHeader inner = arrived;
  inner.ttl = 63;
  path.decapsulated(outer, arrived, inner);
  const std::string rest = R"("dscp":0,"ecn":0,"ttl":)";
  const std::string inside = R"({"family":"ipv4","source":"192.0.2.3",)"
                             R"("destination":"192.0.2.4","protocol":17,)";
  expectStep(path, "decapsulate: ipv4 192.0.2.3 to 192.0.2.4 protocol 17 ttl 63, 100 bytes",
             R"({"step":"decapsulate","outer":{"family":"ipv4","source":"192.0.2.1",)"
             R"("destination":"192.0.2.2","protocol":4,)" +
                 rest + R"(64,"bytes":100},"inner":)" + inside + rest +
                 R"(63,"bytes":100},"arrived":)" + inside + rest + R"(200,"bytes":100}})");
}

TEST(PathSteps, AreInTheirOrder) {
  PathReport path = emptyPath();
  path.ownVrfTaken("red", OwnVrfReason::noRuleMatched);
  path.dropped(DropReason::noRoute, "");
  EXPECT_EQ(path.text(),
            "interface VRF red: no rule matches\n"
            "drop noRoute: no VRF that it was looked up in has a route\n");
  ASSERT_EQ(path.json().size(), 2U);
  EXPECT_EQ(path.json()[0]["step"], "interfaceVrf");
  EXPECT_EQ(path.json()[1]["step"], "drop");
}

}  // namespace
}  // namespace ZelAgent
