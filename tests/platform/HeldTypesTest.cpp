// The domain types that are held and handed on: an entity with a name and no more.
#include <gtest/gtest.h>

#include <string_view>

#include "Acl/Config.h"
#include "Classification/FieldSetConfig.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "Lag/Input/Config.h"
#include "Mox/Dir.h"
#include "Mox/Entity.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapAclHelper.h"
#include "PolicyMap/PolicyMapStatusRequestDir.h"
#include "TrafficPolicy/Status.h"
#include "TrafficPolicy/TrafficPolicyConfig.h"

namespace PlatformTests {
namespace {

template <class Held>
void expectHeld(const Mox::Ptr<Held>& held, std::string_view typeName) {
  ASSERT_TRUE(held);
  const Mox::Ptr<Held const> view = held;
  EXPECT_EQ(view->references(), 2u);
  const Mox::Ptr<Mox::Entity> entity = held;
  EXPECT_EQ(entity->name().bytes(), "held");
  EXPECT_EQ(entity->fwkType()->name, typeName);
  EXPECT_TRUE(entity->hasNotificationActive());
  EXPECT_FALSE(entity->isZombie());
  EXPECT_EQ(Mox::ptrCast<Held>(entity), held);
}

TEST(HeldTypes, AclConfigIsCreatedByName) {
  expectHeld(Acl::Config::ConfigIs("held"), "Acl::Config");
}
TEST(HeldTypes, FieldSetConfigIsCreatedByName) {
  expectHeld(Classification::FieldSetConfig::FieldSetConfigIs("held"),
             "Classification::FieldSetConfig");
}
TEST(HeldTypes, IpStatusIsCreatedByName) {
  expectHeld(Ip::Status::StatusIs("held"), "Ip::Status");
}
TEST(HeldTypes, Ip6StatusIsCreatedByName) {
  expectHeld(Ip6::Status::StatusIs("held"), "Ip6::Status");
}
TEST(HeldTypes, LagInputConfigIsCreatedByName) {
  expectHeld(Lag::Input::Config::ConfigIs("held"), "Lag::Input::Config");
}
TEST(HeldTypes, DirIsCreatedByName) {
  expectHeld(Mox::Dir::DirIs("held"), "Mox::Dir");
}
TEST(HeldTypes, IntfConfigIsCreatedByName) {
  expectHeld(PolicyMap::IntfConfig::IntfConfigIs("held"), "PolicyMap::IntfConfig");
}
TEST(HeldTypes, PolicyMapAclHelperIsCreatedByName) {
  expectHeld(PolicyMap::PolicyMapAclHelper::PolicyMapAclHelperIs("held"),
             "PolicyMap::PolicyMapAclHelper");
}
TEST(HeldTypes, PolicyMapStatusRequestDirIsCreatedByName) {
  expectHeld(PolicyMap::PolicyMapStatusRequestDir::PolicyMapStatusRequestDirIs("held"),
             "PolicyMap::PolicyMapStatusRequestDir");
}
TEST(HeldTypes, TrafficPolicyStatusIsCreatedByName) {
  expectHeld(TrafficPolicy::Status::StatusIs("held"), "TrafficPolicy::Status");
}
TEST(HeldTypes, TrafficPolicyConfigIsCreatedByName) {
  expectHeld(TrafficPolicy::TrafficPolicyConfig::TrafficPolicyConfigIs("held"),
             "TrafficPolicy::TrafficPolicyConfig");
}

}  // namespace
}  // namespace PlatformTests
