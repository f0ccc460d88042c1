#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// What the route statuses of a machine hold when its start begins.
///
/// A nested machine notices what happens to its VRF from when it is made. What a hook changes
/// before that is found here, by comparison, when all of them are made.
class FactsAtStart {
 public:
  /// Either may be null.
  FactsAtStart(const VrfSm::RouteStatusPtr& routes, const VrfSm::RouteStatus6Ptr& routes6);

  /// Has `vrfSm`, whose nested machines are made, handle every VRF id that has changed since, and
  /// every entity that has gone.
  void handleChanges(VrfSm& vrfSm) const;

 private:
  VrfSm::RouteStatusPtr routes_;
  VrfSm::RouteStatus6Ptr routes6_;
  std::vector<std::pair<L3::VrfName, std::uint32_t>> vrfIds_;
  std::vector<L3::VrfName> prefixLens_;
  std::vector<L3::VrfName> prefixLensV6_;
};

}  // namespace ZelVrfSelectionPolicy
