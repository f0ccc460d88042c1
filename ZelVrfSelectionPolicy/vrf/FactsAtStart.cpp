#include "ZelVrfSelectionPolicy/vrf/FactsAtStart.h"

namespace ZelVrfSelectionPolicy {

VrfIdsAtStart::VrfIdsAtStart(const VrfSm::RouteStatusPtr& routes) : routes_(routes) {
  if (!routes) return;
  for (auto entry = routes->vrfStatus().iterator(); entry; ++entry)
    ids_.emplace_back(entry.key(), entry.value()->vrfId());
}

void VrfIdsAtStart::handleChanges(VrfSm& vrfSm) const {
  for (const auto& [vrf, id] : ids_) {
    const VrfSm::VrfStatusPtr status = routes_->vrfStatus(vrf);
    const bool isAsBefore = status && (status->vrfId() == id || vrf.isDefaultVrf());
    if (!isAsBefore) vrfSm.handleVrfUpdates(vrf, false);
  }
}

}  // namespace ZelVrfSelectionPolicy
