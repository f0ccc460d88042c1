#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "PolicyMap/AclRule.h"
#include "chips/soft/DropReason.h"
#include "chips/soft/RouteTables.h"
#include "chips/soft/VrfProgram.h"
#include "chips/soft/classify/RuleField.h"
#include "chips/soft/packet/PacketHeader.h"

namespace SoftChip {

/// The chip's resource that an action uses.
struct ResourceUse {
  std::uint32_t index = 0;
  bool stale = false;  // it would be programmed differently by the facts of now
};

/// Why a packet is looked up in the VRF of the interface that it came by.
enum class OwnVrfReason : std::uint8_t {
  noRuleMatched,
  ruleWithoutAction,  // it matched, and has no action
  noPostDecapVrf,     // named by the action, for the packet that came out of the tunnel
};

/// Why a lookup goes on in another VRF.
enum class GoOnReason : std::uint8_t {
  noRoute,        // in the one before
  noVrfId,        // the one before has no table
  decapDisabled,  // the hit decapsulates, which is off, but may fall back
};

/// Receives each step of the way that a packet really takes, in order, while it happens.
///
/// What is passed is valid during the call only. The last step is `dropped` or `left`, and there is
/// only one of these.
class PacketWay {
 public:
  virtual ~PacketWay() = default;

  virtual void parsed(const PacketHeader& /*header*/) {}
  /// `difference` is the first field by which the rule does not match; without one it matches.
  virtual void ruleTried(std::size_t /*place*/, const PolicyMap::AclRule& /*rule*/,
                         std::optional<RuleField> /*difference*/) {}
  /// The action of the rule that matches, and the chip's resource if the action has one.
  virtual void actionTaken(const PolicyMap::RuleAction& /*action*/,
                           std::optional<ResourceUse> /*resource*/) {}
  virtual void ownVrfTaken(const L3::VrfName& /*vrf*/, OwnVrfReason /*reason*/) {}
  /// `vrf` is what the lookup uses: facts of now, or those that the resource was programmed with.
  virtual void lookedUp(const VrfFacts& /*vrf*/, const Ip::Address& /*destination*/,
                        const std::optional<RouteTables::Hit>& /*hit*/) {}
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

}  // namespace SoftChip
