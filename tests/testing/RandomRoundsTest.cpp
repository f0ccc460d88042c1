#include "testing/RandomRounds.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>

namespace ZelVrfSelectionPolicy::Testing {
namespace {

class RandomRounds : public ::testing::Test {
 protected:
  ~RandomRounds() override {
    if (before_) {
      setenv(variable, before_->c_str(), 1);
    } else {
      unsetenv(variable);
    }
  }
  static void percentIs(const char* percent) { setenv(variable, percent, 1); }

  static constexpr const char* variable = "ZEL_TEST_PERCENT";

 private:
  static std::optional<std::string> present() {
    const char* value = std::getenv(variable);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
  }
  const std::optional<std::string> before_ = present();
};

TEST_F(RandomRounds, AreTheUsualOnesUnlessTheEnvironmentSaysOtherwise) {
  unsetenv(variable);
  EXPECT_EQ(randomRounds(320), 320U);
  percentIs("25");
  EXPECT_EQ(randomRounds(320), 80U);
  percentIs("2000");
  EXPECT_EQ(randomRounds(320), 6400U);
}

TEST_F(RandomRounds, AreAtLeastOne) {
  percentIs("1");
  EXPECT_EQ(randomRounds(20), 1U);
}

TEST_F(RandomRounds, OfAnythingButANumberInRangeAreRefused) {
  for (const char* wrong : {"", "0", "-1", "1000001", "5%", "many"}) {
    percentIs(wrong);
    EXPECT_THROW(static_cast<void>(randomRounds(320)), std::invalid_argument) << wrong;
  }
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
