#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>

#include "L3/VrfName.h"
#include "Mox/Hash.h"
#include "Mox/HashMap2018.h"

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

// The seed that a collection gave to its keys last.
unsigned seedOfKeys = 0;

struct RecordingKey {
  [[nodiscard]] unsigned hash(unsigned seed) const noexcept {
    seedOfKeys = seed;
    return seed;
  }
  friend bool operator==(const RecordingKey&, const RecordingKey&) noexcept { return true; }
};

template <unsigned Salt>
unsigned seedInACollection() {
  HashMap2018<RecordingKey, int, Salt> map;
  map.insert({}, 1);
  return seedOfKeys;
}

// Runs `number` in a process for each of the seeds 1 to 3. Returns the different results.
template <class Function>
std::set<std::string> resultsBySeed(Function number) {
  std::set<std::string> results;
  for (const char* const text : {"1", "2", "3"}) {
    const SeedOfEnvironment seed(text);
    EXPECT_EXIT((std::fprintf(stderr, "result %u", number()), std::exit(0)),
                ::testing::ExitedWithCode(0), ::testing::Truly([&](const std::string& printed) {
                  return results.insert(printed.substr(printed.find("result "))).second || true;
                }));
  }
  return results;
}

TEST(HashSeedDeathTest, OfTheProcessChangesTheHashesInEveryCollection) {
  EXPECT_EQ(resultsBySeed(seedInACollection<0x1234>).size(), 3U);
}

TEST(HashSeedDeathTest, OfTheProcessChangesTheHashesOfNames) {
  EXPECT_EQ(resultsBySeed([] { return L3::VrfName("red").hash(9); }).size(), 3U);
  EXPECT_EQ(resultsBySeed([] { return L3::VrfName().hash(9); }).size(), 3U);
}

TEST(HashSeedDeathTest, OfTheProcessDoesNotChangeTheHashOfBytes) {
  EXPECT_EQ(resultsBySeed([] { return L3::VrfName("red").byteHash(); }).size(), 1U);
}

TEST(HashSeed, IsMixedWithTheSaltOfACollection) {
  const std::set<unsigned> seeds{seedInACollection<0>(), seedInACollection<1>(),
                                 seedInACollection<0x80000000>()};
  EXPECT_EQ(seeds.size(), 3U);
  EXPECT_EQ(seedInACollection<1>(), seedInACollection<1>());
}

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

TEST(HashSeedDeathTest, ABadOneIsShownWithoutControlCharacters) {
  const SeedOfEnvironment seed("\x1b[2J");
  EXPECT_EXIT(std::exit(HashHelper::hashSeed32() != 0 ? 0 : 1), ::testing::ExitedWithCode(0),
              R"(^MOX_HASH_SEED is ignored: '\\x1b\[2J': expected)");
}

INSTANTIATE_TEST_SUITE_P(Texts, BadHashSeedDeathTest,
                         ::testing::Values("", "0", "-1", "4294967296", "7 ", "seven"));

}  // namespace
}  // namespace Mox
