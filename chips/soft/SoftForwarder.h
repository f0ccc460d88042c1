#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "chips/interface/ChipVrfHelper.h"
#include "chips/interface/Forwarder.h"
#include "chips/soft/SoftAclHelper.h"
#include "chips/soft/SoftRouteTables.h"

namespace Chips {

/// Forwards packets in software. `explain` compares rule by rule, `forward` by the compiled rules.
class SoftForwarder final : public Forwarder {
 public:
  /// All that is passed by reference must outlive the forwarder.
  SoftForwarder(SoftAclHelper& rules, const ChipVrfHelper& resources, const SoftRouteTables& routes,
                ProgramInputs inputs);

  void intfVrfIs(const std::string& intf, const L3::VrfName& vrf) override;
  void intfVrfDel(const std::string& intf) override;

  [[nodiscard]] Verdict forward(const std::string& intf,
                                std::span<const std::uint8_t> ipPacket) override;
  [[nodiscard]] Verdict explain(const std::string& intf, std::span<const std::uint8_t> ipPacket,
                                PacketWay& way) override;

  [[nodiscard]] std::map<L3::VrfName, PacketCounter> vrfCounters() const override;
  [[nodiscard]] PacketCounter dropCounter(DropReason reason) const override;
  void countersReset() override;

 private:
  class Passage;  // of one packet

  struct VrfNameHash {
    std::size_t operator()(const L3::VrfName& name) const noexcept { return name.hash(0); }
  };

  [[nodiscard]] const L3::VrfName& ownVrf(const std::string& intf) const;

  SoftAclHelper& rules_;
  const ChipVrfHelper& resources_;
  const SoftRouteTables& routes_;
  ProgramInputs inputs_;
  std::unordered_map<std::string, L3::VrfName> intfVrfs_;
  std::unordered_map<L3::VrfName, PacketCounter, VrfNameHash> vrfCounters_;
  std::array<PacketCounter, dropReasons> dropCounters_{};
};

}  // namespace Chips
