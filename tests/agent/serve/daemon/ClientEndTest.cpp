// How clients leave: between requests, in the middle of one, during an answer, and by errors.
#include <gmock/gmock.h>

#include "agent/serve/protocol/Request.h"
#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

class ClientEnd : public ServedClients {
 protected:
  static constexpr const char* unfinished =
      "error: a request must end with a newline, found the end after ";
};

TEST_F(ClientEnd, WithoutARequestDisconnectsItAtOnce) {
  connectAll();
  first_.endSending();
  EXPECT_FALSE(first_.isConnected());
  EXPECT_TRUE(second_.isConnected());
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(ClientEnd, OfSendingLeavesAllRequestsAnswered) {
  connect(first_);
  first_.send(request(1) + request(2) + request(3));
  first_.endSending();
  EXPECT_EQ(scheduler_.rounds(), 3);
  EXPECT_EQ(first_.received(), answer(1) + answer(2) + answer(3));
  EXPECT_TRUE(first_.isConnected());
  first_.deliver();
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientEnd, OfSendingIsNoticedAfterAnAnswerThatWaits) {
  connect(first_);
  const std::size_t size = blockAnswer(first_);
  first_.send(request(2));
  first_.endSending();
  first_.take(size);
  first_.deliver();
  scheduler_.rounds();
  EXPECT_EQ(first_.waiting(), answer(2).size());
  first_.take(answer(2).size());
  first_.deliver();
  EXPECT_EQ(first_.received(), answer(1) + answer(2));
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientEnd, InTheMiddleOfALineRefusesTheLineAndDoesNotRunIt) {
  connectAll();
  first_.send(request(1));
  scheduler_.rounds();
  EXPECT_EQ(first_.received(), answer(1));
  first_.send("chip capacity 7");
  first_.endSending();
  EXPECT_TRUE(first_.isConnected());
  EXPECT_EQ(scheduler_.rounds(), 1);
  EXPECT_EQ(first_.received(), std::string(unfinished) + "\"chip capacity 7\"\n.\n");
  EXPECT_FALSE(first_.isConnected());
  second_.send("show actions\n");
  scheduler_.rounds();
  EXPECT_THAT(second_.received(), ::testing::HasSubstr("chip: 0 of 1 VRF resources"));
}

TEST_F(ClientEnd, InTheMiddleOfALineWaitsUntilTheRefusalIsTaken) {
  connect(first_);
  first_.send("half");
  first_.endSending();
  first_.roomIs(0);
  scheduler_.rounds();
  EXPECT_TRUE(first_.isConnected());
  first_.take(first_.waiting());
  EXPECT_EQ(first_.received(), std::string(unfinished) + "\"half\"\n.\n");
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientEnd, ByAReadErrorDisconnectsItAtOnce) {
  connectAll();
  first_.send("half");
  first_.fail();
  EXPECT_FALSE(first_.isConnected());
  second_.send(request(1));
  scheduler_.rounds();
  EXPECT_EQ(second_.received(), answer(1));
}

TEST_F(ClientEnd, ByAnErrorOfAWriteAtOnceDisconnectsItInItsTurn) {
  connectAll();
  first_.breakWrites();
  first_.send(request(1) + request(2));
  second_.send(request(3));
  EXPECT_EQ(scheduler_.rounds(), 1);
  EXPECT_FALSE(first_.isConnected());
  EXPECT_EQ(second_.received(), answer(3));
  EXPECT_EQ(scheduler_.running(), 0U);
}

TEST_F(ClientEnd, ByAnErrorOfALaterWriteDisconnectsItAndRunsNoRequestMore) {
  connectAll();
  first_.roomIs(3);
  first_.send(request(1) + request(2));
  scheduler_.rounds();
  first_.fail();
  EXPECT_FALSE(first_.isConnected());
  EXPECT_TRUE(scheduler_.isIdle());
  EXPECT_EQ(scheduler_.running(), 0U);
  second_.send("show actions\n");
  scheduler_.rounds();
  EXPECT_THAT(second_.received(), ::testing::HasSubstr("chip: 0 of 1 VRF resources"));
}

TEST_F(ClientEnd, AfterALineThatIsTooLongRefusesItAndDisconnectsIt) {
  connect(first_);
  first_.send(request(1) + std::string(RequestLines::longest + 1, 'x'));
  first_.send("\n" + request(2));
  EXPECT_EQ(scheduler_.rounds(), 2);
  EXPECT_EQ(first_.received(),
            answer(1) +
                "error: a request must be a line of at most 65536 bytes, found more; the "
                "connection is closed\n.\n");
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientEnd, AfterALineThatIsTooLongWaitsUntilTheRefusalIsTaken) {
  connect(first_);
  first_.roomIs(0);
  first_.send(std::string(RequestLines::longest + 1, 'x'));
  scheduler_.rounds();
  EXPECT_TRUE(first_.isConnected());
  EXPECT_FALSE(first_.isRead());
  first_.take(first_.waiting());
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientEnd, OfTheServerDisconnectsAllAndLosesTheirAnswers) {
  connectAll();
  blockAnswer(first_);
  second_.send(request(2));
  third_.send("half");
  server_.reset();
  EXPECT_FALSE(first_.isConnected());
  EXPECT_FALSE(second_.isConnected());
  EXPECT_FALSE(third_.isConnected());
  EXPECT_EQ(first_.received() + second_.received() + third_.received(), "");
  EXPECT_EQ(scheduler_.running(), 0U);
  EXPECT_TRUE(scheduler_.isIdle());
}

}  // namespace
}  // namespace ZelAgent
