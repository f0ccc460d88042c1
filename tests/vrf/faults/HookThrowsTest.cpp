#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>

#include "testing/Shown.h"
#include "tests/vrf/faults/History.h"
#include "tests/vrf/faults/Statuses.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Hook = FactsChip::Hook;

class HookThrows : public ::testing::Test {
 protected:
  HookThrows() : steps(historyOfHooks()) {
    World twin;
    for (const Step& step : steps)
      step.work(twin);
    hookCalls = static_cast<unsigned>(twin.chip->takeCalls().size());
    twin.catchUp();
    twin.refresh();
    expected = twin.dump();
  }

  // The whole history, in the course of which the call after `further` others throws.
  void run(unsigned further) {
    World world;
    Statuses statuses;
    world.chip->throwAfter(further);
    for (const Step& step : steps) {
      SCOPED_TRACE(step.name);
      const bool threw = throws(step, world);
      const std::vector<FactsChip::Call> calls = world.chip->takeCalls();
      statuses.follow(calls);
      if (threw) {
        expectWalkEndedAt(calls, world);
        ASSERT_EQ(statuses.differenceFrom(*world.statuses), "");
        if (step.isRequest) {
          step.work(world);
        } else {
          expectNextEventWorks(world, statuses);
        }
        world.catchUp();
        if (step.isRequest) step.work(world);
        statuses.follow(world.chip->takeCalls());
      }
      ASSERT_EQ(statuses.differenceFrom(*world.statuses), "");
      ASSERT_EQ(world.brokenInvariants(), "");
    }
    EXPECT_EQ(world.chip->faults(), 1U);
    world.catchUp();
    world.refresh();
    ASSERT_EQ(world.dump(), expected);
  }

  static bool throws(const Step& step, World& world) {
    try {
      step.work(world);
      return false;
    } catch (const ChipGone&) {
      return true;
    }
  }

  // The call that threw was the last, and left its action as the hook found it.
  void expectWalkEndedAt(const std::vector<FactsChip::Call>& calls, const World& world) {
    ASSERT_FALSE(calls.empty());
    for (const FactsChip::Call& call : calls)
      ASSERT_EQ(call.threw, &call == &calls.back());
    const FactsChip::Call& last = calls.back();
    switch (last.hook) {
      case Hook::create:
        EXPECT_FALSE(world.statuses->hwStatusHas(last.action));
        EXPECT_EQ(world.users->vrfRefCount(last.action), 1U);
        break;
      case Hook::update:
        break;  // its status is that of the call before, which is compared with all others
      case Hook::remove:
        EXPECT_TRUE(world.statuses->hwStatusHas(last.action));
        EXPECT_EQ(world.users->vrfRefCount(last.action), 0U);
        break;
    }
    ++thrown[last.hook];
    positions = std::max(positions, calls.size());
  }

  // A change that concerns every action has each of them programmed once, if anybody listens.
  static void expectNextEventWorks(World& world, Statuses& statuses) {
    const bool isFollowed = world.top->vrfSm() && world.top->vrfSm()->hasNotificationActive();
    world.routes->decapNhEnabledIs(!world.routes->decapNhEnabled());
    const std::vector<FactsChip::Call> calls = world.chip->takeCalls();
    statuses.follow(calls);
    const unsigned machines = (isFollowed ? 1U : 0U) + (world.beside ? 1U : 0U);
    EXPECT_EQ(calls.size(), machines * world.statuses->hwStatus().count());
    world.routes->decapNhEnabledIs(!world.routes->decapNhEnabled());
    statuses.follow(world.chip->takeCalls());
  }

  std::vector<Step> steps;
  unsigned hookCalls = 0;
  std::string expected;
  std::map<Hook, unsigned> thrown;
  std::size_t positions = 0;
};

TEST_F(HookThrows, EachCallInTurnEndsItsWalkAndTheNextEventWorks) {
  for (unsigned further = 0; further < hookCalls && !HasFatalFailure(); ++further) {
    SCOPED_TRACE("call " + std::to_string(further));
    run(further);
  }
  EXPECT_GT(thrown[Hook::create], 0U);
  EXPECT_GT(thrown[Hook::update], 0U);
  EXPECT_GT(thrown[Hook::remove], 0U);
  EXPECT_GT(positions, 5U);
  RecordProperty("createVrf threw", static_cast<int>(thrown[Hook::create]));
  RecordProperty("updateVrf threw", static_cast<int>(thrown[Hook::update]));
  RecordProperty("deleteVrf threw", static_cast<int>(thrown[Hook::remove]));
  std::cout << "hooks that threw: createVrf " << thrown[Hook::create] << ", updateVrf "
            << thrown[Hook::update] << ", deleteVrf " << thrown[Hook::remove]
            << "; deepest as call number " << positions << " of one event\n";
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
