// Why: a chip fails now and then, and what is built on it must be seen to cope.
// Always: each planned fault happens once; faults planned for a VRF happen before those planned for
// any.
#pragma once

#include <cstdint>
#include <map>

#include "L3/VrfName.h"

namespace SoftChip {

class FaultPlan final {
 public:
  // Plans that the next `count` operations on the VRF fail, in place of what was planned for it.
  void vrfFaultsIs(const L3::VrfName& vrf, std::uint32_t count);
  // The same for the next operations, whatever their VRF.
  void anyFaultsIs(std::uint32_t count) noexcept { any_ = count; }

  // Whether the operation that now begins on the VRF is to fail; uses the fault up.
  [[nodiscard]] bool takeFault(const L3::VrfName& vrf);

 private:
  std::map<L3::VrfName, std::uint32_t> byVrf_;
  std::uint32_t any_ = 0;
};

}  // namespace SoftChip
