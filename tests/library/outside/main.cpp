// An agent in miniature: the library, and a chip that prints what it is asked to do.

#include <ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h>

#include <iostream>

namespace zel = ZelVrfSelectionPolicy;
using zel::HwStatus, zel::VrfAction;

class PrintingChip final : public zel::VrfHelper {
 public:
  explicit PrintingChip(const Mox::Ptr<Routing::Hardware::RouteStatus>& routes)
      : VrfHelper("printing chip", nullptr, routes, nullptr) {}

  HwStatus createVrf(const VrfAction& action) override { return program("create", action); }
  HwStatus updateVrf(const VrfAction& action) override { return program("update", action); }
  void deleteVrf(const VrfAction& action) override {
    std::cout << "delete " << action.vrfName() << '\n';
  }

 private:
  HwStatus program(const char* verb, const VrfAction& action) const {
    const auto vrf = routingHwRouteStatus()->vrfStatus(action.vrfName());
    const unsigned id = vrf ? vrf->vrfId() : 0;
    std::cout << verb << ' ' << action.vrfName() << " with hardware id " << id << '\n';
    return {};  // programmed in hardware
  }
};

int main() {
  const auto fallbacks = VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  const auto routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  const auto routes6 = Routing6::Hardware::RouteStatus::RouteStatusIs();
  const auto mounts = zel::policySmMountsFactory();
  const auto users = zel::vrfHwConfigFactory();
  const auto statuses = zel::vrfHwStatusFactory();
  const auto chip = Mox::makePtr<PrintingChip>(routes);

  const auto top =
      zel::zelVrfSelectionPolicySmFactory(nullptr, mounts, chip, fallbacks, routes, routes6);
  top->vrfSmIs(users, statuses, chip, fallbacks, routes, routes6);

  const VrfAction red("red", PolicyMap::ActionType::vrf);
  users->vrfRefCountInc(red, 1);           // the first user: the resource is created
  routes->vrfStatusIs("red")->vrfIdIs(7);  // the VRF gets its hardware id: it is updated
  std::cout << statuses->hwStatus(red).status() << '\n';
  users->vrfRefCountDec(red, 1);  // the last user is gone: it is deleted
}
