// Statics that are filled while the program runs and destroyed when it ends: what the platform and
// the library keep for the process must outlive them. Passes by ending well.

#include <cstdio>

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "testing/RecordingVrfHelper.h"

namespace {

using namespace ZelVrfSelectionPolicy;

L3::VrfName name;
VrfAction action;
Testing::Journal journal;
Mox::Ptr<VrfHwConfig> users;
Mox::Ptr<VrfHwStatus> statuses;
Mox::Ptr<ZelVrfSelectionPolicySm> top;

}  // namespace

int main() {
  name = "red";
  action = VrfAction(name, PolicyMap::ActionType::vrf);
  users = vrfHwConfigFactory();
  statuses = vrfHwStatusFactory();
  const auto fallback = VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  const auto routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  const auto chip = Mox::makePtr<Testing::RecordingVrfHelper>(journal, fallback, routes);
  top = zelVrfSelectionPolicySmFactory(nullptr, nullptr, chip, fallback, routes, nullptr);
  top->vrfSmIs(users, statuses, chip, fallback, routes, nullptr);
  routes->vrfStatusIs(name);
  users->vrfRefCountInc(action, 1);
  return std::puts("ending") < 0 ? 1 : 0;
}
