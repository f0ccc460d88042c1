// The order in which clients are answered.
#include "agent/serve/daemon/Turns.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;

class TurnsOfClients : public ServedClients {
 protected:
  // The clients that were answered in the next round, with the bytes of their answers.
  std::vector<std::string> round() {
    scheduler_.round();
    std::vector<std::string> answers;
    for (ScriptedClient* const client : {&first_, &second_, &third_})
      answers.push_back(client->received());
    return answers;
  }
};

TEST_F(TurnsOfClients, OneRequestOfEachClientIsAnsweredInEachRound) {
  connectAll();
  first_.send(request(11) + request(12) + request(13));
  second_.send(request(21) + request(22));
  EXPECT_THAT(round(), ElementsAre(answer(11), answer(21), ""));
  EXPECT_THAT(round(), ElementsAre(answer(12), answer(22), ""));
  EXPECT_THAT(round(), ElementsAre(answer(13), "", ""));
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(TurnsOfClients, TwoClientsWithThreeRequestsEachAreAnsweredAlternately) {
  connectAll();
  std::string answers;
  first_.journalIs(answers);
  second_.journalIs(answers);
  first_.send(request(11) + request(12) + request(13));
  second_.send(request(21) + request(22) + request(23));
  scheduler_.rounds();
  EXPECT_EQ(answers, answer(11) + answer(21) + answer(12) + answer(22) + answer(13) + answer(23));
}

TEST_F(TurnsOfClients, AClientThatComesLaterDoesNotWaitForAllRequestsOfAnother) {
  connectAll();
  first_.send(request(11) + request(12) + request(13) + request(14));
  EXPECT_THAT(round(), ElementsAre(answer(11), "", ""));
  second_.send(request(21));
  EXPECT_THAT(round(), ElementsAre(answer(12), answer(21), ""));
}

TEST_F(TurnsOfClients, TheLoopSleepsWhenNoRequestWaits) {
  connectAll();
  EXPECT_TRUE(scheduler_.isIdle());
  first_.send("half a requ");
  EXPECT_TRUE(scheduler_.isIdle());
  second_.send(request(21) + request(22));
  EXPECT_EQ(scheduler_.rounds(), 2);
  EXPECT_EQ(second_.received(), answer(21) + answer(22));
}

TEST_F(TurnsOfClients, TheLoopSleepsWhileAnAnswerWaits) {
  connectAll();
  first_.roomIs(0);
  first_.send(request(11) + request(12));
  EXPECT_EQ(scheduler_.rounds(), 1);
  EXPECT_GT(first_.waiting(), 0U);
}

TEST_F(TurnsOfClients, AClientThatIsDisconnectedInItsTurnTakesNoTurnOfAnother) {
  connectAll();
  first_.send("half a requ");
  first_.endSending();  // its refusal is its last answer
  second_.send(request(21));
  third_.send(request(31));
  const auto answers = round();
  EXPECT_THAT(answers[0], ::testing::StartsWith("error: a request must end with a newline"));
  EXPECT_FALSE(first_.isConnected());
  EXPECT_EQ(answers[1], answer(21));
  EXPECT_EQ(answers[2], answer(31));
}

// A taker that writes its name into a journal, and then calls `then`.
class NamedTaker final : public TurnTaker {
 public:
  NamedTaker(char name, std::string& journal) : name_(name), journal_(journal) {}
  void takeTurn() override {
    journal_ += name_;
    then();
  }

  std::function<void()> then = [] {};

 private:
  char name_;
  std::string& journal_;
};

class QueueOfTurns : public ::testing::Test {
 protected:
  // Makes the taker ask for so many turns more, each in the one before.
  void askInTurn(NamedTaker& taker, int more) {
    taker.then = [this, &taker, more]() mutable {
      if (more-- > 0) turns_.add(taker);
    };
  }

  ManualScheduler scheduler_;
  std::string journal_;
  Turns turns_{scheduler_};
  NamedTaker one_{'1', journal_};
  NamedTaker two_{'2', journal_};
};

TEST_F(QueueOfTurns, AlternatesBetweenTwoThatWantThree) {
  askInTurn(one_, 2);
  askInTurn(two_, 2);
  turns_.add(one_);
  turns_.add(two_);
  EXPECT_EQ(scheduler_.rounds(), 3);
  EXPECT_EQ(journal_, "121212");
}

TEST_F(QueueOfTurns, GivesOneTurnToEachInARound) {
  askInTurn(one_, 2);
  turns_.add(two_);
  turns_.add(one_);
  scheduler_.round();
  EXPECT_EQ(journal_, "21");
  scheduler_.round();
  EXPECT_EQ(journal_, "211");
  scheduler_.round();
  EXPECT_EQ(journal_, "2111");
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(QueueOfTurns, GivesTurnsInTheOrderOfTheirRequests) {
  turns_.add(two_);
  turns_.add(one_);
  scheduler_.round();
  turns_.add(one_);
  turns_.add(two_);
  scheduler_.round();
  EXPECT_EQ(journal_, "2112");
}

TEST_F(QueueOfTurns, GivesATurnThatIsAskedForDuringARoundInTheNextOne) {
  one_.then = [this] { turns_.add(two_); };
  turns_.add(one_);
  scheduler_.round();
  EXPECT_EQ(journal_, "1");
  EXPECT_FALSE(scheduler_.isIdle());
  scheduler_.round();
  EXPECT_EQ(journal_, "12");
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(QueueOfTurns, RunsNoRoundsWhileNobodyWaits) {
  EXPECT_TRUE(scheduler_.isIdle());
  turns_.add(one_);
  EXPECT_EQ(scheduler_.rounds(), 1);
  turns_.add(one_);
  EXPECT_EQ(scheduler_.rounds(), 1);
}

}  // namespace
}  // namespace ZelAgent
