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

// What has happened in histories.
struct Figures {
  std::uint64_t histories = 0;
  std::uint64_t answers = 0;
  std::uint64_t reloadsApplied = 0;
  std::uint64_t reloadsRefused = 0;
  std::uint64_t recoveries = 0;
  unsigned longestRecovery = 0;  // in seconds

  void add(Simulation& simulation) {
    ++histories;
    answers += simulation.answers();
    reloadsApplied += simulation.record().reloadsApplied;
    reloadsRefused += simulation.record().reloadsRefused;
    recoveries += simulation.recoverySeconds() > 0 ? 1 : 0;
    longestRecovery = std::max(longestRecovery, simulation.recoverySeconds());
  }

  void print() const {
    std::cout << histories << " histories, " << answers << " answers, " << reloadsApplied
              << " reloads applied, " << reloadsRefused << " refused; " << recoveries
              << " recoveries after the end of the faults, of at most " << longestRecovery
              << " seconds\n";
  }
};

TEST(SimulatedDaemonHistories, AnswerEachRequestOnceAndKeepThePromiseAfterEveryStep) {
  const RandomSeed first;
  Figures figures;
  for (std::uint32_t round = 0; round < randomRounds(historiesByDefault); ++round) {
    const std::uint32_t seed = first.value() + round;
    Simulation simulation(seed, pathInTestFolder(""));
    const std::string wrong = simulation.run(stepsOfAHistory);
    ASSERT_EQ(wrong, "") << "ZEL_TEST_SEED=" << seed << " ZEL_TEST_PERCENT=1 replays the history:\n"
                         << simulation.text();
    figures.add(simulation);
  }
  figures.print();
}

}  // namespace
}  // namespace ZelAgent
