#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Mox/Hash.h"

namespace Mox {
namespace {

// The seed is drawn while the platform is loaded, so each statement runs in a process of its own
// that is started with the environment as it is then.
class SeedOfEnvironment {
 public:
  explicit SeedOfEnvironment(const char* text) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("MOX_HASH_SEED", text, 1);
  }
  SeedOfEnvironment(const SeedOfEnvironment&) = delete;
  SeedOfEnvironment& operator=(const SeedOfEnvironment&) = delete;
  ~SeedOfEnvironment() { unsetenv("MOX_HASH_SEED"); }
};

TEST(HashSeedDeathTest, IsThatOfTheEnvironment) {
  const SeedOfEnvironment seed("4294967295");
  EXPECT_EXIT(std::exit(HashHelper::hashSeed32() == 4294967295U ? 0 : 1),
              ::testing::ExitedWithCode(0), "");
}

class BadHashSeedDeathTest : public ::testing::TestWithParam<const char*> {};

TEST_P(BadHashSeedDeathTest, IsIgnoredWithAWord) {
  const SeedOfEnvironment seed(GetParam());
  const std::string text = GetParam();
  EXPECT_EXIT(std::exit(HashHelper::hashSeed32() != 0 ? 0 : 1), ::testing::ExitedWithCode(0),
              "MOX_HASH_SEED is ignored: '" + text + "': expected a number from 1 to 4294967295");
}

INSTANTIATE_TEST_SUITE_P(Texts, BadHashSeedDeathTest,
                         ::testing::Values("", "0", "-1", "4294967296", "7 ", "seven"));

}  // namespace
}  // namespace Mox
