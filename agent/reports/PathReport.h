#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/StateReport.h"
#include "chips/interface/PacketWay.h"

namespace ZelAgent {

class ForwardingAgent;

/// The path of one packet through the chip, as text and as JSON.
///
/// Steps are in the order in which they happened. Each is a line of text and a JSON object. The
/// member `step` of the object is its kind; the other members depend on it:
///
///   packet        packet
///   rule          place, policy, rule, match, matches, differsBy (null where it matches)
///   action        action (null for none), resource (null, or {index, stale})
///   interfaceVrf  vrfName, because
///   lookUp        vrfName, vrfId, destination, prefix (null for a miss), route, exactMatch
///   fallback      from, to, because
///   decapsulate   outer, inner, arrived
///   drop          reason, detail
///   forward       interface, vrfName, packet
///
/// A packet is {family, source, destination, protocol, dscp, ecn, ttl, bytes}. A fragment also has
/// {fragmentOffset, moreFragments}, a packet with ports {sourcePort, destinationPort}, and one with
/// TCP flags {tcpFlags}, for example "syn,ack".
class PathReport final : public Chips::PacketWay {
 public:
  /// `rules` are all rules of the interface on which the packet arrives, also those that the chip
  /// does not hold.
  explicit PathReport(RuleStates rules);
  PathReport(PathReport&&) noexcept;
  PathReport& operator=(PathReport&&) = delete;
  ~PathReport() override;

  /// One line for each step.
  [[nodiscard]] std::string text() const;
  /// An array with one object for each step.
  [[nodiscard]] OrderedJson json() const;

  void parsed(const Chips::PacketHeader& header) override;
  void ruleTried(std::size_t place, const PolicyMap::AclRule& rule,
                 std::optional<Chips::RuleField> difference) override;
  void actionTaken(const PolicyMap::RuleAction& action,
                   std::optional<Chips::ResourceUse> resource) override;
  void ownVrfTaken(const L3::VrfName& vrf, Chips::OwnVrfReason reason) override;
  void lookedUp(const Chips::VrfFacts& vrf, const Ip::Address& destination,
                const std::optional<Chips::RouteHit>& hit) override;
  void wentOn(const Chips::VrfFacts& from, const Chips::VrfFacts& to,
              Chips::GoOnReason reason) override;
  void decapsulated(const Chips::PacketHeader& outer, const Chips::PacketHeader& arrived,
                    const Chips::PacketHeader& inner) override;
  void dropped(Chips::DropReason reason, std::string_view detail) override;
  void left(const std::string& intf, const L3::VrfName& vrf,
            const Chips::PacketHeader& header) override;

 private:
  void add(std::string line, OrderedJson step);
  // The rule that the chip holds at the place.
  [[nodiscard]] const RuleState& ruleAt(std::size_t place) const;

  RuleStates rules_;
  std::unordered_map<std::size_t, std::size_t> indexes_;  // in `rules_`, by place
  std::vector<std::string> lines_;
  std::vector<OrderedJson> steps_;
};

/// The path of a packet that arrives on the interface. No counter counts the packet.
[[nodiscard]] PathReport explain(ForwardingAgent& agent, const std::string& interface,
                                 std::span<const std::uint8_t> packet);

}  // namespace ZelAgent
