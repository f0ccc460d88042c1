#pragma once

#include <cstdint>
#include <map>

#include "L3/VrfName.h"

namespace Chips {

/// Planned failures of a chip, for tests of the software above it. Each planned fault happens once.
/// Faults planned for a VRF happen before those planned for any VRF.
class FaultPlan final {
 public:
  /// Plans that the next `count` operations on the VRF fail. This replaces the plan for the VRF.
  void vrfFaultsIs(const L3::VrfName& vrf, std::uint32_t count);
  /// The same for the next operations on any VRF.
  void anyFaultsIs(std::uint32_t count) noexcept { any_ = count; }

  /// Whether the operation that begins now on the VRF fails. If so, the fault is used up.
  [[nodiscard]] bool takeFault(const L3::VrfName& vrf);

 private:
  std::map<L3::VrfName, std::uint32_t> byVrf_;
  std::uint32_t any_ = 0;
};

}  // namespace Chips
