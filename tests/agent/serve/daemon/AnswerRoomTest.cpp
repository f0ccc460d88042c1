// What clients that read nothing of long answers cost the daemon and the other clients.
#include "agent/serve/daemon/AnswerRoom.h"

#include <gmock/gmock.h>

#include <deque>
#include <string>
#include <vector>

#include "tests/agent/OpenConfigBuilder.h"
#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

using ::testing::StartsWith;

constexpr const char* longRequest = "show vrfs\n";

class LongAnswers : public ServedClients {
 protected:
  LongAnswers() {
    connect(setUp_);
    for (int i = 0; i < 700; ++i)
      ask(setUp_, "vrf " + std::string(90, 'x') + std::to_string(i) + " add\n");
    long_ = ask(setUp_, longRequest);
    EXPECT_GT(long_.size(), Limits::shortAnswerBytes);
    setUp_.endSending();
    roomIs(2 * long_.size());
    connectAll();
  }

  // A new server, where the longest answer is the long one.
  void roomIs(std::size_t total) { limitsAre(total, long_.size()); }
  void limitsAre(std::size_t total, std::size_t longest) {
    ServerLimits limits{256, longest, timeout};
    limits.totalUnsentBytes = total;
    server_ = std::make_unique<ControlServer>(scheduler_, served_, limits);
  }
  // Makes the long answer wait.
  void block(ScriptedClient& client) {
    client.roomIs(0);
    client.send(longRequest);
    scheduler_.rounds();
    EXPECT_EQ(client.waiting(), long_.size());
  }
  std::string ask(ScriptedClient& client, const std::string& line) {
    client.send(line);
    scheduler_.rounds();
    return client.received();
  }

  ScriptedClient setUp_;
  std::string long_;
};

TEST_F(LongAnswers, BeyondTheRoomOfAllClientsAreReplacedByAShortError) {
  block(first_);
  block(second_);
  const std::string refusal = ask(third_, longRequest);
  EXPECT_EQ(refusal, "error: the answer has " + std::to_string(long_.size()) +
                         " bytes, and other answers wait; the room for it is 65536 bytes; try "
                         "again later\n.\n");
  EXPECT_TRUE(third_.isConnected());
}

TEST_F(LongAnswers, OfCommandsThatMayHaveToWaitNeedRoomToo) {
  std::vector<nlohmann::json> rules;
  for (std::uint32_t number = 1; number <= 1500; ++number)
    rules.push_back(ruleOf(number, "ipv4", {{"dscp", 1}}, toVrf("red")));
  served_.agent().apply(
      OpenConfigBuilder().vrf("red").policy("edge", rules, {"e1"}).configuration());
  limitsAre(0, 2 * Limits::shortAnswerBytes);
  connectAll();
  long_ = ask(first_, longRequest);
  const std::string explain = "explain e1 ipv4 192.0.2.1 to 192.0.2.2\n";
  const std::string whole = ask(first_, explain);
  ASSERT_GT(whole.size(), Limits::shortAnswerBytes) << whole;
  block(first_);
  EXPECT_EQ(ask(third_, explain),
            "error: the answer has " + std::to_string(whole.size()) +
                " bytes, and other answers wait; the room for it is 65536 bytes; try again later\n"
                ".\n");
}

TEST_F(LongAnswers, ThatWaitDoNotKeepOtherClientsFromShortCommands) {
  block(first_);
  block(second_);
  EXPECT_EQ(ask(third_, request(1)), answer(1));
  third_.roomIs(0);
  EXPECT_EQ(ask(third_, request(2)), "");
  third_.take(answer(2).size());
  EXPECT_EQ(third_.received(), answer(2));
}

TEST_F(LongAnswers, HaveRoomAgainWhenOneIsTaken) {
  block(first_);
  block(second_);
  EXPECT_THAT(ask(third_, longRequest), StartsWith("error: "));
  first_.take(long_.size() - 1);
  EXPECT_THAT(ask(third_, longRequest), StartsWith("error: "));
  first_.take(1);
  EXPECT_EQ(ask(third_, longRequest), long_);
  block(third_);
}

TEST_F(LongAnswers, HaveRoomAgainWhenAClientIsGone) {
  block(first_);
  block(second_);
  first_.fail();
  EXPECT_EQ(ask(third_, longRequest), long_);
}

TEST_F(LongAnswers, HaveRoomAgainWhenAClientThatReadsNothingIsDisconnected) {
  block(first_);
  block(second_);
  scheduler_.pass(timeout);
  EXPECT_FALSE(first_.isConnected());
  EXPECT_EQ(ask(third_, longRequest), long_);
}

TEST_F(LongAnswers, ThatAreTakenAtOnceNeedNoRoom) {
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(ask(first_, longRequest), long_);
}

TEST_F(LongAnswers, OfAClientThatIsAloneAlwaysHaveRoom) {
  roomIs(0);
  ScriptedClient alone;
  connect(alone);
  for (int i = 0; i < 2; ++i) {
    block(alone);
    alone.take(long_.size());
    EXPECT_EQ(alone.received(), long_);
  }
  server_.reset();
}

TEST_F(LongAnswers, AreAnsweredOnceEachInOrderAmongManyClients) {
  std::deque<ScriptedClient> clients(20);
  for (ScriptedClient& client : clients) {
    connect(client);
    client.roomIs(0);
    client.send(std::string(longRequest) + request(1));
  }
  scheduler_.rounds();
  std::size_t waiting = 0;
  int whole = 0;
  for (ScriptedClient& client : clients)
    waiting += client.waiting();
  EXPECT_LE(waiting, 2 * long_.size() + clients.size() * Limits::shortAnswerBytes);
  for (ScriptedClient& client : clients) {
    client.take(ScriptedClient::unlimited);
    scheduler_.rounds();
    const std::string received = client.received();
    whole += received == long_ + answer(1) ? 1 : 0;
    if (received.starts_with("error: ")) {
      EXPECT_THAT(received, ::testing::EndsWith("try again later\n.\n" + answer(1)));
    } else {
      EXPECT_EQ(received, long_ + answer(1));
    }
    client.endSending();
  }
  EXPECT_EQ(whole, 2);
}

}  // namespace
}  // namespace ZelAgent
