// When a client that takes nothing of its answer is disconnected.
#include <gmock/gmock.h>

#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

class ClientPatience : public ServedClients {};

TEST_F(ClientPatience, EndsAfterExactlyTheTimeoutWithoutOneByteTaken) {
  connect(first_);
  blockAnswer(first_);
  scheduler_.pass(timeout - milliseconds(1));
  EXPECT_TRUE(first_.isConnected());
  scheduler_.pass(milliseconds(1));
  EXPECT_FALSE(first_.isConnected());
  EXPECT_EQ(first_.received(), "");
}

TEST_F(ClientPatience, BeginsWhenTheAnswerWaits) {
  connect(first_);
  scheduler_.pass(timeout * 10 + milliseconds(1));
  blockAnswer(first_);
  scheduler_.pass(timeout - milliseconds(1));
  EXPECT_TRUE(first_.isConnected());
  scheduler_.pass(milliseconds(1));
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientPatience, DoesNotEndForAClientThatTakesAPieceInEachHalf) {
  connect(first_);
  blockAnswer(first_);
  while (first_.waiting() > 0) {
    scheduler_.pass(timeout / 2);
    ASSERT_TRUE(first_.isConnected()) << first_.waiting();
    first_.take(2);
  }
  EXPECT_EQ(first_.received(), answer(1));
  EXPECT_TRUE(first_.isConnected());
}

TEST_F(ClientPatience, DoesNotEndForAClientThatMissesEverySecondHalf) {
  connect(first_);
  blockAnswer(first_);
  while (first_.waiting() > 0) {
    scheduler_.pass(timeout - milliseconds(1));
    ASSERT_TRUE(first_.isConnected()) << first_.waiting();
    first_.take(4);
    scheduler_.pass(milliseconds(1));
  }
  EXPECT_EQ(first_.received(), answer(1));
}

TEST_F(ClientPatience, EndsAfterTenTimeoutsForAClientThatTakesOneByteBetweenTwoChecks) {
  connect(first_);
  blockAnswer(first_);
  for (int half = 1; half < 20; ++half) {
    scheduler_.pass(timeout / 2);
    first_.take(1);
  }
  scheduler_.pass(timeout / 2 - milliseconds(1));
  EXPECT_TRUE(first_.isConnected());
  scheduler_.pass(milliseconds(1));
  EXPECT_FALSE(first_.isConnected());
  EXPECT_EQ(first_.received(), answer(1).substr(0, 19));
}

TEST_F(ClientPatience, HasTenTimeoutsForEachAnswer) {
  connect(first_);
  for (int i = 0; i < 5; ++i) {
    blockAnswer(first_);
    for (int half = 1; half < 20; ++half) {
      scheduler_.pass(timeout / 2);
      first_.take(1);
    }
    first_.take(first_.waiting());
    EXPECT_EQ(first_.received(), answer(1));
  }
  EXPECT_TRUE(first_.isConnected());
}

TEST_F(ClientPatience, BeginsAgainAtTheCheckAfterTheLastByteTaken) {
  connect(first_);
  blockAnswer(first_);
  scheduler_.pass(timeout / 2 + milliseconds(1));
  first_.take(1);
  scheduler_.pass(timeout / 2 - milliseconds(1));  // the check that sees the byte
  scheduler_.pass(timeout - milliseconds(1));
  EXPECT_TRUE(first_.isConnected());
  scheduler_.pass(milliseconds(1));
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientPatience, CountsBytesThatAreTakenAtOnceAsNoProgress) {
  connect(first_);
  first_.roomIs(5);
  first_.send(request(1));
  scheduler_.rounds();
  EXPECT_EQ(first_.waiting(), answer(1).size() - 5);
  scheduler_.pass(timeout - milliseconds(1));
  EXPECT_TRUE(first_.isConnected());
  scheduler_.pass(milliseconds(1));
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientPatience, DoesNotWatchAClientWithoutAnAnswer) {
  connect(first_);
  first_.send("half a requ");
  EXPECT_EQ(scheduler_.running(), 0U);
  scheduler_.pass(hours(1));
  EXPECT_TRUE(first_.isConnected());
}

TEST_F(ClientPatience, StopsWhenTheAnswerIsTaken) {
  connect(first_);
  first_.take(blockAnswer(first_));
  EXPECT_EQ(scheduler_.running(), 0U);
  scheduler_.pass(hours(1));
  EXPECT_TRUE(first_.isConnected());
}

TEST_F(ClientPatience, IsAsLongForTheNextAnswer) {
  connect(first_);
  const std::size_t size = blockAnswer(first_);
  scheduler_.pass(timeout - milliseconds(1));  // one check without progress
  first_.take(size);
  blockAnswer(first_);
  scheduler_.pass(timeout - milliseconds(1));
  EXPECT_TRUE(first_.isConnected());
  scheduler_.pass(milliseconds(1));
  EXPECT_FALSE(first_.isConnected());
}

TEST_F(ClientPatience, IsSeparateForEachClient) {
  connectAll();
  blockAnswer(first_);
  scheduler_.pass(timeout / 2);
  blockAnswer(second_);
  scheduler_.pass(timeout / 2);
  EXPECT_FALSE(first_.isConnected());
  EXPECT_TRUE(second_.isConnected());
  scheduler_.pass(timeout / 2);
  EXPECT_FALSE(second_.isConnected());
  EXPECT_TRUE(third_.isConnected());
}

class EndlessPatience : public ServedClients {
 protected:
  EndlessPatience() : ServedClients({256, std::size_t{1} << 20U, milliseconds(0)}) {}
};

TEST_F(EndlessPatience, NeverEnds) {
  connect(first_);
  const std::size_t size = blockAnswer(first_);
  EXPECT_EQ(scheduler_.running(), 0U);
  scheduler_.pass(hours(24 * 365));
  EXPECT_TRUE(first_.isConnected());
  first_.take(size);
  EXPECT_EQ(first_.received(), answer(1));
}

}  // namespace
}  // namespace ZelAgent
