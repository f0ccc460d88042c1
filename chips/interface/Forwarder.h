#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "L3/VrfName.h"
#include "chips/interface/DropReason.h"
#include "chips/interface/PacketCounter.h"
#include "chips/interface/PacketWay.h"

namespace Chips {

/// What happened to a packet.
struct Verdict {
  std::optional<DropReason> drop;
  /// Without a drop: the egress interface, and the bytes of the packet that leaves.
  std::string egress;
  std::vector<std::uint8_t> packet;

  friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// Forwards packets by the rules, resources and routes of a chip.
///
/// A packet that uses a resource follows the program of the resource only, even if the program is
/// stale. Every packet is dropped for one reason or leaves by one interface. `forward` counts it
/// once. The steps for a packet that enters by an interface:
///
///   1. The first rule of the interface that matches the outer header gives the action.
///   2. Without a match a closed interface drops the packet. Without a match on an open interface,
///      and for the action `none`, the destination is looked up in the interface's own VRF and then
///      in the fallback VRFs, by the current facts. `discard` drops the packet. Any other action
///      uses the chip's resource. Without the resource the packet is dropped.
///   3. After a miss the next VRF of the walk is tried. After the last VRF, the walk of the
///      fallback VRF of the action is tried. No VRF is tried twice. A VRF without an id has no
///      table, so it is a miss.
///   4. By an egress route the packet leaves with its time to live lower by one. By a decapsulating
///      route the inner packet is looked up in the action's post-decapsulation VRF, or in the
///      interface's own VRF if the action names none. Then it leaves or is dropped.
class Forwarder {
 public:
  virtual ~Forwarder() = default;

  /// An interface without a VRF is in the default VRF.
  virtual void intfVrfIs(const std::string& intf, const L3::VrfName& vrf) = 0;
  virtual void intfVrfDel(const std::string& intf) = 0;

  /// Counts the packet and returns what happens to it.
  [[nodiscard]] virtual Verdict forward(const std::string& intf,
                                        std::span<const std::uint8_t> ipPacket) = 0;
  /// Returns the same without counting the packet. `way` receives each step, rule by rule.
  [[nodiscard]] virtual Verdict explain(const std::string& intf,
                                        std::span<const std::uint8_t> ipPacket, PacketWay& way) = 0;

  /// The packets that left by a route of each VRF, counted with their sizes as they left. A VRF
  /// without such packets is absent.
  [[nodiscard]] virtual std::map<L3::VrfName, PacketCounter> vrfCounters() const = 0;
  /// The packets that were dropped, counted with their sizes as they arrived.
  [[nodiscard]] virtual PacketCounter dropCounter(DropReason reason) const = 0;
  /// Sets these counters to 0. Does not change the counters of the rules.
  virtual void countersReset() = 0;

 protected:
  Forwarder() = default;
  Forwarder(const Forwarder&) = default;
  Forwarder& operator=(const Forwarder&) = default;
};

}  // namespace Chips
