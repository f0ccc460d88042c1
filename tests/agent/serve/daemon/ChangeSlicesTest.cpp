// What clients and signals meet while a configuration is applied in slices.
#include "agent/serve/daemon/ChangeSlices.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "agent/serve/daemon/RecoveryTimer.h"
#include "agent/serve/daemon/RequestedReloads.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/ManualScheduler.h"
#include "tests/agent/serve/daemon/ScriptedClient.h"
#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// Each slice of a change is one step.
class SlicedChanges : public ::testing::Test {
 protected:
  SlicedChanges() {
    (void)served_.start();
    served_.sliceTimeIs(std::chrono::milliseconds(0));
    fileHas("blue");
    for (ScriptedClient* const client : {&first_, &second_})
      server_->accept(client->connect());
  }
  static std::string fileHas(const std::string& vrf) {
    return writeSmall("slices.json", {{{vrf}}, {vrf, vrf}, {"e1", "e2", "e3"}});
  }
  static std::string otherFile() {
    return writeSmall("other.json", {{{"green"}}, {"green"}, {"e1", "e2", "e3"}});
  }
  // The first client has a change begun, and it has reached the second interface.
  void begin(const std::string& command) {
    first_.send(command + '\n');
    while (!served_.agent().isBeingChanged("e2"))
      scheduler_.round();
    ASSERT_TRUE(served_.isChanging());
    ASSERT_EQ(first_.received(), "");
  }
  [[nodiscard]] std::string inForce() {
    return served_.agent().configuration().networkInstances.back().name;
  }

  ManualScheduler scheduler_;
  ServedAgent served_{fileHas("red"), 8};
  ScriptedClient first_;
  ScriptedClient second_;
  std::unique_ptr<ControlServer> server_ = std::make_unique<ControlServer>(
      scheduler_, served_, ServerLimits{256, std::size_t{1} << 20U, std::chrono::seconds(10)});
};

TEST_F(SlicedChanges, LeaveTimeToAnswerAnotherClient) {
  begin("reload");
  second_.send("show rules interface e2\nshow config\n");
  scheduler_.round();
  EXPECT_THAT(second_.received(), HasSubstr("the rules of the interface are being changed"));
  scheduler_.round();
  EXPECT_THAT(second_.received(), HasSubstr("reloads      0 applied, 0 refused"));
  EXPECT_TRUE(served_.isChanging());
  EXPECT_EQ(first_.received(), "");
}

TEST_F(SlicedChanges, AreAnsweredWhenTheyAreComplete) {
  begin("reload");
  scheduler_.rounds();
  EXPECT_FALSE(served_.isChanging());
  const std::string answer = first_.received();
  EXPECT_THAT(answer, HasSubstr("slices.json applied\n"));
  EXPECT_THAT(answer, HasSubstr("rules: 6 added, 0 replaced, 0 moved, 6 removed, 0 refused\n"));
  EXPECT_EQ(inForce(), "blue");
  EXPECT_EQ(served_.record().reloadsApplied, 1U);
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(SlicedChanges, AreMadeForTheCommandConfigToo) {
  const std::string file = otherFile();
  begin("config " + file);
  second_.send("show actions\n");
  scheduler_.round();
  EXPECT_THAT(second_.received(), StartsWith(served_.record().inForce));
  EXPECT_TRUE(served_.isChanging());
  scheduler_.rounds();
  EXPECT_THAT(first_.received(), StartsWith("config " + file + "\n  actions: 1 created"));
  EXPECT_EQ(inForce(), "green");
  EXPECT_EQ(served_.record().inForce, file);
  EXPECT_EQ(served_.record().reloadsApplied, 0U);
}

TEST_F(SlicedChanges, LetAnEventWait) {
  begin("reload");
  second_.send("chip capacity 7\n");
  scheduler_.round();
  EXPECT_EQ(second_.received(), "");
  EXPECT_EQ(served_.agent().chip().capacity(), 8U);
  scheduler_.rounds();
  EXPECT_THAT(second_.received(), StartsWith("chip capacity 7\n"));
  EXPECT_EQ(served_.agent().chip().capacity(), 7U);
  EXPECT_EQ(inForce(), "blue");
}

TEST_F(SlicedChanges, LetAWrongEventNotWait) {
  begin("reload");
  second_.send("chip capacity many\n");
  scheduler_.round();
  EXPECT_THAT(second_.received(), StartsWith("error: "));
  EXPECT_TRUE(served_.isChanging());
}

TEST_F(SlicedChanges, LetOnlyPathsOnInterfacesThatTheyReachWait) {
  begin("reload");
  second_.send("explain e3 ipv4 10.0.0.1 to 10.0.0.2\nexplain e2 ipv4 10.0.0.1 to 10.0.0.2\n");
  scheduler_.round();
  EXPECT_TRUE(served_.isChanging());
  EXPECT_THAT(second_.received(), HasSubstr("rule 1 of P, any: matches\n"));
  while (served_.agent().isBeingChanged("e2")) {
    EXPECT_EQ(second_.received(), "");
    scheduler_.round();
  }
  scheduler_.rounds();
  EXPECT_THAT(second_.received(), HasSubstr("rule 1 of P, any: matches\n"));
}

TEST_F(SlicedChanges, LetAPathWaitThatFindsItsInterfaceGone) {
  writeSmall("slices.json", {{{"blue"}}, {"blue", "blue"}, {"e1", "e3"}});
  begin("reload");
  second_.send("explain e2 ipv4 10.0.0.1 to 10.0.0.2\n");
  scheduler_.round();
  EXPECT_EQ(second_.received(), "");
  scheduler_.rounds();
  EXPECT_THAT(second_.received(), StartsWith("error: explain INTERFACE PACKET: INTERFACE"));
}

TEST_F(SlicedChanges, CauseNoFailedRules) {
  begin("reload");
  second_.send("show rules failed\n");
  scheduler_.round();
  EXPECT_TRUE(served_.isChanging());
  EXPECT_EQ(second_.received(), "  no rules\n.\n");
}

TEST_F(SlicedChanges, LetAnotherReloadWaitThatReadsTheFileThen) {
  begin("reload");
  second_.send("reload\n");
  scheduler_.round();
  fileHas("green");
  scheduler_.rounds();
  EXPECT_THAT(first_.received(), HasSubstr("createVrf actionVrf blue"));
  EXPECT_THAT(second_.received(), HasSubstr("createVrf actionVrf green"));
  EXPECT_EQ(inForce(), "green");
  EXPECT_EQ(served_.record().reloadsApplied, 2U);
}

TEST_F(SlicedChanges, AreFollowedByOneReloadForAllSignalsOfTheMeantime) {
  std::vector<std::string> printed;
  RequestedReloads signals(scheduler_, served_,
                           [&](const auto& lines) { printed.push_back(lines.back()); });
  begin("reload");
  for (int signal = 0; signal < 3; ++signal) {
    signals.request();
    scheduler_.round();
  }
  EXPECT_THAT(printed, IsEmpty());
  scheduler_.rounds();
  EXPECT_THAT(printed, ElementsAre(served_.record().file + " applied"));
  EXPECT_EQ(served_.record().reloadsApplied, 2U);
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(SlicedChanges, OfASignalAreFollowedByAnotherReloadForASignalOfTheMeantime) {
  std::vector<std::string> printed;
  RequestedReloads signals(scheduler_, served_,
                           [&](const auto& lines) { printed.push_back(lines.back()); });
  signals.request();
  scheduler_.round();
  EXPECT_TRUE(served_.isChanging());
  signals.request();
  scheduler_.rounds();
  EXPECT_EQ(printed.size(), 2U);
  EXPECT_EQ(served_.record().reloadsApplied, 2U);
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(SlicedChanges, OfAWrongFileChangeNothing) {
  writeFile("slices.json", "{");
  first_.send("reload\n");
  scheduler_.round();
  EXPECT_THAT(first_.received(), StartsWith("error: " + served_.record().file));
  EXPECT_FALSE(served_.isChanging());
  EXPECT_EQ(inForce(), "red");
  EXPECT_EQ(served_.record().reloadsRefused, 1U);
}

TEST_F(SlicedChanges, OfAWrongFileOfTheCommandConfigChangeNothing) {
  const std::string file = writeFile("other.json", "{");
  first_.send("config " + file + '\n');
  scheduler_.round();
  EXPECT_THAT(first_.received(), StartsWith("error: config FILE: " + file));
  EXPECT_FALSE(served_.isChanging());
  EXPECT_EQ(inForce(), "red");
  EXPECT_EQ(served_.record().reloadsRefused, 0U);
}

TEST_F(SlicedChanges, AreCompletedAlthoughTheirClientHasLeft) {
  begin("reload");
  first_.breakWrites();
  scheduler_.rounds();
  EXPECT_EQ(inForce(), "blue");
  EXPECT_FALSE(first_.isConnected());
  second_.send("show config\n");
  scheduler_.rounds();
  EXPECT_THAT(second_.received(), HasSubstr("1 applied"));
}

TEST_F(SlicedChanges, LetTheRecoveryWait) {
  const RecoveryTimer recovery(scheduler_, served_);
  (void)served_.play(PlanChipFaults{"red", 1});
  (void)served_.play(SetVrfId{"red", 9});
  ASSERT_EQ(scheduler_.running(), 1U);
  begin("reload");
  const auto before = served_.agent().chip().hookCounts();
  scheduler_.pass(RecoveryTimer::period);
  EXPECT_EQ(served_.agent().chip().hookCounts().updates, before.updates);
  scheduler_.rounds();
  EXPECT_EQ(inForce(), "blue");
  EXPECT_EQ(scheduler_.running(), 0U);
}

TEST_F(SlicedChanges, EndCleanlyWithTheDaemon) {
  begin("reload");
  server_.reset();
  served_.agent().removeAll();
  EXPECT_EQ(served_.agent().acl().rulesInUse(), 0U);
  EXPECT_TRUE(served_.agent().chip().resources().empty());
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(SlicedChanges, AreOneSliceIfThereIsTime) {
  served_.sliceTimeIs(std::chrono::hours(1));
  first_.send("reload\n");
  scheduler_.round();
  EXPECT_THAT(first_.received(), HasSubstr("applied"));
  EXPECT_EQ(inForce(), "blue");
}

}  // namespace
}  // namespace ZelAgent
