// What a terminal shows of work that takes long, by a clock of the test.
#include "agent/language/Progress.h"

#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

using std::chrono::milliseconds;

class ProgressTest : public ::testing::Test {
 protected:
  // Makes so many steps that the clock is read once.
  void look() {
    for (std::uint64_t i = 0; i < Progress::stepsOfALook; ++i)
      progress_.step();
  }

  std::string shown_;
  Progress::Time now_;
  Progress progress_{[this](std::string_view text) { shown_ += text; }, [this] { return now_; }};
};

const std::string erase = "\r\x1b[K";

TEST_F(ProgressTest, ShowsNothingInTheFirstSecond) {
  progress_.begin("applying", "rules", 1000);
  now_ += milliseconds(999);
  look();
  progress_.end();
  EXPECT_EQ(shown_, "");
}

TEST_F(ProgressTest, ShowsHowFarItIsAndErasesItAtTheEnd) {
  progress_.begin("applying big.json", "rules", 1000000);
  now_ += milliseconds(1000);
  for (int i = 0; i < 20; ++i)
    look();
  EXPECT_EQ(shown_, erase + "applying big.json: 64 of 1,000,000 rules");
  progress_.end();
  EXPECT_EQ(shown_, erase + "applying big.json: 64 of 1,000,000 rules" + erase);
  progress_.end();
  EXPECT_EQ(shown_, erase + "applying big.json: 64 of 1,000,000 rules" + erase);
}

TEST_F(ProgressTest, HasNoNumberBeforeTheFirstStep) {
  progress_.begin("reading big.json", "rules", 0);
  now_ += milliseconds(1000);
  for (std::uint64_t i = 0; i < Progress::stepsOfALook; ++i)
    progress_.look();
  EXPECT_EQ(shown_, erase + "reading big.json");
}

TEST_F(ProgressTest, EndsWithTheObjectOfTheWork) {
  {
    const ProgressOf work(progress_, "reading", "rules");
    now_ += milliseconds(1000);
    look();
  }
  EXPECT_EQ(shown_, erase + "reading: 64 rules" + erase);
}

TEST_F(ProgressTest, RenewsTheLineFiveTimesASecond) {
  progress_.begin("forwarding", "packets", 0);
  now_ += milliseconds(1000);
  look();
  now_ += milliseconds(199);
  look();
  now_ += milliseconds(1);
  look();
  EXPECT_EQ(shown_, erase + "forwarding: 64 packets" + erase + "forwarding: 192 packets");
}

TEST_F(ProgressTest, EachWorkBeginsAnew) {
  progress_.begin("one", "rules", 0);
  now_ += milliseconds(1000);
  look();
  progress_.begin("two", "rules", 0);
  look();
  EXPECT_EQ(shown_, erase + "one: 64 rules" + erase) << "less than a second of the second";
}

TEST(Progress, WithoutAnOutputItNeverReadsTheClock) {
  int reads = 0;
  Progress progress({}, [&reads] {
    ++reads;
    return Progress::Time();
  });
  progress.begin("applying", "rules", 0);
  for (std::uint64_t i = 0; i < Progress::stepsOfALook; ++i)
    progress.step();
  EXPECT_EQ(reads, 0);
}

}  // namespace
}  // namespace ZelAgent
