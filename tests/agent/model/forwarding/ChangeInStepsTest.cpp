// A change of the configuration that is made in steps, and what others see between two of them.
#include <gmock/gmock.h>

#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Velo/Subscriber.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/CallReport.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/model/routes/RouteTexts.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ChangeInSteps : public ::testing::Test {
 protected:
  ChangeInSteps() {
    before_ = configurationOf({{{"red"}, {"old", "DEFAULT"}}, {"red", "old"}, {"e1", "e2"}});
    before_.networkInstances[0].staticRoutes.push_back(routeOf("10.0.0.0/8", {"via e8"}));
    after_ = configurationOf({{{"red", "blue"}, {"blue"}}, {"blue", "red", "red"}, {"e2", "e3"}});
    after_.networkInstances[0].staticRoutes.push_back(routeOf("10.1.0.0/16", {"via e9"}));
    agent_.apply(before_);
    agent_.chipObserverIs([this](const ChipCall& call) {
      const std::string text = toText(call, agent_.chip());
      note(text.substr(0, text.find_first_of(" ")));
      calls_.push_back(text);
    });
  }
  ~ChangeInSteps() override { agent_.chipObserverIs({}); }

  // Adds the event to the order if it is new.
  void note(const std::string& event) {
    if (noted_.insert(event).second) order_.push_back(event);
  }
  void noteFacts() {
    if (agent_.routeStatus().vrfStatus("blue")) note("blue has a status");
    if (!agent_.routeStatus().vrfStatus("old")) note("old has no status");
    if (agent_.fallbackConfig().fallbackVrfHas("red")) note("red has a fallback");
    if (!agent_.fallbackConfig().fallbackVrfHas("old")) note("old has no fallback");
    if (agent_.configuration() == after_) note("the configuration is in force");
  }
  void completeSteps() {
    while (agent_.isChanging()) {
      agent_.step();
      noteFacts();
    }
  }
  // Steps until a rule of the interface has changed.
  void stepUntilReached(const std::string& intf) {
    while (agent_.isChanging() && !agent_.isBeingChanged(intf))
      agent_.step();
    ASSERT_TRUE(agent_.isChanging());
  }

  ForwardingAgent agent_{16};
  Configuration before_;
  Configuration after_;
  std::vector<std::string> calls_;
  std::vector<std::string> order_;
  std::set<std::string> noted_;
};

TEST_F(ChangeInSteps, ChangesNothingAtItsBegin) {
  agent_.begin(after_);
  EXPECT_TRUE(agent_.isChanging());
  EXPECT_THAT(calls_, IsEmpty());
  EXPECT_EQ(agent_.configuration(), before_);
}

TEST_F(ChangeInSteps, MakesTheCallsOfAChangeAtOnce) {
  agent_.apply(after_);
  const std::vector<std::string> atOnce = std::exchange(calls_, {});
  agent_.apply(before_);
  calls_.clear();
  agent_.begin(after_);
  completeSteps();
  EXPECT_EQ(calls_, atOnce);
  EXPECT_EQ(agent_.configuration(), after_);
  EXPECT_EQ(agent_.users(), usersOfActions(after_));
  EXPECT_EQ(agent_.state(UserLists::none).ruleTable.refused, 0U);
}

TEST_F(ChangeInSteps, KeepsTheOrderOfApply) {
  agent_.begin(after_);
  completeSteps();
  EXPECT_THAT(order_, ElementsAre("blue has a status", "setRoute", "updateVrf",
                                  "red has a fallback", "createVrf", "addRule", "removeRule",
                                  "deleteVrf", "the configuration is in force",
                                  "old has no fallback", "old has no status", "removeRoute"));
}

TEST_F(ChangeInSteps, TakesTheRulesAndTheConfigurationInOneStep) {
  after_.networkInstances[0].policies[0].policyId = "Q";
  for (PolicyBinding& binding : after_.networkInstances[0].policyBindings)
    binding.policyId = "Q";
  agent_.begin(after_);
  while (agent_.isChanging()) {
    agent_.step();
    const bool isAfter = agent_.configuration() == after_;
    EXPECT_EQ(agent_.rules().front().user.policyId, isAfter ? "Q" : "P");
    EXPECT_EQ(agent_.policyIntfs().contains("e3"), isAfter);
    EXPECT_EQ(agent_.names().interfaces.contains("e3"), isAfter);
  }
  EXPECT_EQ(agent_.configuration(), after_);
}

TEST_F(ChangeInSteps, ShowsTheRulesBeforeItUntilItReachesTheInterface) {
  agent_.begin(after_);
  stepUntilReached("e2");
  const RuleStates rules = agent_.rules();
  ASSERT_EQ(rules.size(), 4U);
  for (const RuleState& rule : rules) {
    const bool isReached = rule.user.interface == "e2";
    EXPECT_EQ(rule.place.has_value(), !isReached);
    EXPECT_EQ(rule.isBeingChanged, isReached);
    EXPECT_EQ(rule.reason, "");
    EXPECT_FALSE(rule.isPrevious);
  }
  EXPECT_EQ(agent_.ruleCounts("e2").refused, 0U);
  EXPECT_EQ(agent_.state(UserLists::none).ruleTable.refused, 0U);
}

// The policy and the numbers of its rules change, and no rule of the chip.
TEST_F(ChangeInSteps, HasReachedAnInterfaceWithOnlyOtherStatuses) {
  after_ = before_;
  NetworkInstance& instance = after_.networkInstances[0];
  instance.policies[0].policyId = "Q";
  for (PolicyBinding& binding : instance.policyBindings)
    binding.policyId = "Q";
  agent_.begin(after_);
  stepUntilReached("e1");
  for (const RuleState& rule : agent_.rules("e1")) {
    EXPECT_TRUE(rule.isBeingChanged);
    EXPECT_FALSE(rule.isPrevious);
  }
  EXPECT_TRUE(agent_.rules("e2").front().place.has_value());
  completeSteps();
  EXPECT_THAT(calls_, IsEmpty());
  EXPECT_TRUE(agent_.rules("e1").front().place.has_value());
  EXPECT_EQ(agent_.rules("e1").front().user.policyId, "Q");
}

TEST_F(ChangeInSteps, ChangesTheRulesThatNameAPrefixSet) {
  Rule rule{9, {}, Discard{}};
  rule.match.family = IpFamily::v4;
  rule.match.sourceSet = "pods";
  before_.networkInstances[0].policies[0].rules.push_back(rule);
  before_.prefixSets = {{"pods", IpFamily::v4, {parseIpPrefix("10.0.0.0/8").value()}, {}}};
  agent_.apply(before_);
  calls_.clear();
  Configuration wider = before_;
  wider.prefixSets[0].prefixes.push_back(parseIpPrefix("11.0.0.0/8").value());
  agent_.begin(wider);
  completeSteps();
  EXPECT_THAT(calls_, ElementsAre("addRule e1 at 3: ipv4 source-set 10.0.0.0/8,11.0.0.0/8, discard",
                                  "addRule e2 at 3: ipv4 source-set 10.0.0.0/8,11.0.0.0/8, discard",
                                  "removeRule e1 at 2: ipv4 source-set 10.0.0.0/8, discard",
                                  "removeRule e2 at 2: ipv4 source-set 10.0.0.0/8, discard"));
}

TEST_F(ChangeInSteps, IsCompletedBeforeAnotherConfiguration) {
  agent_.begin(after_);
  stepUntilReached("e2");
  agent_.apply(before_);
  EXPECT_FALSE(agent_.isChanging());
  EXPECT_EQ(agent_.users(), usersOfActions(before_));
  EXPECT_EQ(agent_.acl().rulesInUse(), 4U);
}

TEST_F(ChangeInSteps, LeavesNothingIfAllIsRemovedMeanwhile) {
  agent_.begin(after_);
  stepUntilReached("e2");
  agent_.removeAll();
  EXPECT_EQ(agent_.acl().rulesInUse(), 0U);
  EXPECT_TRUE(agent_.chip().resources().empty());
  EXPECT_TRUE(agent_.rules().empty());
}

// Throws at the first status of a rule.
class StatusFailure final {
 public:
  explicit StatusFailure(const ForwardingAgent& agent) : status_(agent.ruleStatus()) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void*,
                              const void*) {
      auto& self = Velo::MemberSubscriber<StatusFailure>::ownerOf(subscriber);
      if (!std::exchange(self.hasThrown_, true)) throw std::runtime_error("no status");
    };
    status_.publisher().subscriberIs(subscriber_);
  }
  StatusFailure(const StatusFailure&) = delete;
  StatusFailure& operator=(const StatusFailure&) = delete;
  ~StatusFailure() { status_.publisher().subscriberDel(subscriber_); }

 private:
  const TrafficPolicy::Status& status_;
  bool hasThrown_ = false;
  Velo::MemberSubscriber<StatusFailure> subscriber_{*this};
};

TEST_F(ChangeInSteps, EndsWithAFailure) {
  agent_.begin(after_);
  {
    const StatusFailure failure(agent_);
    EXPECT_THROW(completeSteps(), std::runtime_error);
  }
  EXPECT_FALSE(agent_.isChanging());
  EXPECT_FALSE(agent_.isBeingChanged("e2"));
  agent_.apply(before_);
  EXPECT_EQ(agent_.users(), usersOfActions(before_));
  EXPECT_TRUE(agent_.policySm().policySm()->ready());
}

}  // namespace
}  // namespace ZelAgent
