// What the daemon logs of actions and rules that the chip refuses.
#include "agent/serve/daemon/ProgrammingLog.h"

#include <gmock/gmock.h>

#include <optional>
#include <vector>

#include "agent/commands/served/ServedAgent.h"
#include "agent/serve/daemon/ChangeSlices.h"
#include "agent/serve/daemon/RecoveryTimer.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/ManualScheduler.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class ProgrammingLogTest : public ::testing::Test {
 protected:
  ProgrammingLogTest() {
    log_.emplace(
        scheduler_, served_.agent(), [this](LogPriority priority, const std::string& line) {
          printed_.push_back('<' + std::to_string(static_cast<int>(priority)) + '>' + line);
        });
  }
  // The lines since the last call.
  std::vector<std::string> printed() {
    scheduler_.rounds();
    return std::exchange(printed_, {});
  }

  std::vector<std::string> printed_;
  ManualScheduler scheduler_;
  ServedAgent served_{writeSmall("logged.json", {{{"red"}}, {"red"}, {"e1"}}), 16};
  std::optional<ProgrammingLog> log_;
};

TEST_F(ProgrammingLogTest, IsEmptyWhileAllIsProgrammed) {
  (void)served_.start();
  (void)served_.reload();
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(ProgrammingLogTest, HasAnActionThatTheChipRefusesAndItsRecovery) {
  const RecoveryTimer timer(scheduler_, served_);
  served_.agent().chip().faultPlan().anyFaultsIs(1);
  (void)served_.start();
  const std::vector<std::string> failure = printed();
  const std::string action = toText(served_.agent().state().actions.at(0).action);
  ASSERT_EQ(failure.size(), 1U);
  EXPECT_THAT(failure[0],
              StartsWith("<4>warning: not programmed: " + action + ": failureVrfResource"));
  scheduler_.pass(2 * RecoveryTimer::period);
  EXPECT_THAT(printed(), ElementsAre("<5>programmed again: " + action));
}

TEST_F(ProgrammingLogTest, HasTheRulesOfAnInterfaceThatTheChipRefusesAndTheirRecovery) {
  served_.agent().ruleCapacityIs(0);
  (void)served_.start();
  const std::vector<std::string> failure = printed();
  ASSERT_EQ(failure.size(), 1U);
  EXPECT_THAT(failure[0], StartsWith("<4>warning: not programmed: rules on e1: 1 rule: "));
  served_.agent().ruleCapacityIs(16);
  EXPECT_THAT(printed(), ElementsAre("<5>programmed again: rules on e1"));
}

TEST_F(ProgrammingLogTest, HasOneLineForAllRulesOfAnInterface) {
  served_.agent().ruleCapacityIs(0);
  writeSmall("logged.json", {{{"red"}}, {"red", "red", "red"}, {"e1", "e2"}});
  (void)served_.start();
  EXPECT_THAT(printed(),
              ElementsAre(StartsWith("<4>warning: not programmed: rules on e1: 3 rules: "),
                          StartsWith("<4>warning: not programmed: rules on e2: 3 rules: ")));
}

TEST_F(ProgrammingLogTest, HasARecoveryWhenTheRefusedRuleIsRemovedAlone) {
  served_.agent().ruleCapacityIs(1);
  (void)served_.start();
  writeSmall("logged.json", {{{"red"}}, {"red", "red"}, {"e1"}});
  (void)served_.reload();
  EXPECT_THAT(printed(), ElementsAre(StartsWith("<4>warning: not programmed: rules on e1: ")));
  writeSmall("logged.json", {{{"red"}}, {"red"}, {"e1"}});
  (void)served_.reload();
  EXPECT_THAT(printed(), ElementsAre("<5>programmed again: rules on e1"));
}

TEST_F(ProgrammingLogTest, HasARecoveryWhenAllRulesOfAnInterfaceAreRemovedFromItsPolicy) {
  served_.agent().ruleCapacityIs(0);
  (void)served_.start();
  printed();
  writeSmall("logged.json", {{{"red"}}, {}, {"e1"}});
  (void)served_.reload();
  EXPECT_THAT(printed(), ElementsAre("<5>programmed again: rules on e1"));
}

TEST_F(ProgrammingLogTest, HasNoRecoveryOfRulesThatAreRemoved) {
  served_.agent().ruleCapacityIs(0);
  (void)served_.start();
  printed();
  served_.agent().removeAll();
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(ProgrammingLogTest, HasNoRecoveryOfAnInterfaceThatAReloadInSlicesRemoves) {
  const ChangeSlices slices(scheduler_, served_);
  served_.sliceTimeIs(std::chrono::milliseconds(0));
  served_.agent().ruleCapacityIs(0);
  writeSmall("logged.json", {{{"red"}}, {"red"}, {"e1", "e2"}});
  (void)served_.start();
  printed();
  writeSmall("logged.json", {{{"red"}}, {"red"}, {"e2"}});
  const SlicedChangePtr change = served_.beginReload();
  EXPECT_THAT(printed(), IsEmpty());
  EXPECT_TRUE(change->isComplete);
}

TEST_F(ProgrammingLogTest, HasTheRulesThatAreRefusedDuringAReloadInSlicesAfterIt) {
  const ChangeSlices slices(scheduler_, served_);
  served_.sliceTimeIs(std::chrono::milliseconds(0));
  (void)served_.start();
  served_.agent().ruleCapacityIs(1);
  writeSmall("logged.json", {{{"red"}}, {"red", "red"}, {"e1"}});
  const SlicedChangePtr change = served_.beginReload();
  while (!change->isComplete) {
    EXPECT_THAT(printed_, IsEmpty());
    scheduler_.round();
  }
  EXPECT_THAT(printed(), ElementsAre(StartsWith("<4>warning: not programmed: rules on e1: ")));
}

TEST_F(ProgrammingLogTest, EndsWithItsObject) {
  log_.reset();
  served_.agent().ruleCapacityIs(0);
  served_.agent().chip().faultPlan().anyFaultsIs(1);
  (void)served_.start();
  EXPECT_THAT(printed(), IsEmpty());
}

}  // namespace
}  // namespace ZelAgent
