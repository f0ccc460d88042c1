// Which changes are changes of a fact of a VRF.
#include "chips/programs/ChangedVrfs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace Chips {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ChangedVrfsTest : public ::testing::Test {
 protected:
  // The names since the last call.
  [[nodiscard]] std::vector<std::string> changes() {
    std::vector<std::string> names;
    for (const L3::VrfName& vrf : changed_->take())
      names.push_back(vrf.str());
    return names;
  }

  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks_ =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routesV6_ =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  std::optional<ChangedVrfs> changed_{std::in_place, ProgramInputs{fallbacks_, routes_, routesV6_}};
};

TEST_F(ChangedVrfsTest, AStatusThatAppearsChangesOrGoesIsAChange) {
  const auto status = routes_->vrfStatusIs("red");
  EXPECT_THAT(changes(), ElementsAre("red"));
  EXPECT_THAT(changes(), IsEmpty());
  status->vrfIdIs(7);
  EXPECT_THAT(changes(), ElementsAre("red"));
  status->vrfIdIs(7);
  EXPECT_THAT(changes(), IsEmpty());
  routes_->vrfStatusDel("red");
  EXPECT_THAT(changes(), ElementsAre("red"));
  status->vrfIdIs(8);
  EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(ChangedVrfsTest, AStatusThatReplacesAnotherIsFollowed) {
  const auto before = routes_->vrfStatusIs("red");
  const auto after = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  (void)changes();
  routes_->vrfStatusIs(after);
  EXPECT_THAT(changes(), ElementsAre("red"));
  before->vrfIdIs(7);
  EXPECT_THAT(changes(), IsEmpty());
  after->vrfIdIs(7);
  EXPECT_THAT(changes(), ElementsAre("red"));
}

TEST_F(ChangedVrfsTest, PrefixLengthsOfBothFamiliesAreFacts) {
  for (Routing::Hardware::RouteStatusBase* const routes :
       {static_cast<Routing::Hardware::RouteStatusBase*>(routes_.get()),
        static_cast<Routing::Hardware::RouteStatusBase*>(routesV6_.get())}) {
    const auto lengths = routes->vrfPrefixLensInExactMatchIs("red");
    EXPECT_THAT(changes(), ElementsAre("red"));
    lengths->prefixLenIs(24);
    EXPECT_THAT(changes(), ElementsAre("red"));
    lengths->prefixLenDel(24);
    EXPECT_THAT(changes(), ElementsAre("red"));
    routes->vrfPrefixLensInExactMatchDel("red");
    EXPECT_THAT(changes(), ElementsAre("red"));
    lengths->prefixLenIs(24);
    EXPECT_THAT(changes(), IsEmpty());
  }
}

TEST_F(ChangedVrfsTest, PrefixLengthsThatReplaceOthersAreFollowed) {
  const auto first = routes_->vrfPrefixLensInExactMatchIs("red");
  const auto second = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
  routes_->vrfPrefixLensInExactMatchIs(second);
  EXPECT_THAT(changes(), ElementsAre("red"));
  first->prefixLenIs(24);
  EXPECT_THAT(changes(), IsEmpty());
  second->prefixLenIs(24);
  EXPECT_THAT(changes(), ElementsAre("red"));
}

TEST_F(ChangedVrfsTest, AFallbackIsAFactOfTheVrfThatHasIt) {
  fallbacks_->fallbackVrfIs("red", "blue");
  EXPECT_THAT(changes(), ElementsAre("red"));
  fallbacks_->fallbackVrfDel("red");
  EXPECT_THAT(changes(), ElementsAre("red"));
}

TEST_F(ChangedVrfsTest, SeveralChangesOfAVrfAreOne) {
  routes_->vrfStatusIs("red")->vrfIdIs(7);
  fallbacks_->fallbackVrfIs("red", "blue");
  routes_->vrfStatusIs("default");
  EXPECT_THAT(changes(), ElementsAre("default", "red"));
}

TEST_F(ChangedVrfsTest, FlagsAndStatusesOfIpv6AreNoFacts) {
  routes_->decapNhEnabledIs(true);
  routes_->decapNhFallbackEnabledIs(true);
  routesV6_->vrfStatusIs("red")->vrfIdIs(7);
  EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(ChangedVrfsTest, WhatExistsAtTheBeginningIsFollowed) {
  const auto status = routes_->vrfStatusIs("red");
  const auto lengths = routes_->vrfPrefixLensInExactMatchIs("blue");
  const auto lengthsV6 = routesV6_->vrfPrefixLensInExactMatchIs("green");
  changed_.emplace(ProgramInputs{fallbacks_, routes_, routesV6_});
  EXPECT_THAT(changes(), IsEmpty());
  status->vrfIdIs(7);
  lengths->prefixLenIs(24);
  lengthsV6->prefixLenIs(64);
  EXPECT_THAT(changes(), ElementsAre("blue", "green", "red"));
}

TEST_F(ChangedVrfsTest, PrefixLengthsUnderANameThatNoVrfCanHaveAreIgnored) {
  const std::string tooLong(L3::VrfName::maxLength + 1, 'x');
  routes_->vrfPrefixLensInExactMatchIs(tooLong)->prefixLenIs(24);
  EXPECT_THAT(changes(), IsEmpty());
  changed_.emplace(ProgramInputs{fallbacks_, routes_, routesV6_});
  routes_->vrfPrefixLensInExactMatch(tooLong)->prefixLenIs(32);
  EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(ChangedVrfsTest, InputsMayBeNull) {
  changed_.emplace(ProgramInputs{});
  EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(ChangedVrfsTest, NothingIsCalledAfterItsEnd) {
  const auto status = routes_->vrfStatusIs("red");
  changed_.reset();
  status->vrfIdIs(7);
  fallbacks_->fallbackVrfIs("red", "blue");
  EXPECT_FALSE(fallbacks_->publisher().hasSubscribers());
}

}  // namespace
}  // namespace Chips
