#include "tests/waiting/Deadline.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace Waiting {
namespace {

using std::chrono::milliseconds;

// Sets the factor for the waits of one test, and restores that of the run.
class Factor final {
 public:
  explicit Factor(const char* text) {
    if (const char* const before = std::getenv(variable)) before_ = before;
    setenv(variable, text, 1);
  }
  Factor(const Factor&) = delete;
  Factor& operator=(const Factor&) = delete;
  ~Factor() {
    if (before_.empty()) {
      unsetenv(variable);
    } else {
      setenv(variable, before_.c_str(), 1);
    }
  }

 private:
  static constexpr const char* variable = "ZEL_TEST_WAIT_FACTOR";
  std::string before_;
};

TEST(Deadline, HasPassedWhenItsTimeIsOver) {
  const Deadline deadline(milliseconds(0));
  EXPECT_TRUE(deadline.hasPassed());
  EXPECT_EQ(deadline.millisecondsLeft(), 0);
}

TEST(Deadline, IsTenSecondsAwayWithoutAnotherLimit) {
  const Factor factor("1");
  const Deadline deadline;
  EXPECT_FALSE(deadline.hasPassed());
  EXPECT_GT(deadline.millisecondsLeft(), 0);
  EXPECT_LE(deadline.millisecondsLeft(), 10'000);
  EXPECT_EQ(deadline.expiry("a line", ""), "waited 10.00 s for a line; seen so far: ''");
}

TEST(Deadline, IsMultipliedByTheFactorOfTheEnvironment) {
  const Factor factor("1000");
  EXPECT_EQ(Deadline(milliseconds(30)).expiry("a line", ""),
            "waited 30.00 s for a line; seen so far: ''");
}

TEST(Deadline, RejectsAFactorThatIsNoNumberFrom1To1000) {
  for (const char* const text : {"", "0", "-1", "1001", "2 ", "two"}) {
    const Factor factor(text);
    EXPECT_THROW(Deadline{}, std::invalid_argument) << text;
  }
}

TEST(Deadline, DescribesItsExpiryOnOneLine) {
  const Factor factor("1");
  EXPECT_EQ(Deadline(milliseconds(250)).expiry("the prompt", "first\nsecond\x1b!"),
            "waited 0.25 s for the prompt; seen so far: 'first\\nsecond?!'");
}

TEST(Deadline, DescribesOnlyTheEndOfWhatWasSeen) {
  const Factor factor("1");
  EXPECT_EQ(Deadline(milliseconds(0)).expiry("it", "lost" + std::string(499, 'x') + "z"),
            "waited 0.00 s for it; seen so far: '..." + std::string(499, 'x') + "z'");
}

}  // namespace
}  // namespace Waiting
