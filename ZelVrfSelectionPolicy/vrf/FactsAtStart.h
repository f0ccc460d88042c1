#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

// A nested machine notices what happens to its VRF from when it is made. What a hook changes during
// the start of its owner, before that, is found by comparison with what there was at the beginning.

/// The VRF ids of an IPv4 route status.
class VrfIdsAtStart {
 public:
  /// `routes` may be null.
  explicit VrfIdsAtStart(const VrfSm::RouteStatusPtr& routes);
  /// Has `vrfSm` update what names a VRF whose id has changed since, or whose status has gone. As
  /// ever, the id of the default VRF is of no account.
  void handleChanges(VrfSm& vrfSm) const;

 private:
  VrfSm::RouteStatusPtr routes_;
  std::vector<std::pair<L3::VrfName, std::uint32_t>> ids_;
};

/// Which VRFs have prefix lengths in a route status of one family.
template <class RouteStatus>
class PrefixLensAtStart {
 public:
  /// `routes` may be null.
  explicit PrefixLensAtStart(const Mox::Ptr<RouteStatus const>& routes) : routes_(routes) {
    if (!routes) return;
    for (auto entry = routes->vrfPrefixLensInExactMatch().iterator(); entry; ++entry) {
      // No action names a VRF whose name is too long for one.
      if (entry.key().size() <= L3::VrfName::maxLength) vrfs_.emplace_back(entry.key());
    }
  }
  /// Has `vrfSm` update what names a VRF whose prefix lengths have gone since.
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
