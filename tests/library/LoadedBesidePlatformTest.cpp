// The library in an agent's process that was linked to the platform alone: entities made by the
// factories that the agent looks up, and what is left of them when the library is unloaded.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Blinklog/Ring.h"
#include "L3/VrfName.h"
#include "Mox/AttributeText.h"
#include "Mox/ReflectiveAccess.h"
#include "Mox/TraceHandle.h"
#include "PolicyMap/ActionType.h"
#include "Quarry/Slab.h"
#include "Routing/Hardware/RouteStatus.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "tests/library/LoadedLibrary.h"

namespace {

using namespace LoadedLibrary;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class LoadedBesidePlatform : public ::testing::Test, protected LoadedLibrary::Library {};

TEST_F(LoadedBesidePlatform, ItsFactoriesMakeEntitiesOfItsTypesWithNotificationsOn) {
  const std::pair<std::string, Object> made[] = {
      {"VrfHwConfig", makeTable(vrfHwConfigFactory)},
      {"VrfHwStatus", makeTable(vrfHwStatusFactory)},
      {"PolicySmMounts", makeTable(policySmMountsFactory)},
      {"VrfSm", makeVrfSm()},
      {"ZelVrfSelectionPolicySm", factory<SixArgumentFactory>(policySmFactory)(
                                      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr)},
  };
  for (const auto& [name, object] : made) {
    ASSERT_NE(object, nullptr) << name;
    EXPECT_EQ(object->fwkType(), Mox::moxType("ZelVrfSelectionPolicy::" + name));
    EXPECT_NE(object->fwkType(), nullptr) << name;
    EXPECT_TRUE(object->hasNotificationActive()) << name;
    EXPECT_EQ(object->references(), 1U) << name;
  }
}

TEST_F(LoadedBesidePlatform, ItsEntitiesAreCreatedWrittenReadAndShownByNamesAlone) {
  const Mox::Type* tableType = Mox::moxType("ZelVrfSelectionPolicy::VrfHwConfig");
  const Mox::Type* actionType = Mox::moxType("ZelVrfSelectionPolicy::VrfAction");
  ASSERT_NE(tableType, nullptr);
  ASSERT_NE(actionType, nullptr);
  const Mox::Attribute* users = Mox::findAttribute(*tableType, "vrfRefCount");
  ASSERT_NE(users, nullptr);

  const Object table = Mox::create(*tableType);
  const std::vector<Mox::AnyValue> fields{L3::VrfName("red"), PolicyMap::ActionType::vrf};
  const Mox::AnyValue action = Mox::AnyValue::ofType(*actionType, fields);
  EXPECT_EQ(Mox::access(*table, users->number, Mox::Operation::write, {action, 3U}).code,
            Mox::ReturnCode::success);
  EXPECT_EQ(Mox::access(*table, users->number, Mox::Operation::read, {action}).value,
            Mox::AnyValue(3U));
  EXPECT_EQ(Mox::attributeText(*table, "vrfRefCount").text, action.text().str() + ": 3\n");
  EXPECT_EQ(Mox::iterate(*table, users->number)->key().type(), actionType);
}

TEST_F(LoadedBesidePlatform, UnloadedItTakesItsSharedDefaultsAlong) {
  EXPECT_NE(Mox::moxDefault(L3::VrfName::moxType), nullptr);
  unload();
  EXPECT_EQ(Mox::moxDefault(L3::VrfName::moxType), nullptr);
}

TEST_F(LoadedBesidePlatform, UnloadedItLeavesNoModuleAndNoSlab) {
  for (const char* name : {vrfHwConfigFactory, vrfHwStatusFactory, policySmMountsFactory}) {
    static_cast<void>(makeTable(name));
  }
  static_cast<void>(makeVrfSm());
  EXPECT_NE(Quarry::Slab::find("ZelVrfSelectionPolicy::VrfHwConfig"), nullptr);
  unload();
  EXPECT_THAT(Quarry::Slab::typeNames(), IsEmpty());
  EXPECT_THAT(Mox::moxModules(), ElementsAre("ZelPlatform"));
  EXPECT_EQ(Mox::moxType("ZelVrfSelectionPolicy::VrfHwConfig"), nullptr);
}

TEST_F(LoadedBesidePlatform, UnloadedItLeavesItsMessagesToBeRead) {
  Mox::traceSinkIs([](std::string_view) {});
  const std::uint64_t first = Blinklog::ring().written();
  static_cast<void>(makeVrfSm());
  unload();
  const auto records = Blinklog::ring().dump();
  ASSERT_FALSE(records.empty());
  ASSERT_GT(Blinklog::ring().written(), first);
  EXPECT_EQ(records.back().text, "VrfSm::VrfInstanceSm::handleInitialized Initialize VRF SM");
  EXPECT_EQ(records.back().site->line, 289U);
  // Its trace handle is gone: setting levels touches no unloaded memory.
  Mox::traceLevelsIs("ZelVrfSelection=*");
  Mox::traceSinkIs(nullptr);
}

TEST_F(LoadedBesidePlatform, AStateMachineLeavesNothingSubscribed) {
  const auto fallback = VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  const auto routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::traceSinkIs([](std::string_view) {});
  Object vrfSm = factory<SixArgumentFactory>(vrfSmFactory)(nullptr, makeTable(vrfHwStatusFactory),
                                                           nullptr, fallback, routes, nullptr);
  EXPECT_TRUE(fallback->publisher().hasSubscribers());
  EXPECT_NE(routes->notifieeList().iterate, nullptr);
  vrfSm = nullptr;
  EXPECT_FALSE(fallback->publisher().hasSubscribers());
  EXPECT_EQ(routes->notifieeList().iterate, nullptr);
  unload();
  fallback->fallbackVrfIs("red", "blue");
  routes->vrfStatusIs("red")->vrfIdIs(1);
  Mox::traceSinkIs(nullptr);
}

}  // namespace
