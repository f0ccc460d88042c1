#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <iostream>
#include <new>
#include <set>

#include "testing/TraceCapture.h"
#include "tests/vrf/cost/Allocations.h"
#include "tests/vrf/faults/History.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

enum class Shortage { passing, lasting };

// Does `work` while the allocation after `further` others fails, and all that follow it if the
// shortage lasts. Whether it threw.
bool throwsInA(Shortage shortage, std::size_t further, const std::function<void()>& work) {
  (shortage == Shortage::passing ? Allocations::failAfter : Allocations::failFrom)(further);
  bool threw = false;
  try {
    work();
  } catch (const std::bad_alloc&) {
    threw = true;
  }
  static_cast<void>(Allocations::failureWithdrawn());
  return threw;
}

/// Every step of the history is done while each of its allocations fails in turn, in a world of its
/// own each time, which then goes on to the end of the history.
class AllocationFaults : public ::testing::TestWithParam<Shortage> {
 protected:
  void historyIs(std::vector<Step> history) {
    steps = std::move(history);
    World twin;
    for (const Step& step : steps) {
      step.work(twin);
      expected.push_back(twin.dump());
    }
  }

  void failEachAllocation() {
    for (std::size_t step = 0; step < steps.size() && !HasFatalFailure(); ++step)
      failEachAllocationOf(step);
  }

  void failEachAllocationOf(std::size_t step) {
    SCOPED_TRACE("step " + std::to_string(step) + ", " + steps[step].name);
    for (std::size_t further = 0; failAllocation(step, further) && !HasFatalFailure(); ++further)
      ASSERT_LT(further, 2000U);
  }

  // Whether there was an allocation to fail.
  bool failAllocation(std::size_t step, std::size_t further) {
    SCOPED_TRACE("allocation " + std::to_string(further));
    World world;
    doSteps(world, 0, step);
    const std::string before = world.dump();
    const auto livingBefore = liveObjects();
    const std::size_t failedBefore = Allocations::failed();
    const bool threw = throwsInA(GetParam(), further, [&] { steps[step].work(world); });
    const bool failed = Allocations::failed() != failedBefore;
    ++(threw ? thrown : failed ? survived : undisturbed);
    EXPECT_EQ(world.brokenInvariants(), "");
    if (threw) {
      EXPECT_EQ(world.dump(), before);
      EXPECT_EQ(liveObjects(), livingBefore);
      steps[step].work(world);
    }
    EXPECT_EQ(world.dump(), expected[step]);
    if (!threw) return failed;
    doSteps(world, step + 1, steps.size());
    EXPECT_TRUE(world.dump() == expected.back()) << "the end of the history differs";
    return true;
  }

  void doSteps(World& world, std::size_t from, std::size_t to) const {
    for (std::size_t step = from; step < to; ++step)
      steps[step].work(world);
  }

  void report() const {
    RecordProperty("allocation faults", static_cast<int>(thrown + survived));
    std::cout << "allocations failed: " << thrown + survived << ", of which " << thrown
              << " were thrown and " << survived << " changed nothing, in a history of "
              << steps.size() << " steps\n";
  }

  std::vector<Step> steps;
  std::vector<std::string> expected;  // the whole state after each step
  std::size_t thrown = 0;
  std::size_t survived = 0;
  std::size_t undisturbed = 0;
};

TEST_P(AllocationFaults, LeaveEverythingAsItWasAndTheSameStepSucceedsLater) {
  historyIs(longHistory());
  const auto living = liveObjects();
  failEachAllocation();
  EXPECT_EQ(undisturbed, steps.size());
  EXPECT_GT(thrown, steps.size());
  EXPECT_EQ(liveObjects(), living);
  report();
}

// A line that there is no memory for is lost, and none is cut short.
TEST_P(AllocationFaults, LoseNothingButLinesOfTheTextTrace) {
  historyIs(history());
  std::set<std::string> whole;
  const Mox::TraceSink before = Mox::traceSinkIs([&](std::string_view line) {
    const Allocations::Spared test;
    whole.insert(std::string(line));
  });
  Mox::traceLevelsIs("ZelVrfSelection=*");
  for (std::size_t end = 0; end <= steps.size(); ++end) {
    World twin;  // whose machine may end after any step
    doSteps(twin, 0, end);
  }
  std::set<std::string> cut;
  std::size_t lines = 0;
  Mox::traceSinkIs([&](std::string_view line) {
    const Allocations::Spared test;
    ++lines;
    if (whole.count(std::string(line)) == 0) cut.insert(std::string(line));
  });
  failEachAllocation();
  Mox::traceLevelsIs("ZelVrfSelection=0");
  Mox::traceSinkIs(before);
  EXPECT_GT(whole.size(), 50U);
  EXPECT_GT(lines, whole.size());
  EXPECT_EQ(cut, std::set<std::string>());
  EXPECT_GT(survived, 100U);
  report();
}

INSTANTIATE_TEST_SUITE_P(InAShortage, AllocationFaults,
                         ::testing::Values(Shortage::passing, Shortage::lasting),
                         [](const auto& shortage) {
                           return shortage.param == Shortage::passing ? "ThatPasses" : "ThatLasts";
                         });

struct Ending {
  std::size_t dump = 0;  // its hash
  bool failed = false;   // whether an allocation did
};

std::size_t endOf(const std::vector<Step>& steps) {
  World world;
  for (const Step& step : steps)
    step.work(world);
  return std::hash<std::string>()(world.dump());
}

// Does it all in a process of its own, in which nothing has been used yet, and again if it throws.
Ending firstUse(const std::vector<Step>& steps, std::size_t further) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return {};
  const pid_t child = fork();
  if (child == 0) {
    Ending ending;
    const bool threw = throwsInA(Shortage::passing, further, [&] { ending.dump = endOf(steps); });
    if (threw) ending.dump = endOf(steps);
    ending.failed = Allocations::failed() != 0;
    _exit(write(ends[1], &ending, sizeof ending) == sizeof ending ? 0 : 1);
  }
  close(ends[1]);
  Ending ending;
  const auto taken = read(ends[0], &ending, sizeof ending);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  const bool ended = taken == sizeof ending && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return ended ? ending : Ending{0, true};
}

TEST(AllocationFaultsInANewProcess, AreForgottenWhenItIsDoneAgain) {
  const std::vector<Step> steps = history();
  std::vector<Ending> endings;
  do {
    endings.push_back(firstUse(steps, endings.size()));
  } while (endings.back().failed && endings.size() < 5000);
  const std::size_t expected = endOf(steps);
  for (std::size_t further = 0; further < endings.size(); ++further)
    EXPECT_EQ(endings[further].dump, expected) << "allocation " << further;
  EXPECT_GT(endings.size(), 200U);
  EXPECT_FALSE(endings.back().failed);
  RecordProperty("allocation faults", static_cast<int>(endings.size() - 1));
  std::cout << "allocations failed in a new process: " << endings.size() - 1 << '\n';
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
