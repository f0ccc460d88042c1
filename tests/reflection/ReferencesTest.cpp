// The bag of references and the boundary to the chip, by number.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "World.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Mox::access;
using Mox::AnyValue;
using Mox::Operation;
using Mox::Ptr;
using Mox::ReturnCode;
using ::testing::ElementsAre;

class ReflectedPolicySmMounts : public ::testing::Test {
 protected:
  AnyValue read(Mox::AttributeId number) const {
    return access(*mounts_, number, Operation::read).value;
  }
  ReturnCode write(Mox::AttributeId number, const AnyValue& value) {
    return access(*mounts_, number, Operation::write, {value}).code;
  }

  Ptr<PolicySmMounts> mounts_ = policySmMountsFactory();
};

TEST_F(ReflectedPolicySmMounts, ReadsItsTwelveReferencesAsNullAtFirst) {
  for (short number = 130; number <= 141; ++number)
    EXPECT_EQ(read(number).as<Ptr<const Mox::PtrInterface>>(), nullptr) << number;
}

TEST_F(ReflectedPolicySmMounts, WritesAndReadsAReference) {
  const auto config = Acl::Config::ConfigIs("acl");
  EXPECT_EQ(write(134, config), ReturnCode::success);
  EXPECT_EQ(mounts_->aclConfig(), config);
  EXPECT_EQ(read(134).as<Ptr<const Acl::Config>>(), config);
}

TEST_F(ReflectedPolicySmMounts, WritingTheSamePointerAgainLeavesItsCount) {
  const AnyValue config = Acl::Config::ConfigIs("acl");
  write(134, config);
  const unsigned references = mounts_->aclConfig()->references();
  write(134, config);
  EXPECT_EQ(mounts_->aclConfig()->references(), references);
}

TEST_F(ReflectedPolicySmMounts, AReferenceIsClearedByWritingNull) {
  write(133, TrafficPolicy::Status::StatusIs("status"));
  EXPECT_NE(mounts_->policyStatus(), nullptr);
  write(133, AnyValue::parsed(Mox::entityPtrType, "null"));
  EXPECT_EQ(mounts_->policyStatus(), nullptr);
}

TEST_F(ReflectedPolicySmMounts, RefusesAnEntityOfAnotherType) {
  EXPECT_EQ(refusal<Mox::ArgumentException>([&] { write(134, Ip::Status::StatusIs("ip")); }),
            "aclConfig: expected a value of the kind Mox::Ptr<Acl::Config const> as argument 1, "
            "found Mox::Ptr<Mox::PtrInterface> to Ip::Status 'ip'");
  EXPECT_EQ(mounts_->aclConfig(), nullptr);
}

TEST_F(ReflectedPolicySmMounts, OnlyTheTwoWritableReferencesRefuseAnEntityThatMayOnlyBeRead) {
  const Ptr<const TrafficPolicy::Status> status = TrafficPolicy::Status::StatusIs("status");
  EXPECT_EQ(refusal<Mox::ArgumentException>([&] { write(133, status); }),
            "policyStatus: expected a value of the kind Mox::Ptr<TrafficPolicy::Status> as "
            "argument 1, found Mox::Ptr<Mox::PtrInterface const> to TrafficPolicy::Status "
            "'status'");
  const Ptr<const PolicyMap::PolicyMapStatusRequestDir> requests =
      PolicyMap::PolicyMapStatusRequestDir::PolicyMapStatusRequestDirIs("requests");
  EXPECT_NE(refusal<Mox::ArgumentException>([&] { write(132, requests); }), "no exception");
  const Ptr<const Ip::Status> ip = Ip::Status::StatusIs("ip");
  EXPECT_EQ(write(136, ip), ReturnCode::success);
  EXPECT_EQ(mounts_->ipStatus(), ip);
}

TEST_F(ReflectedPolicySmMounts, WhatIsReadFromAWritableReferenceMayBeChanged) {
  write(133, TrafficPolicy::Status::StatusIs("status"));
  EXPECT_TRUE(read(133).holds<Ptr<TrafficPolicy::Status>>());
  write(136, Ip::Status::StatusIs("ip"));
  EXPECT_FALSE(read(136).holds<Ptr<Ip::Status>>());
  EXPECT_TRUE(read(136).holds<Ptr<const Ip::Status>>());
}

class ReflectedVrfHelper : public ::testing::Test {
 protected:
  World world_;
  const VrfAction blue_{"blue", PolicyMap::ActionType::vrf};
};

TEST_F(ReflectedVrfHelper, ReadsItsReferencesAndRefusesToWriteThem) {
  using Fallback = Ptr<const VrfSelectionPolicy::VrfSelectionFallbackVrf>;
  EXPECT_EQ(access(*world_.chip, 386, Operation::read).value.as<Fallback>(), world_.fallback);
  EXPECT_EQ(access(*world_.chip, 387, Operation::read).value,
            AnyValue(world_.chip->routingHwRouteStatus()));
  EXPECT_EQ(access(*world_.chip, 388, Operation::read).value,
            AnyValue(world_.chip->routing6HwRouteStatus()));
  EXPECT_EQ(access(*world_.chip, 387, Operation::write, {world_.routes}).code,
            ReturnCode::notSupported);
}

TEST_F(ReflectedVrfHelper, CallsTheHooksOfTheChip) {
  HwStatus failed;
  failed.failureDescriptionIs("no room");
  world_.chip->onCreate = [&](const VrfAction&) { return failed; };
  EXPECT_EQ(access(*world_.chip, 389, Operation::call, {blue_}).value, AnyValue(failed));
  EXPECT_EQ(access(*world_.chip, 390, Operation::call, {blue_}).value, AnyValue(HwStatus()));
  EXPECT_EQ(access(*world_.chip, 391, Operation::call, {blue_}).value.type(), nullptr);
  EXPECT_THAT(world_.journal.lines(),
              ElementsAre("createVrf blue", "updateVrf blue", "deleteVrf blue"));
}

TEST_F(ReflectedVrfHelper, DoesNotCallAHookByAnotherOperation) {
  for (int number = 0; number <= 13; ++number) {
    if (number == 10) continue;
    EXPECT_EQ(access(*world_.chip, 389, static_cast<Operation>(number), {blue_}).code,
              ReturnCode::notSupported)
        << number;
  }
  EXPECT_TRUE(world_.journal.lines().empty());
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
