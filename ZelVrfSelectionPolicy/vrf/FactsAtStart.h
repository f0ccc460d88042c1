#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// A nested machine follows its VRF from its creation on. A hook may change facts earlier, during
/// the start of the owner. These changes are found by comparison with the facts at the beginning.

/// The VRF ids of an IPv4 route status.
class VrfIdsAtStart {
 public:
  /// `routes` may be null.
  explicit VrfIdsAtStart(const VrfSm::RouteStatusPtr& routes);
  /// Calls `vrfSm` to update the actions of each VRF whose id has changed, or whose status was
  /// removed. The id of the default VRF is ignored.
  void handleChanges(VrfSm& vrfSm) const;

 private:
  VrfSm::RouteStatusPtr routes_;
  std::vector<std::pair<L3::VrfName, std::uint32_t>> ids_;
};

/// The VRFs that have prefix lengths in a route status of one family.
template <class RouteStatus>
class PrefixLensAtStart {
 public:
  /// `routes` may be null.
  explicit PrefixLensAtStart(const Mox::Ptr<RouteStatus const>& routes) : routes_(routes) {
    if (!routes) return;
    for (auto entry = routes->vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
      // No action can name a VRF with a longer name.
      if (entry.key().size() <= L3::VrfName::maxLength) vrfs_.emplace_back(entry.key());
    }
  }
  /// Calls `vrfSm` to update the actions of each VRF whose prefix lengths were removed.
  void handleChanges(VrfSm& vrfSm) const {
    for (const L3::VrfName& vrf : vrfs_) {
      if (!routes_->vrfPrefixLensInExactMatch(vrf.bytes())) vrfSm.handleVrfUpdates(vrf, false);
    }
  }

 private:
  Mox::Ptr<RouteStatus const> routes_;
  std::vector<L3::VrfName> vrfs_;
};

}  // namespace ZelVrfSelectionPolicy
