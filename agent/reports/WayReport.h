// Why: an operator asks why a packet went where it went, and the answer is the way that it took.
// Always: the steps in their order, each as a line of text and as a JSON object whose member `step`
// names it:
//
//   packet        packet
//   rule          place, policy, rule, match, matches, differsBy (null where it matches)
//   action        action (null for none), resource (null, or {index, stale})
//   ownVrf        vrfName, because
//   lookUp        vrfName, vrfId, destination, prefix (null for a miss), route, exactMatch
//   goOn          from, to, because
//   decapsulate   outer, inner, arrived
//   drop          reason, detail
//   leave         interface, vrfName, packet
//
// Packets are told as {family, source, destination, protocol, dscp, ecn, ttl, bytes}.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/StateJson.h"
#include "chips/soft/PacketWay.h"

namespace ZelAgent {

class WayReport final : public SoftChip::PacketWay {
 public:
  // `rules` are those of the interface by which the packet comes in, also those that the chip does
  // not hold.
  explicit WayReport(RuleStates rules) : rules_(std::move(rules)) {}

  // One line a step.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] OrderedJson json() const { return json_; }

  void parsed(const SoftChip::PacketHeader& header) override;
  void ruleTried(std::size_t place, const PolicyMap::AclRule& rule,
                 std::optional<SoftChip::RuleField> difference) override;
  void actionTaken(const PolicyMap::RuleAction& action,
                   std::optional<SoftChip::ResourceUse> resource) override;
  void ownVrfTaken(const L3::VrfName& vrf, SoftChip::OwnVrfReason reason) override;
  void lookedUp(const SoftChip::VrfFacts& vrf, const Ip::Address& destination,
                const std::optional<SoftChip::RouteTables::Hit>& hit) override;
  void wentOn(const SoftChip::VrfFacts& from, const SoftChip::VrfFacts& to,
              SoftChip::GoOnReason reason) override;
  void decapsulated(const SoftChip::PacketHeader& outer, const SoftChip::PacketHeader& arrived,
                    const SoftChip::PacketHeader& inner) override;
  void dropped(SoftChip::DropReason reason, std::string_view detail) override;
  void left(const std::string& intf, const L3::VrfName& vrf,
            const SoftChip::PacketHeader& header) override;

 private:
  void add(std::string line, OrderedJson step);
  // The rule that the chip holds at the place.
  [[nodiscard]] const RuleState& ruleAt(std::size_t place) const;

  RuleStates rules_;
  std::vector<std::string> lines_;
  OrderedJson json_ = OrderedJson::array();
};

}  // namespace ZelAgent
