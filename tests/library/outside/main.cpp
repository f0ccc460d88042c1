// An agent in miniature: a chip that prints what it is asked, and the library that asks it.

#include <ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h>

#include <iostream>

using namespace ZelVrfSelectionPolicy;

class PrintingChip final : public VrfHelper {
 public:
  using VrfHelper::VrfHelper;

  HwStatus createVrf(const VrfAction& action) override { return program("create", action); }
  HwStatus updateVrf(const VrfAction& action) override { return program("update", action); }
  void deleteVrf(const VrfAction& action) override {
    std::cout << "delete " << action.vrfName() << '\n';
  }

 private:
  HwStatus program(const char* verb, const VrfAction& action) {
    const auto vrf = routingHwRouteStatus()->vrfStatus(action.vrfName());
    const unsigned id = vrf ? vrf->vrfId() : 0;
    std::cout << verb << ' ' << action.vrfName() << " with hardware id " << id << '\n';
    return {};  // programmed
  }
};

int main() {
  const auto fallbacks = VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  const auto routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  const auto routes6 = Routing6::Hardware::RouteStatus::RouteStatusIs();
  const auto acl = PolicyMap::PolicyMapAclHelper::PolicyMapAclHelperIs("acl");
  const auto chip = Mox::makePtr<PrintingChip>("chip", fallbacks, routes, routes6);
  const auto users = vrfHwConfigFactory();
  const auto statuses = vrfHwStatusFactory();

  const auto top = zelVrfSelectionPolicySmFactory(acl, policySmMountsFactory(), chip, fallbacks,
                                                  routes, routes6);
  top->vrfSmIs(users, statuses, chip, fallbacks, routes, routes6);

  const VrfAction red("red", PolicyMap::ActionType::vrf);
  users->vrfRefCountInc(red, 1);           // its first user: the resource is created
  routes->vrfStatusIs("red")->vrfIdIs(7);  // the VRF gets its hardware id: updated
  std::cout << statuses->hwStatus(red).status() << '\n';
  users->vrfRefCountDec(red, 1);  // its last user is gone: deleted
}
