// How many lines report what is not programmed, and what they say.
#include "agent/serve/daemon/FailureLines.h"

#include <gmock/gmock.h>

#include <vector>

#include "tests/agent/serve/daemon/ManualScheduler.h"

namespace ZelAgent {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class FailureLinesTest : public ::testing::Test {
 protected:
  // The lines since the last call, each with the priority that systemd knows.
  std::vector<std::string> printed() { return std::exchange(printed_, {}); }
  void fail(const std::string& subject) { lines_.failed(subject, "full"); }
  void failMany(int count) {
    for (int subject = 0; subject < count; ++subject)
      fail("s" + std::to_string(subject));
  }

  std::vector<std::string> printed_;
  ManualScheduler scheduler_;
  FailureLines lines_{
      scheduler_, [this](LogPriority priority, const std::string& line) {
        printed_.push_back('<' + std::to_string(static_cast<int>(priority)) + '>' + line);
      }};
};

TEST_F(FailureLinesTest, PrintAFailureAndItsRecovery) {
  fail("a");
  EXPECT_THAT(printed(), ElementsAre("<4>warning: not programmed: a: full"));
  lines_.recovered("a");
  EXPECT_THAT(printed(), ElementsAre("<5>programmed again: a"));
}

TEST_F(FailureLinesTest, PrintNoRecoveryOfWhatHasNotFailed) {
  lines_.recovered("a");
  lines_.gone("a");
  EXPECT_THAT(printed(), IsEmpty());
  EXPECT_FALSE(lines_.remembersAny());
}

TEST_F(FailureLinesTest, PrintTheSameFailureOnce) {
  fail("a");
  fail("a");
  scheduler_.pass(seconds(100));
  fail("a");
  EXPECT_THAT(printed(), SizeIs(1));
}

TEST_F(FailureLinesTest, PrintAnotherReasonOfTheSameSubject) {
  fail("a");
  lines_.failed("a", "broken");
  EXPECT_THAT(printed(), ElementsAre("<4>warning: not programmed: a: full",
                                     "<4>warning: not programmed: a: broken"));
}

TEST_F(FailureLinesTest, PrintNothingOfWhatIsGone) {
  fail("a");
  lines_.gone("a");
  lines_.recovered("a");
  scheduler_.pass(seconds(11));
  EXPECT_THAT(printed(), SizeIs(1));
  EXPECT_FALSE(lines_.remembersAny());
}

TEST_F(FailureLinesTest, OfASubjectAreAtMostTwoInTenSeconds) {
  for (int round = 0; round < 5; ++round) {
    fail("a");
    lines_.recovered("a");
  }
  fail("a");
  EXPECT_THAT(printed(), SizeIs(2));
  scheduler_.pass(seconds(9));
  EXPECT_THAT(printed(), IsEmpty());
  scheduler_.pass(seconds(1));
  EXPECT_THAT(printed(),
              ElementsAre("<4>warning: not programmed: a: full; changes before this one: 9"));
}

TEST_F(FailureLinesTest, OfAnotherSubjectAreNotLeftOutForIt) {
  for (int round = 0; round < 3; ++round) {
    fail("a");
    lines_.recovered("a");
  }
  fail("b");
  EXPECT_THAT(printed(),
              ElementsAre("<4>warning: not programmed: a: full", "<5>programmed again: a",
                          "<4>warning: not programmed: b: full"));
}

TEST_F(FailureLinesTest, AreCountedAnewAfterTenSeconds) {
  fail("a");
  scheduler_.pass(seconds(10));
  lines_.recovered("a");
  fail("a");
  EXPECT_THAT(printed(), SizeIs(3));
}

TEST_F(FailureLinesTest, ASubjectThatIsProgrammedIsForgottenAfterTenSeconds) {
  fail("a");
  lines_.recovered("a");
  scheduler_.pass(seconds(9));
  EXPECT_TRUE(lines_.remembersAny());
  scheduler_.pass(seconds(1));
  EXPECT_FALSE(lines_.remembersAny());
}

TEST_F(FailureLinesTest, NeedNoTimeWhileNothingChanges) {
  EXPECT_EQ(scheduler_.running(), 0U);
  fail("a");
  EXPECT_EQ(scheduler_.running(), 1U);
  scheduler_.pass(seconds(10));
  EXPECT_EQ(scheduler_.running(), 0U);
  EXPECT_TRUE(lines_.remembersAny());
}

TEST_F(FailureLinesTest, OfABurstAreTwentyInASecondAndOneThatCountsTheRest) {
  failMany(10'000);
  EXPECT_THAT(printed(), SizeIs(20));
  scheduler_.pass(seconds(1));
  EXPECT_THAT(printed(), ElementsAre("<4>warning: 9980 more lines about programming"));
  scheduler_.pass(seconds(60));
  EXPECT_THAT(printed(), IsEmpty());
}

TEST_F(FailureLinesTest, AfterABurstAreTwentyAgainInTheNextSecond) {
  failMany(21);
  scheduler_.pass(seconds(1));
  printed();
  fail("late");
  EXPECT_THAT(printed(), ElementsAre("<4>warning: not programmed: late: full"));
}

TEST_F(FailureLinesTest, OfMoreThan1024SubjectsAreOnlyCounted) {
  failMany(1024);
  scheduler_.pass(seconds(20));
  printed();
  fail("one more");
  EXPECT_THAT(printed(), IsEmpty());
  scheduler_.pass(seconds(1));
  EXPECT_THAT(printed(), ElementsAre("<4>warning: 1 more lines about programming"));
  lines_.recovered("one more");
  EXPECT_THAT(printed(), IsEmpty());
  lines_.gone("s0");
  fail("one more");
  EXPECT_THAT(printed(), ElementsAre("<4>warning: not programmed: one more: full"));
}

}  // namespace
}  // namespace ZelAgent
