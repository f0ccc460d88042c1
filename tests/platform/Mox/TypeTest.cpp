#include "Mox/Type.h"

#include "Mox/AnyValue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string_view>
#include <vector>

namespace Mox {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr Type lamp{"Registry::Lamp"};
constexpr Type shade{"Registry::Shade"};
constexpr Type bulb{"Registry::Bulb"};
constexpr std::array<const Type*, 2> lampTypes{&lamp, &shade};
constexpr std::array<const Type*, 1> bulbTypes{&bulb};

/// Two registered modules, taken out again at the end of the test.
class TypeRegistry : public ::testing::Test {
 protected:
  TypeRegistry() {
    moxModuleIs({"RegistryLamps", lampTypes});
    moxModuleIs({"RegistryBulbs", bulbTypes});
  }
  ~TypeRegistry() override {
    moxModuleDel("RegistryLamps");
    moxModuleDel("RegistryBulbs");
  }
};

TEST_F(TypeRegistry, ResolvesTheNamesOfRegisteredTypes) {
  EXPECT_EQ(moxType("Registry::Lamp"), &lamp);
  EXPECT_EQ(moxType("Registry::Shade"), &shade);
  EXPECT_EQ(moxType("Registry::Bulb"), &bulb);
}

TEST_F(TypeRegistry, ResolvesWholeNamesOnly) {
  for (const char* name : {"", "Registry", "Lamp", "Registry::Lam", "Registry::Lamps"})
    EXPECT_EQ(moxType(name), nullptr) << name;
}

TEST_F(TypeRegistry, ListsModulesInTheOrderOfRegistration) {
  std::vector<std::string_view> modules = moxModules();
  ASSERT_GE(modules.size(), 2u);
  EXPECT_EQ(modules[modules.size() - 2], "RegistryLamps");
  EXPECT_EQ(modules.back(), "RegistryBulbs");
}

TEST_F(TypeRegistry, ListsTheTypesOfAModule) {
  EXPECT_THAT(moxModuleTypes("RegistryLamps"), ElementsAre(&lamp, &shade));
  EXPECT_THAT(moxModuleTypes("RegistryBulbs"), ElementsAre(&bulb));
  EXPECT_THAT(moxModuleTypes("Registry"), IsEmpty());
}

TEST_F(TypeRegistry, ForgetsAModuleWithItsTypesAndKeepsTheOthers) {
  moxModuleDel("RegistryLamps");
  EXPECT_EQ(moxType("Registry::Lamp"), nullptr);
  EXPECT_EQ(moxType("Registry::Shade"), nullptr);
  EXPECT_EQ(moxType("Registry::Bulb"), &bulb);
  EXPECT_THAT(moxModules(), Not(Contains("RegistryLamps")));
  EXPECT_THAT(moxModules(), Contains("RegistryBulbs"));
}

TEST_F(TypeRegistry, ForgettingAnUnknownModuleChangesNothing) {
  const std::vector<std::string_view> before = moxModules();
  moxModuleDel("RegistryNobody");
  EXPECT_EQ(moxModules(), before);
}

TEST_F(TypeRegistry, ATypeHasNoMoreThanItsNameUnlessItIsGivenAReflection) {
  EXPECT_EQ(moxType("Registry::Lamp")->reflection, nullptr);
  EXPECT_NE(moxType("unsigned")->reflection, nullptr);
}

TEST_F(TypeRegistry, SharesDefaultsWhileAModuleThatSharesThemIsRegistered) {
  EXPECT_EQ(moxDefault(boolType), nullptr);
  constexpr std::array shared{&boolType};
  moxModuleIs({"RegistrySwitches", {}, shared});
  const AnyValue* value = moxDefault(boolType);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(*value, AnyValue(false));
  EXPECT_EQ(moxDefault(lamp), nullptr);
  moxModuleDel("RegistrySwitches");
  EXPECT_EQ(moxDefault(boolType), nullptr);
}

TEST_F(TypeRegistry, TakesAModuleThatComesAgain) {
  moxModuleDel("RegistryLamps");
  moxModuleIs({"RegistryLamps", lampTypes});
  EXPECT_EQ(moxType("Registry::Lamp"), &lamp);
  EXPECT_EQ(moxModules().back(), "RegistryLamps");
}

}  // namespace
}  // namespace Mox
