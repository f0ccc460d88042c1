#include "Routing/Hardware/RouteStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "Mox/Exceptions.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "tests/platform/ReactorJournal.h"

namespace Routing::Hardware {
namespace {

using PlatformTests::NoKey;
using PlatformTests::ReactorJournal;
using PlatformTests::shownKey;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// Runs every test on the route status of both address families.
template <class Status>
class RouteStatuses : public ::testing::Test {
 protected:
  Mox::Ptr<Status> routes = Status::RouteStatusIs();
  Mox::Ptr<ReactorJournal> journal = Mox::makePtr<ReactorJournal>(
      routes,
      ReactorJournal::KeyReaders{{Status::vrfStatusAttribute, shownKey<L3::VrfName>},
                                 {Status::prefixLensAttribute, shownKey<Velo::String>},
                                 {Status::decapNhEnabledAttribute, shownKey<NoKey>},
                                 {Status::decapNhFallbackEnabledAttribute, shownKey<NoKey>}});

  void forget() { static_cast<void>(journal->take()); }
};

using Families = ::testing::Types<RouteStatus, Routing6::Hardware::RouteStatus>;
TYPED_TEST_SUITE(RouteStatuses, Families);

TEST(RouteStatusTypes, AreThoseOfTheirFamilies) {
  EXPECT_EQ(RouteStatus::RouteStatusIs()->fwkType()->name, "Routing::Hardware::RouteStatus");
  EXPECT_EQ(Routing6::Hardware::RouteStatus::RouteStatusIs()->fwkType()->name,
            "Routing6::Hardware::RouteStatus");
}

TYPED_TEST(RouteStatuses, BeginEmptyWithFlagsOff) {
  EXPECT_TRUE(this->routes->hasNotificationActive());
  EXPECT_EQ(this->routes->vrfStatus().count(), 0u);
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatch().count(), 0u);
  EXPECT_FALSE(this->routes->decapNhEnabled());
  EXPECT_FALSE(this->routes->decapNhFallbackEnabled());
  EXPECT_EQ(this->routes->vrfStatus("red"), nullptr);
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatch("red"), nullptr);
}

TYPED_TEST(RouteStatuses, NumberTheirAttributes) {
  EXPECT_EQ(TypeParam::prefixLensAttribute, 259);
  EXPECT_EQ(TypeParam::vrfStatusAttribute, 392);
  EXPECT_EQ(TypeParam::decapNhFallbackEnabledAttribute, 404);
  EXPECT_EQ(TypeParam::decapNhEnabledAttribute, 406);
}

TYPED_TEST(RouteStatuses, MakeAVrfStatusByNameOnce) {
  const Mox::Ptr<VrfStatus> made = this->routes->vrfStatusIs("red");
  ASSERT_TRUE(made);
  EXPECT_EQ(made->name(), L3::VrfName("red"));
  EXPECT_EQ(this->routes->vrfStatus("red"), made);
  EXPECT_EQ(this->routes->vrfStatusIs("red"), made);
  EXPECT_EQ(this->routes->vrfStatus().count(), 1u);
  EXPECT_THAT(this->journal->take(), ElementsAre("392 red"));
}

TYPED_TEST(RouteStatuses, TakeAndReplaceAVrfStatusThatExists) {
  const Mox::Ptr<VrfStatus> first = VrfStatus::VrfStatusIs("red");
  const Mox::Ptr<VrfStatus> second = VrfStatus::VrfStatusIs("red");
  this->routes->vrfStatusIs(first);
  EXPECT_EQ(this->routes->vrfStatus("red"), first);
  EXPECT_THAT(this->journal->take(), ElementsAre("392 red"));
  this->routes->vrfStatusIs(first);
  EXPECT_THAT(this->journal->take(), IsEmpty());
  this->routes->vrfStatusIs(second);
  EXPECT_EQ(this->routes->vrfStatus("red"), second);
  EXPECT_EQ(this->routes->vrfStatus().count(), 1u);
  EXPECT_THAT(this->journal->take(), ElementsAre("392 red"));
  EXPECT_EQ(first->references(), 1u);
}

TYPED_TEST(RouteStatuses, RefuseANullVrfStatus) {
  EXPECT_THROW(this->routes->vrfStatusIs(Mox::Ptr<VrfStatus>()), Mox::NullArgumentException);
  EXPECT_EQ(this->routes->vrfStatus().count(), 0u);
  EXPECT_THAT(this->journal->take(), IsEmpty());
}

TYPED_TEST(RouteStatuses, GiveTheVrfStatusThatIsTakenOut) {
  const Mox::Ptr<VrfStatus> made = this->routes->vrfStatusIs("red");
  this->forget();
  EXPECT_EQ(this->routes->vrfStatusDel("red"), made);
  EXPECT_EQ(this->routes->vrfStatus("red"), nullptr);
  EXPECT_THAT(this->journal->take(), ElementsAre("392 red"));
  EXPECT_EQ(this->routes->vrfStatusDel("red"), nullptr);
  EXPECT_THAT(this->journal->take(), IsEmpty());
}

TYPED_TEST(RouteStatuses, NotifyOfEveryVrfStatusThatIsTakenOutTogether) {
  for (const char* name : {"red", "blue", "green"})
    this->routes->vrfStatusIs(name);
  this->forget();
  this->routes->vrfStatusDelAll();
  EXPECT_EQ(this->routes->vrfStatus().count(), 0u);
  EXPECT_THAT(this->journal->take(), UnorderedElementsAre("392 red", "392 blue", "392 green"));
  this->routes->vrfStatusDelAll();
  EXPECT_THAT(this->journal->take(), IsEmpty());
}

TYPED_TEST(RouteStatuses, MakePrefixLengthsByNameOnce) {
  const Mox::Ptr<PrefixLensInExactMatch> made = this->routes->vrfPrefixLensInExactMatchIs("red");
  ASSERT_TRUE(made);
  EXPECT_EQ(made->name().bytes(), "red");
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatch("red"), made);
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatchIs("red"), made);
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatch().count(), 1u);
  EXPECT_THAT(this->journal->take(), ElementsAre("259 red"));
}

TYPED_TEST(RouteStatuses, TakeAndReplacePrefixLengthsThatExist) {
  const auto first = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  const auto second = PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  this->routes->vrfPrefixLensInExactMatchIs(first);
  this->routes->vrfPrefixLensInExactMatchIs(first);
  EXPECT_THAT(this->journal->take(), ElementsAre("259 red"));
  this->routes->vrfPrefixLensInExactMatchIs(second);
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatch("red"), second);
  EXPECT_THAT(this->journal->take(), ElementsAre("259 red"));
}

TYPED_TEST(RouteStatuses, RefuseNullPrefixLengths) {
  EXPECT_THROW(this->routes->vrfPrefixLensInExactMatchIs(Mox::Ptr<PrefixLensInExactMatch>()),
               Mox::NullArgumentException);
  EXPECT_THAT(this->journal->take(), IsEmpty());
}

TYPED_TEST(RouteStatuses, GiveThePrefixLengthsThatAreTakenOut) {
  const auto made = this->routes->vrfPrefixLensInExactMatchIs("red");
  this->forget();
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatchDel("red"), made);
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatchDel("red"), nullptr);
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatch("red"), nullptr);
  EXPECT_THAT(this->journal->take(), ElementsAre("259 red"));
}

TYPED_TEST(RouteStatuses, NotifyOfAllPrefixLengthsThatAreTakenOutTogether) {
  this->routes->vrfPrefixLensInExactMatchIs("red");
  this->routes->vrfPrefixLensInExactMatchIs("blue");
  this->forget();
  this->routes->vrfPrefixLensInExactMatchDelAll();
  EXPECT_EQ(this->routes->vrfPrefixLensInExactMatch().count(), 0u);
  EXPECT_THAT(this->journal->take(), UnorderedElementsAre("259 red", "259 blue"));
}

TYPED_TEST(RouteStatuses, DoNotNotifyOfChangesInsideTheirEntries) {
  const auto status = this->routes->vrfStatusIs("red");
  const auto lengths = this->routes->vrfPrefixLensInExactMatchIs("red");
  this->forget();
  status->vrfIdIs(7);
  lengths->prefixLenIs(24);
  EXPECT_THAT(this->journal->take(), IsEmpty());
}

TYPED_TEST(RouteStatuses, NotifyOfEachFlagOnChangeOnly) {
  this->routes->decapNhEnabledIs(false);
  this->routes->decapNhFallbackEnabledIs(false);
  EXPECT_THAT(this->journal->take(), IsEmpty());
  this->routes->decapNhEnabledIs(true);
  this->routes->decapNhEnabledIs(true);
  EXPECT_TRUE(this->routes->decapNhEnabled());
  EXPECT_FALSE(this->routes->decapNhFallbackEnabled());
  EXPECT_THAT(this->journal->take(), ElementsAre("406 "));
  this->routes->decapNhFallbackEnabledIs(true);
  this->routes->decapNhFallbackEnabledIs(true);
  EXPECT_TRUE(this->routes->decapNhFallbackEnabled());
  EXPECT_THAT(this->journal->take(), ElementsAre("404 "));
  this->routes->decapNhEnabledIs(false);
  this->routes->decapNhFallbackEnabledIs(false);
  EXPECT_THAT(this->journal->take(), ElementsAre("406 ", "404 "));
}

/// A reactor that does `work` when it is told of anything.
class Acting final : public Mox::PtrInterface::NotifieeConst {
 public:
  Acting(const Mox::Ptr<RouteStatus const>& routes, std::function<void(const void*)> work)
      : NotifieeConst(routes), work_(std::move(work)) {
    isRegisteredIs(true);
    hasNotificationActiveIs(true);
  }
  ~Acting() override { moxDoZombieReactors(true); }
  void onAttribute(Mox::AttributeId, const void* key) override { work_(key); }

 private:
  std::function<void(const void*)> work_;
};

TEST(RouteStatus, IsChangedBeforeItNotifies) {
  const Mox::Ptr<RouteStatus> routes = RouteStatus::RouteStatusIs();
  bool present = false;
  const auto acting = Mox::makePtr<Acting>(routes, [&](const void* key) {
    present = routes->vrfStatus(*static_cast<const L3::VrfName*>(key)) != nullptr;
  });
  routes->vrfStatusIs("red");
  EXPECT_TRUE(present);
  routes->vrfStatusDel("red");
  EXPECT_FALSE(present);
}

TEST(RouteStatus, EmptiesThoughAReactorTakesOutEntriesOfItsOwn) {
  const Mox::Ptr<RouteStatus> routes = RouteStatus::RouteStatusIs();
  for (const char* name : {"a", "b", "c", "d", "e"})
    routes->vrfStatusIs(name);
  unsigned told = 0;
  const auto acting = Mox::makePtr<Acting>(routes, [&](const void*) {
    ++told;
    for (const char* name : {"b", "d"})
      routes->vrfStatusDel(name);
  });
  routes->vrfStatusDelAll();
  EXPECT_EQ(routes->vrfStatus().count(), 0u);
  EXPECT_EQ(told, 5u);
}

TEST(RouteStatus, LivesUntilItIsEmptyThoughAReactorLetsGoOfIt) {
  Mox::Ptr<RouteStatus> routes = RouteStatus::RouteStatusIs();
  routes->vrfStatusIs("a");
  routes->vrfStatusIs("b");
  unsigned told = 0;
  Mox::Ptr<Acting> acting = Mox::makePtr<Acting>(routes, [&](const void*) {
    if (++told == 2) {
      acting = nullptr;
      routes = nullptr;
    }
  });
  routes->vrfStatusDelAll();
  EXPECT_EQ(told, 2u);
  EXPECT_FALSE(routes);
}

}  // namespace
}  // namespace Routing::Hardware
