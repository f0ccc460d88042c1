// The types that the library brings, and what else its start leaves.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "World.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Mox::AnyValue;
using Mox::Ptr;
using ::testing::Contains;

TEST(TypeTable, AllTwelveNamesResolveToEntriesWithAReflection) {
  for (const char* name : {"ZelVrfSelectionPolicySm", "DependentVrfInfo", "FailureCode", "HwStatus",
                           "PolicySmMounts", "ProgrammingResult", "VrfAction", "VrfHelper",
                           "VrfHwConfig", "VrfHwStatus", "VrfSm", "VrfSm::VrfInstanceSm"}) {
    const std::string whole = std::string("ZelVrfSelectionPolicy::") + name;
    const Mox::Type* type = Mox::moxType(whole);
    ASSERT_NE(type, nullptr) << whole;
    EXPECT_EQ(type->name, whole);
    EXPECT_NE(type->reflection, nullptr) << whole;
  }
  EXPECT_THAT(Mox::moxModules(), Contains("ZelVrfSelectionPolicy"));
}

TEST(TypeTable, EachEntityAnswersWithItsEntry) {
  World world;
  EXPECT_EQ(world.top->fwkType(), &typeNamed("ZelVrfSelectionPolicySm"));
  EXPECT_EQ(world.dependents->fwkType(), &typeNamed("DependentVrfInfo"));
  EXPECT_EQ(world.mounts->fwkType(), &typeNamed("PolicySmMounts"));
  EXPECT_EQ(world.chip->fwkType(), &typeNamed("VrfHelper"));
  EXPECT_EQ(world.users->fwkType(), &typeNamed("VrfHwConfig"));
  EXPECT_EQ(world.statuses->fwkType(), &typeNamed("VrfHwStatus"));
  EXPECT_EQ(world.vrfSm->fwkType(), &typeNamed("VrfSm"));
  EXPECT_EQ(world.instance->fwkType(), &typeNamed("VrfSm::VrfInstanceSm"));
}

TEST(TypeTable, TheTablesAreCreatedByNameWithNotificationsOn) {
  for (const char* name : {"VrfHwConfig", "VrfHwStatus", "PolicySmMounts"}) {
    const Ptr<Mox::PtrInterface> created = Mox::create(typeNamed(name));
    ASSERT_NE(created, nullptr) << name;
    EXPECT_EQ(created->fwkType(), &typeNamed(name));
    EXPECT_TRUE(created->hasNotificationActive()) << name;
    EXPECT_EQ(created->references(), 1U) << name;
  }
}

TEST(TypeTable, TheMachinesAreCreatedByNameFromTheirSixInputs) {
  World world;
  const std::vector<AnyValue> inputs{vrfHwConfigFactory(), vrfHwStatusFactory(), world.chip,
                                     world.fallback,       world.routes,         world.routes6};
  const auto vrfSm = Mox::ptrCast<VrfSm>(Mox::create(typeNamed("VrfSm"), inputs));
  ASSERT_NE(vrfSm, nullptr);
  EXPECT_EQ(vrfSm->vrfHelper(), world.chip);
  EXPECT_EQ(vrfSm->routing6HwRouteStatus(), world.routes6);
  EXPECT_TRUE(vrfSm->hasNotificationActive());

  const auto top = Mox::ptrCast<ZelVrfSelectionPolicySm>(Mox::create(
      typeNamed("ZelVrfSelectionPolicySm"),
      {world.policyHelper, world.mounts, world.chip, world.fallback, world.routes, world.routes6}));
  ASSERT_NE(top, nullptr);
  EXPECT_EQ(top->policySmMounts(), world.mounts);
  EXPECT_TRUE(top->hasNotificationActive());
}

TEST(TypeTable, CreationRefusesWrongArguments) {
  EXPECT_EQ(refusal<Mox::ArgumentException>(
                [] { static_cast<void>(Mox::create(typeNamed("VrfHwConfig"), {AnyValue(1U)})); }),
            "ZelVrfSelectionPolicy::VrfHwConfig: expected 0 arguments, found 1");
  World world;
  const std::vector<AnyValue> inputs{world.statuses, world.users,  world.chip,
                                     world.fallback, world.routes, world.routes6};
  EXPECT_EQ(refusal<Mox::ArgumentException>(
                [&] { static_cast<void>(Mox::create(typeNamed("VrfSm"), inputs)); }),
            "ZelVrfSelectionPolicy::VrfSm: expected a value of the kind "
            "Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> as argument 1, found "
            "Mox::Ptr<Mox::PtrInterface> to ZelVrfSelectionPolicy::VrfHwStatus");
}

TEST(TypeTable, WhatHasNoStaticCreatorIsNotCreatedByName) {
  for (const char* name : {"DependentVrfInfo", "VrfHelper", "VrfSm::VrfInstanceSm", "VrfAction"})
    EXPECT_EQ(Mox::create(typeNamed(name)), nullptr) << name;
}

TEST(ModuleStart, SharesDefaultsOfThePlatformValueTypesThatItUses) {
  for (const Mox::Type* type :
       {&L3::VrfName::moxType, &PolicyMap::actionTypeType, &Mox::stringType, &Mox::unsignedType}) {
    const AnyValue* shared = Mox::moxDefault(*type);
    ASSERT_NE(shared, nullptr) << type->name;
    EXPECT_EQ(*shared, AnyValue::ofType(*type)) << type->name;
  }
  EXPECT_EQ(*Mox::moxDefault(L3::VrfName::moxType), AnyValue(L3::VrfName()));
  EXPECT_EQ(*Mox::moxDefault(Mox::unsignedType), AnyValue(0U));
}

TEST(ModuleStart, DefinesThePrefixOfNetworkNamespaces) {
  EXPECT_EQ(namespacePrefix.bytes(), "ns-");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
