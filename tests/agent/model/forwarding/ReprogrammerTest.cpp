// Subscribers of statuses that change the users of actions while refused actions are requested.
#include <gtest/gtest.h>

#include <string>

#include "agent/model/forwarding/Reprogrammer.h"
#include "agent/model/policies/VrfActions.h"
#include "chips/soft/SoftVrfHelper.h"

namespace ZelAgent {
namespace {

using PolicyMap::ActionType;
using Routing6RouteStatus = Routing6::Hardware::RouteStatus;
using RoutingRouteStatus = Routing::Hardware::RouteStatus;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;
using ZelVrfSelectionPolicy::VrfHwConfig;
using ZelVrfSelectionPolicy::VrfHwStatus;

VrfAction actionOf(const char* vrf) {
  return *vrfActionOf({ActionType::vrf, L3::VrfName(vrf), {}, {}});
}

// The chip refuses the actions "blue" and "red". When one of them is programmed, the other one
// loses its user.
class ReprogrammerWithSubscriber : public ::testing::Test {
 protected:
  ReprogrammerWithSubscriber() {
    std::uint32_t id = 0;
    for (const VrfAction& action : {blue_, red_})
      routeStatus_->vrfStatusIs(action.vrfName())->vrfIdIs(++id);
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void*,
                              const void*) {
      Velo::MemberSubscriber<ReprogrammerWithSubscriber>::ownerOf(subscriber).leaveOne();
    };
    statuses_->publisher().subscriberIs(subscriber_);
  }
  ~ReprogrammerWithSubscriber() override { statuses_->publisher().subscriberDel(subscriber_); }

  void use() {
    users_->vrfRefCountInc(blue_, 1);
    users_->vrfRefCountInc(red_, 1);
  }
  void leaveOne() {
    for (const auto& [programmed, other] : {std::pair{blue_, red_}, std::pair{red_, blue_}}) {
      if (chip_->resource(programmed) == nullptr || users_->vrfRefCount(other) == 0) continue;
      users_->vrfRefCountDec(other, 1);
    }
  }
  // Each action has a status and may have a resource exactly if it has a user.
  void expectOnlyUsedActions() const {
    for (const VrfAction& action : {blue_, red_}) {
      const bool isUsed = users_->vrfRefCount(action) != 0;
      EXPECT_EQ(statuses_->hwStatusHas(action), isUsed) << action;
      EXPECT_EQ(chip_->resource(action) != nullptr, isUsed) << action;
    }
    EXPECT_EQ(chip_->resources().size(), 1U);
  }

  const VrfAction blue_ = actionOf("blue");
  const VrfAction red_ = actionOf("red");
  Mox::Ptr<VrfSelectionFallbackVrf> fallbacks_ =
      VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<RoutingRouteStatus> routeStatus_ = RoutingRouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6RouteStatus> routeStatusV6_ = Routing6RouteStatus::RouteStatusIs();
  const Chips::ProgramInputs inputs_{fallbacks_, routeStatus_, routeStatusV6_};
  Mox::Ptr<Chips::SoftVrfHelper> chip_ =
      Mox::makeActivePtr<Chips::SoftVrfHelper>(Velo::String("chip"), inputs_, 0U);
  Mox::Ptr<VrfHwConfig> users_ = VrfHwConfig::VrfHwConfigIs();
  Mox::Ptr<VrfHwStatus> statuses_ = VrfHwStatus::VrfHwStatusIs();
  Reprogrammer reprogrammer_{
      chip_, inputs_,
      ZelVrfSelectionPolicy::vrfSmFactory(users_, statuses_, chip_, fallbacks_, routeStatus_,
                                          routeStatusV6_)};
  Velo::MemberSubscriber<ReprogrammerWithSubscriber> subscriber_{*this};
};

TEST_F(ReprogrammerWithSubscriber, AsksForNoActionThatLostItsUserAfterAnotherGotRoom) {
  use();
  chip_->capacityIs(2);
  reprogrammer_.step();
  expectOnlyUsedActions();
}

TEST_F(ReprogrammerWithSubscriber, AsksForNoActionThatLostItsUserAfterThePauseOfAnother) {
  chip_->capacityIs(2);
  chip_->faultPlan().anyFaultsIs(2);
  use();
  reprogrammer_.step();
  reprogrammer_.step();
  expectOnlyUsedActions();
}

TEST_F(ReprogrammerWithSubscriber, RetriesNoActionThatLostItsUserMeanwhile) {
  use();
  chip_->capacityIs(2);
  reprogrammer_.retry();
  expectOnlyUsedActions();
}

}  // namespace
}  // namespace ZelAgent
