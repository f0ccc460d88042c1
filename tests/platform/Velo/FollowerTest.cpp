#include "Velo/Follower.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "Routing/Hardware/RouteStatus.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "tests/platform/Allocations.h"

namespace Velo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using FallbackVrf = VrfSelectionPolicy::VrfSelectionFallbackVrf;
using RouteStatus = Routing::Hardware::RouteStatus;

/// Writes down what it is asked, and refuses when it is told to.
class Keeper {
 public:
  std::vector<std::string> asked;
  bool refuses = false;

  Follower& follower() noexcept { return follower_; }

 private:
  static void makeRoom(Follower* follower, short attributeId, const void* key, const void*) {
    Keeper& keeper = MemberFollower<Keeper>::ownerOf(follower);
    const std::string name = attributeId == RouteStatus::prefixLensAttribute
                                 ? static_cast<const String*>(key)->str()
                                 : static_cast<const L3::VrfName*>(key)->str();
    keeper.asked.push_back(std::to_string(attributeId) + " " + name);
    if (keeper.refuses) throw std::bad_alloc();
  }

  MemberFollower<Keeper> follower_{*this, &makeRoom};
};

TEST(FollowerList, AsksEachOnceUntilOneRefuses) {
  FollowerList list;
  Keeper first;
  Keeper second;
  Keeper third;
  for (Keeper* keeper : {&first, &second, &third, &first})
    list.followerIs(keeper->follower());
  const L3::VrfName red("red");
  list.makeRoomFor(1, &red, nullptr);
  second.refuses = true;
  EXPECT_THROW(list.makeRoomFor(2, &red, nullptr), std::bad_alloc);
  EXPECT_THAT(first.asked, ElementsAre("1 red", "2 red"));
  EXPECT_THAT(third.asked, ElementsAre("1 red"));
}

TEST(FollowerList, AsksNobodyWhoWasRemoved) {
  FollowerList list;
  Keeper keeper;
  list.followerIs(keeper.follower());
  list.followerDel(keeper.follower());
  const L3::VrfName red("red");
  list.makeRoomFor(1, &red, nullptr);
  EXPECT_THAT(keeper.asked, IsEmpty());
}

TEST(FollowerList, AddsOneWithoutMemoryAfterRoomWasMade) {
  FollowerList list;
  Keeper keeper;
  list.makeRoom();
  const PlatformTests::FailingAllocations failing(0);
  list.followerIs(keeper.follower());
}

TEST(FollowersOfFallbackVrfs, AreAskedBeforeAnEntryIsAddedOrChangedAndMayRefuse) {
  const auto config = FallbackVrf::VrfSelectionFallbackVrfIs();
  Keeper keeper;
  config->followers().followerIs(keeper.follower());
  config->fallbackVrfIs("red", "blue");
  config->fallbackVrfIs("red", "blue");
  keeper.refuses = true;
  EXPECT_THROW(config->fallbackVrfIs("red", "green"), std::bad_alloc);
  EXPECT_THROW(config->fallbackVrfIs("violet", "green"), std::bad_alloc);
  EXPECT_EQ(config->fallbackVrf("red"), "blue");
  EXPECT_FALSE(config->fallbackVrfHas("violet"));
  config->fallbackVrfDel("red");
  EXPECT_THAT(keeper.asked, ElementsAre("258 red", "258 red", "258 violet"));
}

TEST(FollowersOfARouteStatus, AreAskedBeforeAnEntityEntersAndMayRefuse) {
  const auto routes = RouteStatus::RouteStatusIs();
  const auto red = routes->vrfStatusIs("red");
  const auto lens = routes->vrfPrefixLensInExactMatchIs("red");
  Keeper keeper;
  routes->followers().followerIs(keeper.follower());
  keeper.refuses = true;
  EXPECT_THROW(routes->vrfStatusIs("blue"), std::bad_alloc);
  EXPECT_THROW(routes->vrfStatusIs(Routing::Hardware::VrfStatus::VrfStatusIs("red")),
               std::bad_alloc);
  EXPECT_THROW(routes->vrfPrefixLensInExactMatchIs("blue"), std::bad_alloc);
  EXPECT_EQ(routes->vrfStatus().count(), 1U);
  EXPECT_EQ(routes->vrfStatus("red"), red);
  EXPECT_EQ(routes->vrfPrefixLensInExactMatch().count(), 1U);
  routes->vrfStatusIs(red);
  routes->vrfPrefixLensInExactMatchIs(lens);
  routes->vrfStatusDel("red");
  EXPECT_THAT(keeper.asked, ElementsAre("392 blue", "392 red", "259 blue"));
}

}  // namespace
}  // namespace Velo
