// Reloads that are requested more often than they can run, and clients meanwhile.
#include <gmock/gmock.h>

#include <chrono>

#include "agent/serve/daemon/RequestedReloads.h"
#include "tests/agent/SmallConfigurations.h"
#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

class ReloadStorm : public ServedClients {
 protected:
  ReloadStorm() {
    reloaded_.start();
    reloaded_.sliceTimeIs(std::chrono::hours(1));
    reloaded_.changeObserverIs([this] {
      if (stormsLeft_-- > 0) hangUp(60);
    });
    server_ = std::make_unique<ControlServer>(scheduler_, reloaded_, ServerLimits());
    connectAll();
  }
  // The same as a SIGHUP for each.
  void hangUp(int times) {
    for (int i = 0; i < times; ++i)
      reloads_.request();
  }
  [[nodiscard]] std::uint64_t applied() const { return reloaded_.record().reloadsApplied; }

  ServedAgent reloaded_{writeSmall("served.json", {{{"red"}}, {"red"}, {"e1"}}), 8};
  int stormsLeft_ = 0;  // while a reload runs
  RequestedReloads reloads_{scheduler_, reloaded_, [](const auto&) {}};
};

TEST_F(ReloadStorm, BeforeAReloadIsOneReload) {
  hangUp(60);
  EXPECT_EQ(applied(), 0U);
  EXPECT_EQ(scheduler_.rounds(), 1);
  EXPECT_EQ(applied(), 1U);
}

TEST_F(ReloadStorm, DuringAReloadIsOneReloadMore) {
  stormsLeft_ = 1;
  hangUp(1);
  EXPECT_EQ(scheduler_.rounds(), 2);
  EXPECT_EQ(applied(), 2U);
}

TEST_F(ReloadStorm, GivesEachClientATurnBetweenTwoReloads) {
  stormsLeft_ = 100;
  hangUp(60);
  for (ScriptedClient* const client : {&first_, &second_, &third_})
    client->send(request(1) + request(2) + request(3));
  for (int number = 1; number <= 3; ++number) {
    scheduler_.round();
    EXPECT_EQ(applied(), static_cast<std::uint64_t>(number));
    for (ScriptedClient* const client : {&first_, &second_, &third_})
      EXPECT_EQ(client->received(), answer(number));
  }
}

TEST_F(ReloadStorm, AnswersAClientThatComesInTheMiddleInTheNextRound) {
  stormsLeft_ = 100;
  hangUp(60);
  scheduler_.round();
  ScriptedClient late;
  connect(late);
  late.send("show config\n");
  scheduler_.round();
  EXPECT_THAT(late.received(), ::testing::ContainsRegex("reloads +[12] applied, 0 refused"));
  late.endSending();
}

TEST_F(ReloadStorm, OfAFileThatBecomesWrongKeepsTheConfigurationForClients) {
  hangUp(60);
  scheduler_.rounds();
  writeFile("served.json", "{\"network-instances\": [");
  hangUp(60);
  scheduler_.rounds();
  first_.send("show actions\n");
  scheduler_.rounds();
  EXPECT_THAT(first_.received(), ::testing::HasSubstr("red"));
  EXPECT_EQ(reloaded_.record().reloadsRefused, 1U);
}

}  // namespace
}  // namespace ZelAgent
