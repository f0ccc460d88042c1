#include "chips/interface/FaultPlan.h"

namespace Chips {

void FaultPlan::vrfFaultsIs(const L3::VrfName& vrf, std::uint32_t count) {
  if (count == 0) {
    byVrf_.erase(vrf);
  } else {
    byVrf_[vrf] = count;
  }
}

bool FaultPlan::takeFault(const L3::VrfName& vrf) {
  const auto planned = byVrf_.find(vrf);
  if (planned != byVrf_.end()) {
    if (--planned->second == 0) byVrf_.erase(planned);
    return true;
  }
  if (any_ == 0) return false;
  --any_;
  return true;
}

}  // namespace Chips
