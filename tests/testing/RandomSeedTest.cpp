#include "testing/RandomSeed.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

namespace ZelVrfSelectionPolicy::Testing {
namespace {

class SeedOfATest : public ::testing::Test {
 protected:
  ~SeedOfATest() override {
    if (before_) {
      seedIs(before_->c_str());
    } else {
      unsetenv(name);
    }
  }
  static void seedIs(const char* text) { setenv(name, text, 1); }

  static constexpr const char* name = "ZEL_TEST_SEED";

 private:
  const std::optional<std::string> before_ =
      std::getenv(name) == nullptr ? std::nullopt : std::optional<std::string>(std::getenv(name));
};

TEST_F(SeedOfATest, IsThatOfTheEnvironment) {
  seedIs("0");
  EXPECT_EQ(RandomSeed().value(), 0U);
  seedIs("4294967295");
  EXPECT_EQ(RandomSeed().value(), 4294967295U);
}

TEST_F(SeedOfATest, DiffersWithoutTheEnvironment) {
  unsetenv(name);
  std::set<std::uint32_t> seeds;
  for (int round = 0; round < 4; ++round)
    seeds.insert(RandomSeed().value());
  EXPECT_GT(seeds.size(), 1U);
}

TEST_F(SeedOfATest, IsPrintedAtOnceWithTheInstructionToReplay) {
  seedIs("77");
  ::testing::internal::CaptureStdout();
  const RandomSeed seed;
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "ZEL_TEST_SEED=77 replays this run\n");
  EXPECT_EQ(seed.replay(), "ZEL_TEST_SEED=77 replays this run");
}

// The output of a process that aborts is lost unless it was flushed.
void printSeedAndAbort() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
  std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
  const RandomSeed seed;
  std::abort();
}

TEST_F(SeedOfATest, IsPrintedBeforeATestCrashes) {
  seedIs("78");
  EXPECT_DEATH(printSeedAndAbort(), "ZEL_TEST_SEED=78 replays this run");
}

TEST_F(SeedOfATest, OfAnythingButANumberOf32BitsIsRefused) {
  for (const char* const wrong : {"", "-1", "4294967296", "7 ", "seven"}) {
    seedIs(wrong);
    EXPECT_THROW(RandomSeed(), std::invalid_argument) << wrong;
  }
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
