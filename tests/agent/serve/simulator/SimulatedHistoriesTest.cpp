// Histories of a whole daemon, as Simulation.h describes them.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"
#include "tests/agent/TestFiles.h"
#include "tests/agent/serve/simulator/Simulation.h"

namespace ZelAgent {
namespace {

using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr std::size_t historiesByDefault = 5;
constexpr unsigned stepsOfAHistory = 200;

TEST(SimulatedDaemonHistories, AnswerEachRequestOnceAndKeepThePromiseAfterEveryStep) {
  const RandomSeed first;
  unsigned answers = 0;
  unsigned longestRecovery = 0;
  for (std::uint32_t round = 0; round < randomRounds(historiesByDefault); ++round) {
    const std::uint32_t seed = first.value() + round;
    Simulation simulation(seed, pathInTestFolder(""));
    const std::string wrong = simulation.run(stepsOfAHistory);
    ASSERT_EQ(wrong, "") << "ZEL_TEST_SEED=" << seed << " ZEL_TEST_PERCENT=1 replays the history:\n"
                         << simulation.text();
    answers += simulation.answers();
    longestRecovery = std::max(longestRecovery, simulation.recoverySeconds());
  }
  std::cout << answers << " answers; longest recovery: " << longestRecovery << " seconds\n";
}

}  // namespace
}  // namespace ZelAgent
