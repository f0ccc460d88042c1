#include "chips/programs/VrfProgram.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Chips {
namespace {

using PolicyMap::ActionType;
using VrfSelectionPolicy::VrfSelectionFallbackVrf;
using ZelVrfSelectionPolicy::VrfAction;

class VrfProgramTest : public ::testing::Test {
 protected:
  [[nodiscard]] ProgramInputs inputs() const { return {fallbacks_, routes_, routesV6_}; }
  [[nodiscard]] std::string programText(const VrfAction& action) const {
    std::ostringstream text;
    text << programOf(action, inputs());
    return text.str();
  }
  void vrfIs(const char* name, std::uint32_t id) {
    routes_->vrfStatusIs(L3::VrfName(name))->vrfIdIs(id);
  }

  Mox::Ptr<VrfSelectionFallbackVrf> fallbacks_ =
      VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_ =
      Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routesV6_ =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
};

VrfAction lookUp(const char* vrf) {
  return {vrf, ActionType::vrf};
}

VrfAction decapsulate(const char* vrf, const char* fallback, const char* postDecap) {
  VrfAction action(vrf, ActionType::decapVrf);
  action.fallbackVrfNameIs(fallback);
  action.postDecapVrfNameIs(postDecap);
  return action;
}

TEST_F(VrfProgramTest, ShowsEveryFactInFull) {
  vrfIs("red", 7);
  vrfIs("blue", 8);
  vrfIs("green", 9);
  fallbacks_->fallbackVrfIs("blue", "green");
  routes_->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(32);
  routes_->vrfPrefixLensInExactMatchIs("red")->prefixLenIs(24);
  routesV6_->vrfPrefixLensInExactMatchIs("green")->prefixLenIs(128);
  routes_->decapNhEnabledIs(true);
  EXPECT_EQ(programText(decapsulate("red", "blue", "default")),
            "look up red(7) v4=[24,32] v6=[]; "
            "fallback blue(8) v4=[] v6=[] > green(9) v4=[] v6=[128]; "
            "post-decap default(0) v4=[] v6=[]; decap-nh on; decap-nh-fallback off");
  EXPECT_EQ(programText(lookUp("red")),
            "look up red(7) v4=[24,32] v6=[]; fallback none; post-decap none; "
            "decap-nh on; decap-nh-fallback off");
}

TEST_F(VrfProgramTest, DependsOnEachFactOfItsVrfs) {
  const VrfAction action = decapsulate("red", "blue", "green");
  fallbacks_->fallbackVrfIs("red", "one");
  fallbacks_->fallbackVrfIs("one", "two");
  VrfProgram before = programOf(action, inputs());
  const auto expectChanged = [&](const char* what) {
    VrfProgram now = programOf(action, inputs());
    EXPECT_NE(now, before) << what;
    EXPECT_EQ(programOf(action, inputs()), now) << what;
    before = std::move(now);
  };
  for (const char* const vrf : {"red", "blue", "green", "one", "two"}) {
    vrfIs(vrf, 5);
    expectChanged("id");
    routes_->vrfPrefixLensInExactMatchIs(vrf)->prefixLenIs(0);
    expectChanged("IPv4 prefix lengths");
    routesV6_->vrfPrefixLensInExactMatchIs(vrf)->prefixLenIs(128);
    expectChanged("IPv6 prefix lengths");
    routes_->vrfStatusDel(vrf);
    expectChanged("status");
  }
  fallbacks_->fallbackVrfIs("one", "other");
  expectChanged("second fallback");
  fallbacks_->fallbackVrfDel("red");
  expectChanged("first fallback");
  routes_->decapNhEnabledIs(true);
  expectChanged("decapNhEnabled");
  routes_->decapNhFallbackEnabledIs(true);
  expectChanged("decapNhFallbackEnabled");
}

TEST_F(VrfProgramTest, DependsOnNothingElse) {
  vrfIs("red", 1);
  fallbacks_->fallbackVrfIs("red", "one");
  fallbacks_->fallbackVrfIs("one", "two");
  const VrfProgram before = programOf(lookUp("red"), inputs());
  vrfIs("other", 3);
  fallbacks_->fallbackVrfIs("two", "three");
  fallbacks_->fallbackVrfIs("other", "red");
  routesV6_->decapNhEnabledIs(true);
  routesV6_->vrfStatusIs(L3::VrfName("red"))->vrfIdIs(9);
  routes_->vrfPrefixLensInExactMatchIs("red");
  EXPECT_EQ(programOf(lookUp("red"), inputs()), before);
}

TEST_F(VrfProgramTest, AFallbackThatWasTriedEndsTheWalk) {
  fallbacks_->fallbackVrfIs("red", "red");
  EXPECT_EQ(programOf(lookUp("red"), inputs()).lookUp.size(), 1U);
  fallbacks_->fallbackVrfIs("red", "blue");
  fallbacks_->fallbackVrfIs("blue", "red");
  EXPECT_EQ(programOf(lookUp("red"), inputs()).lookUp.size(), 2U);
}

TEST_F(VrfProgramTest, NamesTheFirstVrfWithoutAnId) {
  const VrfAction action = decapsulate("red", "blue", "green");
  fallbacks_->fallbackVrfIs("red", "without-id");
  EXPECT_EQ(vrfWithoutId(programOf(action, inputs())), L3::VrfName("red"));
  vrfIs("red", 1);
  EXPECT_EQ(vrfWithoutId(programOf(action, inputs())), L3::VrfName("blue"));
  vrfIs("blue", 2);
  EXPECT_EQ(vrfWithoutId(programOf(action, inputs())), L3::VrfName("green"));
  vrfIs("green", 3);
  EXPECT_EQ(vrfWithoutId(programOf(action, inputs())), L3::VrfName());
  EXPECT_EQ(vrfWithoutId(programOf(lookUp("red"), inputs())), L3::VrfName());
}

TEST(VrfProgram, WithoutInputsKnowsNoFacts) {
  const VrfProgram program = programOf(lookUp("red"), {});
  ASSERT_EQ(program.lookUp.size(), 1U);
  EXPECT_EQ(program.lookUp.front(), (VrfFacts{"red", 0, {}, {}}));
}

}  // namespace
}  // namespace Chips
