// The types that the platform itself registers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Mox/ReflectiveAccess.h"
#include "Mox/Type.h"
#include "Routing/Hardware/VrfStatus.h"

namespace PlatformTests {
namespace {

TEST(PlatformTypes, TheTypesThatAttributesReferToResolve) {
  for (const char* name : {"bool",
                           "unsigned",
                           "Velo::String",
                           "L3::VrfName",
                           "PolicyMap::ActionType",
                           "Mox::Ptr<Mox::PtrInterface>",
                           "Mox::Ptr<Mox::PtrInterface const>",
                           "Mox::Dir",
                           "Mox::Entity",
                           "Acl::Config",
                           "Classification::FieldSetConfig",
                           "Ip::Status",
                           "Ip6::Status",
                           "Lag::Input::Config",
                           "PolicyMap::IntfConfig",
                           "PolicyMap::PolicyMapAclHelper",
                           "PolicyMap::PolicyMapStatusRequestDir",
                           "Routing::Hardware::PrefixLensInExactMatch",
                           "Routing::Hardware::RouteStatus",
                           "Routing::Hardware::VrfStatus",
                           "Routing6::Hardware::RouteStatus",
                           "TrafficPolicy::Status",
                           "TrafficPolicy::TrafficPolicyConfig",
                           "TrafficPolicy::ZelTrafficPolicySm",
                           "VrfSelectionPolicy::VrfSelectionFallbackVrf"}) {
    const Mox::Type* type = Mox::moxType(name);
    ASSERT_NE(type, nullptr) << name;
    EXPECT_EQ(type->name, name);
  }
  EXPECT_THAT(Mox::moxModules(), ::testing::Contains("ZelPlatform"));
}

TEST(PlatformTypes, AVrfStatusIsReadAndWrittenByNumber) {
  const auto status = Routing::Hardware::VrfStatus::VrfStatusIs("red");
  EXPECT_EQ(Mox::access(*status, 259, Mox::Operation::write, {7U}).code, Mox::ReturnCode::success);
  EXPECT_EQ(status->vrfId(), 7U);
  EXPECT_EQ(Mox::access(*status, 259, Mox::Operation::read).value, Mox::AnyValue(7U));
}

}  // namespace
}  // namespace PlatformTests
