// A full chip recovers: whatever was refused for lack of room is programmed when room appears.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Velo/Subscriber.h"
#include "agent/language/Limits.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/model/packets/PacketText.h"
#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

using Chips::Hook;
using ZelVrfSelectionPolicy::failureCodes;

// Records the statuses of an action in the order in which they are published.
class PublishedStatuses final {
 public:
  PublishedStatuses(ForwardingAgent& agent, VrfAction action)
      : statuses_(agent.policySm().vrfSm()->vrfHwStatus()), action_(std::move(action)) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                              const void* key, const void*) {
      auto& self = Velo::MemberSubscriber<PublishedStatuses>::ownerOf(subscriber);
      if (*static_cast<const VrfAction*>(key) == self.action_) self.record();
    };
    statuses_->publisher().subscriberIs(subscriber_);
  }
  PublishedStatuses(const PublishedStatuses&) = delete;
  PublishedStatuses& operator=(const PublishedStatuses&) = delete;
  ~PublishedStatuses() { statuses_->publisher().subscriberDel(subscriber_); }

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  void record() {
    if (!text_.empty()) text_ += ", ";
    if (!statuses_->hwStatusHas(action_)) {
      text_ += "none";
    } else {
      text_ += failureCodes.name(statuses_->hwStatus(action_).failureReason());
    }
  }

  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_;
  VrfAction action_;
  std::string text_;
  Velo::MemberSubscriber<PublishedStatuses> subscriber_{*this};
};

class FullChip : public ::testing::Test {
 protected:
  FullChip() {
    agent_.chip().hookObserverIs([this](const Chips::HookCall& call) { record(call); });
  }

  void apply(const SmallConfiguration& small) { agent_.apply(configurationOf(small)); }

  // Rules into these VRFs, all of which are configured.
  void select(const std::vector<std::string>& vrfs) {
    apply({{{"red"}, {"blue"}, {"green"}, {"grey"}}, vrfs, {"e1"}});
  }

  // The hook calls since the last time: "create red, update red!", failures with a '!'.
  [[nodiscard]] std::string newCalls() { return std::exchange(calls_, ""); }

  [[nodiscard]] std::string reasonOf(const VrfAction& action) {
    return std::string(failureCodes.name(agent_.statuses().at(action).failureReason()));
  }

  ForwardingAgent agent_{1};

 private:
  void record(const Chips::HookCall& call) {
    if (!calls_.empty()) calls_ += ", ";
    if (call.hook == Hook::createVrf) calls_ += "create ";
    if (call.hook == Hook::updateVrf) calls_ += "update ";
    if (call.hook == Hook::deleteVrf) calls_ += "delete ";
    calls_ += call.action.vrfName().str() + (call.failed ? "!" : "");
  }

  std::string calls_;
};

TEST_F(FullChip, EndsWithTheNewActionOfAConfigurationThatReplacesItsOnlyOne) {
  const PublishedStatuses published(agent_, blue);
  select({"red"});
  EXPECT_EQ(newCalls(), "create red");
  select({"blue"});
  EXPECT_EQ(newCalls(), "create blue!, delete red, update blue");
  const AgentState state = agent_.state();
  EXPECT_EQ(state.chip.used, 1U);
  ASSERT_EQ(state.actions.size(), 1U);
  EXPECT_EQ(state.actions[0].action, blue);
  EXPECT_EQ(state.actions[0].users, 1U);
  EXPECT_EQ(state.actions[0].status, ZelVrfSelectionPolicy::HwStatus());
  EXPECT_TRUE(state.actions[0].resource.has_value());
  EXPECT_EQ(published.text(), "failureVrfResourceExhausted, failureNone");
}

TEST_F(FullChip, ForwardsPacketsByTheActionThatReplacesItsOnlyOne) {
  const auto into = [](const std::string& vrf) {
    OpenConfigBuilder configuration;
    configuration.vrf("red").vrf("blue");
    configuration.route("red", "0.0.0.0/0", "e2").route("blue", "0.0.0.0/0", "e3");
    configuration.policy("P", {ruleOf(1, "", {}, toVrf(vrf))}, {"e1"});
    return configuration.configuration();
  };
  agent_.apply(into("red"));
  agent_.apply(into("blue"));
  PacketFields fields;
  fields.source = parseIpAddress("192.0.2.1").value();
  fields.destination = parseIpAddress("203.0.113.1").value();
  EXPECT_EQ(agent_.forwarder().forward("e1", buildPacket(fields)).egress, "e3");
}

TEST_F(FullChip, AsksForNothingWhileItHasNoRoom) {
  select({"red", "blue"});
  EXPECT_EQ(newCalls(), "create red, create blue!");
  for (int step = 0; step < 100; ++step)
    agent_.complete();
  EXPECT_EQ(newCalls(), "");
  EXPECT_FALSE(agent_.isRecovering());
}

TEST_F(FullChip, GivesRoomThatAppearsToTheOldestRefusal) {
  select({"red", "green"});
  select({"red", "green", "blue"});
  (void)newCalls();
  select({"green", "blue"});
  EXPECT_EQ(newCalls(), "delete red, update green");
  agent_.chip().capacityIs(2);
  agent_.complete();
  EXPECT_EQ(newCalls(), "update blue");
}

TEST_F(FullChip, ForgetsARefusedActionThatIsNoLongerUsed) {
  select({"red", "green"});
  select({"red"});
  select({"red", "blue"});
  select({"red", "blue", "green"});
  (void)newCalls();
  agent_.chip().capacityIs(2);
  agent_.complete();
  EXPECT_EQ(newCalls(), "update blue");
}

// There is no room for the second rule, so the first one is not replaced for it.
TEST_F(FullChip, KeepsTheResourceOfARuleWhileThePolicyThatReplacesItDoesNotFit) {
  agent_.ruleCapacityIs(1);
  select({"red"});
  agent_.chip().capacityIs(0);
  (void)newCalls();
  select({"green", "blue"});
  EXPECT_EQ(newCalls(), "create green!, delete green");
  EXPECT_EQ(reasonOf(red), "failureNone");
  EXPECT_EQ(agent_.state().ruleTable.refused, 2U);
}

TEST_F(FullChip, GivesRoomThatAnActionDoesNotGetToTheNextOne) {
  select({"red", "green", "blue"});
  (void)newCalls();
  agent_.chip().capacityIs(2);
  agent_.chip().faultPlan().vrfFaultsIs("green", 1);
  agent_.complete();
  EXPECT_EQ(newCalls(), "update green!, update blue");
  EXPECT_EQ(reasonOf(VrfAction("green", PolicyMap::ActionType::vrf)), "failureVrfResourceAlloc");
}

TEST_F(FullChip, GetsABoundedNumberOfCallsInAStepWhenMuchRoomAppears) {
  constexpr std::size_t most = Limits::retriesOfAStep;
  SmallConfiguration many{{}, {}, {"e1"}};
  for (std::size_t vrf = 0; vrf < most + 2; ++vrf) {
    many.vrfs.push_back({"vrf" + std::to_string(vrf)});
    many.rules.push_back(many.vrfs.back().name);
  }
  agent_.chip().capacityIs(0);
  apply(many);
  agent_.chip().capacityIs(1000);
  EXPECT_TRUE(agent_.isRecovering());
  agent_.complete();
  EXPECT_EQ(agent_.chip().resources().size(), most);
  EXPECT_TRUE(agent_.isRecovering());
  agent_.complete();
  EXPECT_EQ(agent_.chip().resources().size(), most + 2);
  EXPECT_FALSE(agent_.isRecovering());
}

TEST_F(FullChip, EndsWithAllNewActionsOfAConfigurationThatReplacesMany) {
  constexpr std::size_t many = Limits::retriesOfAStep + 2;
  agent_.chip().capacityIs(many);
  for (const std::string name : {"old", "new"}) {
    SmallConfiguration small{{}, {}, {"e1"}};
    for (std::size_t vrf = 0; vrf < many; ++vrf) {
      small.vrfs.push_back({name + std::to_string(vrf)});
      small.rules.push_back(small.vrfs.back().name);
    }
    apply(small);
    EXPECT_TRUE(isProgrammed(agent_.state())) << name;
  }
}

TEST_F(FullChip, AsksForAllAtOnceByTheCommand) {
  select({"red", "green", "blue"});
  (void)newCalls();
  agent_.retry();
  EXPECT_EQ(newCalls(), "update green!, update blue!");
  agent_.chip().capacityIs(2);
  agent_.retry();
  EXPECT_EQ(newCalls(), "update green, update blue!");
}

TEST_F(FullChip, ShowsWhyWhenAnActionThatWaitsForRoomLosesItsId) {
  select({"red", "blue"});
  agent_.routeStatus().vrfStatus("blue")->vrfIdIs(0);
  agent_.complete();
  EXPECT_EQ(reasonOf(blue), "failureVrfResourceAlloc");
  agent_.routeStatus().vrfStatus("blue")->vrfIdIs(7);
  agent_.complete();
  EXPECT_EQ(reasonOf(blue), "failureVrfResourceExhausted");
  select({"blue"});
  EXPECT_EQ(reasonOf(blue), "failureNone");
}

}  // namespace
}  // namespace ZelAgent
