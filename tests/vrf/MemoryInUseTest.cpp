// What the tables keep for the actions that name a VRF: nothing for those that have gone.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "FrameFixture.h"
#include "tests/memory/AllocatedMemory.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

// Far less than what any of the tests would find if it were kept.
constexpr std::size_t noise = 32768;

class MemoryInUse : public VrfSmFrameFixture {
 protected:
  static constexpr unsigned manyActions = 20000;

  MemoryInUse() {
    for (unsigned number = 0; number < 150; ++number)
      names_.emplace_back("v" + std::to_string(number));
    start();
  }

  // Different ones for different numbers below 22,500.
  [[nodiscard]] VrfAction actionOfRed(unsigned number) const {
    VrfAction action = lookUpIn("red");
    action.fallbackVrfNameIs(names_[number % names_.size()]);
    action.postDecapVrfNameIs(names_[number / names_.size() % names_.size()]);
    return action;
  }
  void comes(unsigned number) { statuses->hwStatusIs(actionOfRed(number), HwStatus()); }
  void goes(unsigned number) { statuses->hwStatusDel(actionOfRed(number)); }
  void manyCome() {
    for (unsigned number = 0; number < manyActions; ++number)
      comes(number);
  }
  void manyGo() {
    for (unsigned number = 0; number < manyActions; ++number)
      goes(number);
  }
  // Has each of these come, and the one that came a hundred before it go.
  void passOn(unsigned from, unsigned to) {
    for (unsigned number = from; number < to; ++number) {
      comes(number);
      goes(number - 100);
    }
  }
  // Has the machine update the actions of red, and `work` done in the first of these calls.
  template <class Work>
  void refreshDuringWhich(Work work) {
    chip->onUpdate = [&, isDone = false](const VrfAction&) mutable {
      if (!isDone) work();
      isDone = true;
      return HwStatus();
    };
    vrfSm->handleVrfUpdates("red", false);
    forgetLines();
  }

  std::vector<L3::VrfName> names_;
};

TEST_F(MemoryInUse, IsFlatWhileTheOldestActionMakesWayForEachNewOne) {
  passOn(100, 1000);
  const std::size_t before = allocatedMemory();
  passOn(1000, 20000);
  EXPECT_LT(allocatedMemory(), before + noise);
}

TEST_F(MemoryInUse, IsFlatSoAfterAllActionsHaveGoneAtOnce) {
  manyCome();
  statuses->hwStatusDelAll();
  passOn(100, 1000);
  const std::size_t before = allocatedMemory();
  passOn(1000, 20000);
  EXPECT_LT(allocatedMemory(), before + noise);
}

TEST_F(MemoryInUse, IsFlatWhenActionsGoInTheCourseOfAWalk) {
  const auto comeAndGo = [this](unsigned rounds) {
    for (unsigned round = 0; round < rounds; ++round) {
      for (unsigned number = 0; number < 3; ++number)
        comes(number);
      refreshDuringWhich([this] {
        for (unsigned number = 0; number < 3; ++number)
          goes(number);
      });
    }
  };
  comeAndGo(10);
  const std::size_t before = allocatedMemory();
  comeAndGo(2000);
  EXPECT_LT(allocatedMemory(), before + noise);
}

TEST_F(MemoryInUse, IsGivenBackAtTheEndOfAWalkInWhichAllActionsWent) {
  manyCome();
  manyGo();
  const std::size_t withoutAWalk = allocatedMemory();
  manyCome();
  refreshDuringWhich([this] { manyGo(); });
  EXPECT_LT(allocatedMemory(), withoutAWalk + noise);
}

TEST_F(MemoryInUse, IsGivenBackWhenAllActionsGoAtOnce) {
  const std::size_t before = allocatedMemory();
  manyCome();
  statuses->hwStatusDelAll();
  EXPECT_LT(allocatedMemory(), before + noise);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
