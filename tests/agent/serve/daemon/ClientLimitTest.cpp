// How many clients a server serves, and what it answers to the others.
#include <gmock/gmock.h>

#include <deque>

#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

class ClientLimit : public ServedClients {
 protected:
  ClientLimit() : ServedClients({2, std::size_t{1} << 20U, timeout}) {}

  static constexpr const char* refusal =
      "{\"status\":1,\"output\":\"2 clients are connected, which is the limit; try again later\"}"
      "\n";
};

TEST_F(ClientLimit, IsServed) {
  connect(first_);
  connect(second_);
  second_.send(request(1));
  scheduler_.rounds();
  EXPECT_EQ(second_.received(), answer(1));
  EXPECT_TRUE(first_.isConnected());
}

TEST_F(ClientLimit, IsRefusedBeyondInOneLineAndDisconnected) {
  connectAll();
  EXPECT_EQ(third_.received(), refusal);
  EXPECT_FALSE(third_.isConnected());
  EXPECT_TRUE(first_.isConnected());
  EXPECT_TRUE(second_.isConnected());
}

TEST_F(ClientLimit, HasAPlaceAgainWhenAClientLeaves) {
  connectAll();
  first_.endSending();
  ScriptedClient fourth;
  connect(fourth);
  EXPECT_EQ(fourth.received(), "");
  fourth.send(request(1));
  scheduler_.rounds();
  EXPECT_EQ(fourth.received(), answer(1));
  ScriptedClient fifth;
  connect(fifth);
  EXPECT_EQ(fifth.received(), refusal);
  fourth.endSending();
}

TEST_F(ClientLimit, IsRefusedBeyondWithoutWaitingForTheClient) {
  connect(first_);
  connect(second_);
  third_.roomIs(7);
  connect(third_);
  EXPECT_EQ(third_.received(), std::string(refusal).substr(0, 7));
  EXPECT_FALSE(third_.isConnected());
}

TEST(ServerLimit, IsTwoHundredAndFiftySixClientsByDefault) {
  ManualScheduler scheduler;
  ServedAgent served("unused.json", 8);
  std::deque<ScriptedClient> clients(257);
  ControlServer server(scheduler, served, {});
  for (ScriptedClient& client : clients)
    server.accept(client.connect());
  EXPECT_TRUE(clients[255].isConnected());
  EXPECT_FALSE(clients[256].isConnected());
  EXPECT_THAT(clients[256].received(), ::testing::HasSubstr("256 clients are connected"));
}

}  // namespace
}  // namespace ZelAgent
