#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "PolicyMap/AclRule.h"
#include "chips/interface/DropReason.h"
#include "chips/interface/Route.h"
#include "chips/interface/RuleField.h"
#include "chips/packet/PacketHeader.h"
#include "chips/programs/VrfProgram.h"

namespace Chips {

/// The chip's resource that an action uses.
struct ResourceUse {
  std::uint32_t index = 0;
  bool stale = false;  // the current facts give a different program
};

/// Why a packet is looked up in the VRF of its ingress interface.
enum class OwnVrfReason : std::uint8_t {
  noRuleMatched,
  ruleWithoutAction,  // the rule that matched has no action
  noPostDecapVrf,     // the action names no VRF for the decapsulated packet
};

/// Why a lookup continues in another VRF.
enum class GoOnReason : std::uint8_t {
  noRoute,        // the previous VRF has no route
  noVrfId,        // the previous VRF has no table
  decapDisabled,  // the route decapsulates; decapsulation is off, and its fallback is on
};

/// Receives each step that a packet takes, in order, while it is forwarded.
///
/// Arguments are valid only during the call. The last step is `dropped` or `left`. Only one of
/// these two occurs.
class PacketWay {
 public:
  virtual ~PacketWay() = default;

  virtual void parsed(const PacketHeader& /*header*/) {}
  /// `difference` is the first field that does not match. Without one the rule matches.
  virtual void ruleTried(std::size_t /*place*/, const PolicyMap::AclRule& /*rule*/,
                         std::optional<RuleField> /*difference*/) {}
  /// The action of the rule that matches, and the chip's resource if the action has one.
  virtual void actionTaken(const PolicyMap::RuleAction& /*action*/,
                           std::optional<ResourceUse> /*resource*/) {}
  virtual void ownVrfTaken(const L3::VrfName& /*vrf*/, OwnVrfReason /*reason*/) {}
  /// `vrf` is what the lookup uses: the current facts, or those in the program of the resource.
  virtual void lookedUp(const VrfFacts& /*vrf*/, const Ip::Address& /*destination*/,
                        const std::optional<RouteHit>& /*hit*/) {}
  /// Comes before the next `lookedUp`. `to` has not been tried for this destination.
  virtual void wentOn(const VrfFacts& /*from*/, const VrfFacts& /*to*/, GoOnReason /*reason*/) {}
  /// `arrived` is the inner header as it was in the tunnel, `inner` as it is now. They differ in
  /// time to live and congestion mark only.
  virtual void decapsulated(const PacketHeader& /*outer*/, const PacketHeader& /*arrived*/,
                            const PacketHeader& /*inner*/) {}
  /// `detail` says what was wrong with a header. It is empty if the reason says enough.
  virtual void dropped(DropReason /*reason*/, std::string_view /*detail*/) {}
  /// `header` is that of the packet that leaves by a route of the VRF.
  virtual void left(const std::string& /*intf*/, const L3::VrfName& /*vrf*/,
                    const PacketHeader& /*header*/) {}

 protected:
  PacketWay() = default;
  PacketWay(const PacketWay&) = default;
  PacketWay& operator=(const PacketWay&) = default;
};

}  // namespace Chips
