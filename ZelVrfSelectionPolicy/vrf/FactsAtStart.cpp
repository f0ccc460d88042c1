#include "ZelVrfSelectionPolicy/vrf/FactsAtStart.h"

#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

namespace ZelVrfSelectionPolicy {
namespace {

// The VRFs that have prefix lengths. No action names a VRF whose name is too long for one.
template <class Routes>
std::vector<L3::VrfName> vrfsWithLengths(const Routes& routes) {
  std::vector<L3::VrfName> names;
  if (!routes) return names;
  for (auto entry = routes->vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
    if (entry.key().size() <= L3::VrfName::maxLength) names.emplace_back(entry.key());
  }
  return names;
}

template <class Routes>
void updateThoseWithoutLengths(VrfSm& vrfSm, const Routes& routes,
                               const std::vector<L3::VrfName>& names) {
  for (const L3::VrfName& name : names) {
    if (!routes->vrfPrefixLensInExactMatch(name.bytes())) vrfSm.handleVrfUpdates(name, false);
  }
}

}  // namespace

FactsAtStart::FactsAtStart(const VrfSm::RouteStatusPtr& routes,
                           const VrfSm::RouteStatus6Ptr& routes6)
    : routes_(routes),
      routes6_(routes6),
      prefixLens_(vrfsWithLengths(routes)),
      prefixLensV6_(vrfsWithLengths(routes6)) {
  if (!routes) return;
  for (auto entry = routes->vrfStatus().iterator(); entry; ++entry)
    vrfIds_.emplace_back(entry.key(), entry.value()->vrfId());
}

void FactsAtStart::handleChanges(VrfSm& vrfSm) const {
  for (const auto& [name, id] : vrfIds_) {
    const auto* const instance = vrfSm.moxVrfInstance().find(name);
    if (instance == nullptr) {
      vrfSm.handleVrfUpdates(name, false);
    } else if (const auto machine = *instance; machine->vrfInstance()->vrfId() != id) {
      machine->handleVrfId();
    }
  }
  updateThoseWithoutLengths(vrfSm, routes_, prefixLens_);
  updateThoseWithoutLengths(vrfSm, routes6_, prefixLensV6_);
}

}  // namespace ZelVrfSelectionPolicy
