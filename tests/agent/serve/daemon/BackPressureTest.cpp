// What a client that reads or sends slowly makes the daemon keep.
#include <gmock/gmock.h>

#include "agent/serve/protocol/Request.h"
#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

class BackPressure : public ServedClients {};

TEST_F(BackPressure, NothingIsReadWhileARequestWaitsForItsTurn) {
  connect(first_);
  EXPECT_TRUE(first_.isRead());
  first_.send(request(1));
  EXPECT_FALSE(first_.isRead());
  scheduler_.round();
  EXPECT_EQ(first_.received(), answer(1));
  EXPECT_TRUE(first_.isRead());
}

TEST_F(BackPressure, NothingIsReadWhileAnAnswerWaits) {
  connect(first_);
  const std::size_t size = blockAnswer(first_);
  first_.send(request(2));
  first_.take(size - 1);
  first_.deliver();
  EXPECT_FALSE(first_.isRead());
  EXPECT_EQ(first_.arrived(), request(1).size());
  first_.take(1);
  EXPECT_TRUE(first_.isRead());
  first_.roomIs(ScriptedClient::unlimited);
  first_.deliver();
  scheduler_.rounds();
  EXPECT_EQ(first_.received(), answer(1) + answer(2));
}

TEST_F(BackPressure, TheNextRequestIsNotExecutedWhileAnAnswerWaits) {
  connectAll();
  first_.roomIs(answer(1).size() - 1);
  first_.send(request(1) + request(2));
  EXPECT_EQ(scheduler_.rounds(), 1);
  second_.send("show actions\n");
  scheduler_.rounds();
  EXPECT_THAT(second_.received(), ::testing::HasSubstr("chip: 0 of 1 VRF resources"));
  EXPECT_EQ(first_.waiting(), 1U);
  first_.take(1);
  EXPECT_FALSE(scheduler_.isIdle());
  first_.roomIs(ScriptedClient::unlimited);
  scheduler_.rounds();
  EXPECT_EQ(first_.received(), answer(1) + answer(2));
}

TEST_F(BackPressure, AtMostOneAnswerIsKept) {
  connect(first_);
  first_.roomIs(0);
  std::string requests;
  std::string answers;
  for (int number = 1; number <= 9; ++number) {
    requests += request(number);
    answers += answer(number);
  }
  first_.send(requests);
  for (int number = 1; number <= 9; ++number) {
    scheduler_.rounds();
    first_.take(answer(number).size());
  }
  EXPECT_EQ(first_.received(), answers);
  EXPECT_EQ(first_.mostWaiting(), answer(1).size());
}

TEST_F(BackPressure, AnAnswerOfWhichAnyPartIsAcceptedAtOnceArrivesWhole) {
  for (std::size_t atOnce = 0; atOnce <= answer(1).size(); ++atOnce) {
    ScriptedClient client;
    connect(client);
    client.roomIs(atOnce);
    client.send(request(1));
    scheduler_.rounds();
    EXPECT_EQ(client.waiting(), answer(1).size() - atOnce);
    if (client.waiting() > 0) client.take(client.waiting());
    EXPECT_EQ(client.received(), answer(1)) << atOnce;
    EXPECT_TRUE(client.isRead());
    client.endSending();
    EXPECT_FALSE(client.isConnected());
  }
}

TEST_F(BackPressure, AnAnswerThatIsTakenInPiecesOfAnySizeArrivesWhole) {
  for (std::size_t piece = 1; piece <= answer(1).size(); ++piece) {
    ScriptedClient client;
    connect(client);
    blockAnswer(client);
    while (client.waiting() > 0)
      client.take(piece);
    EXPECT_EQ(client.received(), answer(1)) << piece;
    client.endSending();
  }
}

TEST_F(BackPressure, ARequestInPiecesOfAnySizeIsOneRequest) {
  connect(first_);
  for (std::size_t piece = 1; piece <= request(1).size(); ++piece) {
    std::string_view left = "chip capacity 1\n";
    for (; !left.empty(); left.remove_prefix(std::min(piece, left.size()))) {
      EXPECT_TRUE(scheduler_.isIdle());
      first_.send(left.substr(0, piece));
    }
    scheduler_.rounds();
    EXPECT_EQ(first_.received(), answer(1)) << piece;
  }
}

}  // namespace
}  // namespace ZelAgent
