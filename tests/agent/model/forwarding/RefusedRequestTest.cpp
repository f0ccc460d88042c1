// What the chip refuses for another reason than lack of room is requested again after a pause.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "agent/language/Limits.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "tests/agent/SmallConfigurations.h"

namespace ZelAgent {
namespace {

constexpr std::uint32_t manyFaults = 1000;

class RefusedRequest : public ::testing::Test {
 protected:
  void apply(const SmallConfiguration& small) { agent_.apply(configurationOf(small)); }
  void play(const std::string& line) { (void)player_.play(readEvent(line).value()); }

  // The steps with a hook call, counted from 1.
  [[nodiscard]] std::vector<int> stepsWithCalls(int steps) {
    std::vector<int> found;
    for (int step = 1; step <= steps; ++step) {
      const auto before = updates();
      agent_.complete();
      if (updates() != before) found.push_back(step);
    }
    return found;
  }
  [[nodiscard]] std::uint64_t updates() { return agent_.chip().hookCounts().updates; }
  [[nodiscard]] bool isProgrammed() { return !hasFailedAction(agent_.state()); }

  ForwardingAgent agent_{16};
  EventPlayer player_{agent_, "."};
};

TEST_F(RefusedRequest, IsRepeatedAfterPausesThatGrowToABound) {
  agent_.chip().faultPlan().anyFaultsIs(manyFaults);
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_TRUE(agent_.isRecovering());
  EXPECT_EQ(Limits::pauseSteps, 32U);
  EXPECT_EQ(stepsWithCalls(130), (std::vector<int>{1, 3, 7, 15, 31, 63, 95, 127}));
}

TEST_F(RefusedRequest, IsNotRepeatedAfterItSucceeds) {
  agent_.chip().faultPlan().anyFaultsIs(3);
  apply({{{"red"}}, {"red"}, {"e1"}});
  EXPECT_EQ(stepsWithCalls(100), (std::vector<int>{1, 3, 7}));
  EXPECT_TRUE(isProgrammed());
  EXPECT_FALSE(agent_.isRecovering());
}

TEST_F(RefusedRequest, BeginsWithTheShortestPauseAfterASuccess) {
  agent_.chip().faultPlan().anyFaultsIs(3);
  apply({{{"red"}}, {"red"}, {"e1"}});
  (void)stepsWithCalls(20);
  play("chip fail red 2");
  play("vrf red id 9");
  EXPECT_FALSE(isProgrammed());
  EXPECT_EQ(stepsWithCalls(20), (std::vector<int>{1, 3}));
}

TEST_F(RefusedRequest, IsNotRepeatedForAnActionThatIsGone) {
  agent_.chip().faultPlan().anyFaultsIs(manyFaults);
  apply({{{"red"}}, {"red"}, {"e1"}});
  apply({{{"red"}}, {}, {"e1"}});
  EXPECT_EQ(stepsWithCalls(100), std::vector<int>());
  EXPECT_FALSE(agent_.isRecovering());
}

TEST_F(RefusedRequest, IsNotRepeatedWhileAVrfHasNoId) {
  apply({{}, {"red"}, {"e1"}});
  EXPECT_FALSE(isProgrammed());
  EXPECT_EQ(stepsWithCalls(100), std::vector<int>());
  EXPECT_FALSE(agent_.isRecovering());
  play("vrf red add id 7");
  EXPECT_TRUE(isProgrammed());
}

TEST_F(RefusedRequest, IsRepeatedAfterAnEqualRefusalWhenTheIdArrived) {
  agent_.chip().faultPlan().anyFaultsIs(3);
  apply({{}, {"red"}, {"e1"}});
  play("vrf red add");
  play("vrf red id 7");
  EXPECT_FALSE(isProgrammed());
  EXPECT_TRUE(agent_.isRecovering());
  EXPECT_EQ(stepsWithCalls(10), std::vector<int>{1});
  EXPECT_TRUE(isProgrammed());
}

TEST_F(RefusedRequest, IsRepeatedAtOnceByTheCommand) {
  agent_.chip().faultPlan().anyFaultsIs(5);
  apply({{{"red"}}, {"red"}, {"e1"}});
  (void)stepsWithCalls(10);
  agent_.chip().faultPlan().anyFaultsIs(0);
  EXPECT_FALSE(isProgrammed());
  const EventEffects effects = player_.play(Retry{});
  EXPECT_EQ(effects.calls.size(), 1U);
  EXPECT_EQ(effects.statusChanges.size(), 1U);
  EXPECT_TRUE(isProgrammed());
}

TEST_F(RefusedRequest, IsRepeatedAtEveryEventButShow) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  play("chip fail red 1");
  play("vrf red id 9");
  play("show");
  EXPECT_FALSE(isProgrammed());
  play("chip capacity 16");
  EXPECT_TRUE(isProgrammed());
}

TEST_F(RefusedRequest, LeavesAStaleResourceOnlyUntilItIsRepeated) {
  apply({{{"red", "blue"}, {"blue"}}, {"red"}, {"e1"}});
  play("chip fail red 1");
  play("fallback red remove");
  EXPECT_TRUE(agent_.state().actions.at(0).resourceIsStale());
  agent_.complete();
  EXPECT_FALSE(agent_.state().actions.at(0).resourceIsStale());
  EXPECT_TRUE(isProgrammed());
}

// The fault hides that the VRF has no id. The repeated request shows it.
TEST_F(RefusedRequest, IsRepeatedAfterAFaultAlthoughTheVrfHasNoId) {
  apply({{{"red"}}, {"red"}, {"e1"}});
  play("vrf red id 0");
  const auto lacksId = agent_.statuses();
  play("chip fail red 1");
  play("decap-nh on");
  EXPECT_NE(agent_.statuses(), lacksId);
  EXPECT_TRUE(agent_.isRecovering());
  EXPECT_EQ(stepsWithCalls(100), std::vector<int>{1});
  EXPECT_EQ(agent_.statuses(), lacksId);
}

}  // namespace
}  // namespace ZelAgent
