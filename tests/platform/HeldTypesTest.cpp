// The domain types that are held and handed on: an entity with a name and no more.
#include <gtest/gtest.h>

#include <string_view>

#include "Acl/Config.h"
#include "Bost/TimerWheel.h"
#include "Classification/FieldSetConfig.h"
#include "Classification/UdfConfig.h"
#include "Ip/Config.h"
#include "Ip/Status.h"
#include "Ip6/Config.h"
#include "Ip6/Status.h"
#include "Lag/Input/Config.h"
#include "Mirroring/Config.h"
#include "Mox/Dir.h"
#include "Mox/Entity.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapStatusRequestDir.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "Sflow/InterfaceCollector.h"
#include "TrafficPolicy/HwStatus.h"
#include "TrafficPolicy/Status.h"
#include "TrafficPolicy/TrafficPolicyConfig.h"
#include "Zel/NexthopConfig.h"
#include "Zel/NexthopGroupConfig.h"
#include "Zel/NexthopGroupStatus.h"
#include "Zel/NexthopStatus.h"
#include "Zel/ZelCommonSmData.h"

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
TEST(HeldTypes, IpConfigIsCreatedByName) {
  expectHeld(Ip::Config::ConfigIs("held"), "Ip::Config");
}
TEST(HeldTypes, Ip6ConfigIsCreatedByName) {
  expectHeld(Ip6::Config::ConfigIs("held"), "Ip6::Config");
}
TEST(HeldTypes, NexthopConfigIsCreatedByName) {
  expectHeld(Zel::NexthopConfig::NexthopConfigIs("held"), "Zel::NexthopConfig");
}
TEST(HeldTypes, NexthopStatusIsCreatedByName) {
  expectHeld(Zel::NexthopStatus::NexthopStatusIs("held"), "Zel::NexthopStatus");
}
TEST(HeldTypes, NexthopGroupConfigIsCreatedByName) {
  expectHeld(Zel::NexthopGroupConfig::NexthopGroupConfigIs("held"), "Zel::NexthopGroupConfig");
}
TEST(HeldTypes, NexthopGroupStatusIsCreatedByName) {
  expectHeld(Zel::NexthopGroupStatus::NexthopGroupStatusIs("held"), "Zel::NexthopGroupStatus");
}
TEST(HeldTypes, ZelCommonSmDataIsCreatedByName) {
  expectHeld(Zel::ZelCommonSmData::ZelCommonSmDataIs("held"), "Zel::ZelCommonSmData");
}
TEST(HeldTypes, TimerWheelIsCreatedByName) {
  expectHeld(Bost::TimerWheel::TimerWheelIs("held"), "Bost::TimerWheel");
}
TEST(HeldTypes, MirroringConfigIsCreatedByName) {
  expectHeld(Mirroring::Config::ConfigIs("held"), "Mirroring::Config");
}
TEST(HeldTypes, SflowInterfaceCollectorIsCreatedByName) {
  expectHeld(Sflow::InterfaceCollector::InterfaceCollectorIs("held"), "Sflow::InterfaceCollector");
}
TEST(HeldTypes, UdfConfigIsCreatedByName) {
  expectHeld(Classification::UdfConfig::UdfConfigIs("held"), "Classification::UdfConfig");
}
TEST(HeldTypes, TrafficPolicyHwStatusIsCreatedByName) {
  expectHeld(TrafficPolicy::HwStatus::HwStatusIs("held"), "TrafficPolicy::HwStatus");
}
TEST(HeldTypes, ClassMapTypeConfigIsCreatedByName) {
  expectHeld(PolicyMap::ClassMapTypeConfig::ClassMapTypeConfigIs("held"),
             "PolicyMap::ClassMapTypeConfig");
}
TEST(HeldTypes, PolicyMapTypeConfigIsCreatedByName) {
  expectHeld(PolicyMap::PolicyMapTypeConfig::PolicyMapTypeConfigIs("held"),
             "PolicyMap::PolicyMapTypeConfig");
}
TEST(HeldTypes, PolicyMapTypeStatusIsCreatedByName) {
  expectHeld(PolicyMap::PolicyMapTypeStatus::PolicyMapTypeStatusIs("held"),
             "PolicyMap::PolicyMapTypeStatus");
}

}  // namespace
}  // namespace PlatformTests
