#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "chips/soft/DropReason.h"
#include "chips/soft/PacketCounter.h"
#include "chips/soft/PacketWay.h"
#include "chips/soft/RouteTables.h"
#include "chips/soft/SoftAclHelper.h"
#include "chips/soft/SoftVrfHelper.h"

namespace SoftChip {

/// What happened to a packet.
struct Verdict {
  std::optional<DropReason> drop;
  /// Without a drop: the egress interface, and the bytes of the packet that leaves.
  std::string egress;
  std::vector<std::uint8_t> packet;

  friend bool operator==(const Verdict&, const Verdict&) = default;
};

/// Forwards packets by the chip's rules, resources and routes.
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
class Forwarder final {
 public:
  /// All that is passed by reference must outlive the forwarder.
  Forwarder(SoftAclHelper& rules, const SoftVrfHelper& resources, const RouteTables& routes,
            ProgramInputs inputs);

  /// An interface without a VRF is in the default VRF.
  void intfVrfIs(const std::string& intf, const L3::VrfName& vrf);
  void intfVrfDel(const std::string& intf);

  /// Counts the packet and returns what happens to it. `way` receives each step, rule by rule. If
  /// `way` is null, the rules are searched by the compiled classifier.
  [[nodiscard]] Verdict forward(const std::string& intf, std::span<const std::uint8_t> ipPacket,
                                PacketWay* way = nullptr);
  /// The same without counting the packet.
  [[nodiscard]] Verdict explain(const std::string& intf, std::span<const std::uint8_t> ipPacket,
                                PacketWay& way);

  /// The packets that left by a route of each VRF, counted with their sizes as they left. A VRF
  /// without such packets is absent.
  [[nodiscard]] std::map<L3::VrfName, PacketCounter> vrfCounters() const;
  /// The packets that were dropped, counted with their sizes as they arrived.
  [[nodiscard]] const PacketCounter& dropCounter(DropReason reason) const noexcept;
  /// Sets these counters to 0. Does not change the counters of the rules.
  void countersReset() noexcept;

 private:
  class Passage;  // of one packet

  struct VrfNameHash {
    std::size_t operator()(const L3::VrfName& name) const noexcept { return name.hash(0); }
  };

  [[nodiscard]] const L3::VrfName& ownVrf(const std::string& intf) const;

  SoftAclHelper& rules_;
  const SoftVrfHelper& resources_;
  const RouteTables& routes_;
  ProgramInputs inputs_;
  std::unordered_map<std::string, L3::VrfName> intfVrfs_;
  std::unordered_map<L3::VrfName, PacketCounter, VrfNameHash> vrfCounters_;
  std::array<PacketCounter, dropReasons> dropCounters_{};
};

}  // namespace SoftChip
