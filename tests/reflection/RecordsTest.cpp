// Records by the entries of their types, without knowing what they are.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "World.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Mox::access;
using Mox::accessWhole;
using Mox::AnyValue;
using Mox::Operation;
using Mox::ReturnCode;
using PolicyMap::ActionType;

constexpr const char* redText =
    "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': 'red', 'fallbackVrfName': '', "
    "'postDecapVrfName': '', 'action': actionVrf})";

const Mox::Type& actionType() {
  return typeNamed("VrfAction");
}
const Mox::Type& statusType() {
  return typeNamed("HwStatus");
}
AnyValue inRed() {
  return VrfAction("red", ActionType::vrf);
}

TEST(ReflectedVrfAction, IsMadeOfNothingOrOfAVrfNameAndAnAction) {
  EXPECT_EQ(AnyValue::ofType(actionType()).as<VrfAction>(), VrfAction());
  const std::vector<AnyValue> arguments{L3::VrfName("red"), ActionType::vrf};
  EXPECT_EQ(AnyValue::ofType(actionType(), arguments), inRed());
}

TEST(ReflectedVrfAction, IsNotMadeOfOtherArguments) {
  const std::vector<AnyValue> one{L3::VrfName("red")};
  EXPECT_EQ(refusal<Mox::ArgumentException>(
                [&] { static_cast<void>(AnyValue::ofType(actionType(), one)); }),
            "ZelVrfSelectionPolicy::VrfAction: expected 2 arguments, found 1");
  const std::vector<AnyValue> swapped{ActionType::vrf, L3::VrfName("red")};
  EXPECT_EQ(refusal<Mox::ArgumentException>(
                [&] { static_cast<void>(AnyValue::ofType(actionType(), swapped)); }),
            "ZelVrfSelectionPolicy::VrfAction: expected a value of the kind L3::VrfName as "
            "argument 1, found PolicyMap::ActionType");
}

TEST(ReflectedVrfAction, IsCopiedFromAnUntypedPointerOfItsTypeOnly) {
  const VrfAction red("red", ActionType::vrf);
  AnyValue copy = AnyValue::ofType(actionType());
  copy.copyFrom(actionType(), &red);
  EXPECT_EQ(copy.as<VrfAction>(), red);
  EXPECT_NE(copy.value(), static_cast<const void*>(&red));

  const HwStatus status;
  EXPECT_EQ(refusal<Mox::ArgumentException>([&] { copy.copyFrom(statusType(), &status); }),
            "expected a value of the kind ZelVrfSelectionPolicy::HwStatus, found "
            "ZelVrfSelectionPolicy::VrfAction");
  EXPECT_EQ(copy.as<VrfAction>(), red);
}

TEST(ReflectedVrfAction, HashesAsWithTheSeed0) {
  EXPECT_EQ(inRed().hash(), VrfAction("red", ActionType::vrf).hash(0));
}

TEST(ReflectedVrfAction, IsPrintedAndParsed) {
  EXPECT_EQ(inRed().text().bytes(), redText);
  EXPECT_EQ(AnyValue::parsed(actionType(), redText), inRed());
}

TEST(ReflectedVrfAction, IsNotParsedFromItsFormAndABlank) {
  EXPECT_NE(refusal<Mox::RangeException>([] {
              static_cast<void>(AnyValue::parsed(actionType(), std::string(redText) + " "));
            }).find("expected the end of the text"),
            std::string::npos);
}

TEST(ReflectedVrfAction, ReadsItsFields) {
  VrfAction action("red", ActionType::decapVrf);
  action.fallbackVrfNameIs("blue");
  action.postDecapVrfNameIs("green");
  const AnyValue record = action;
  EXPECT_EQ(access(record, 2, Operation::read).value, AnyValue(L3::VrfName("red")));
  EXPECT_EQ(access(record, 3, Operation::read).value, AnyValue(L3::VrfName("blue")));
  EXPECT_EQ(access(record, 4, Operation::read).value, AnyValue(L3::VrfName("green")));
  EXPECT_EQ(access(record, 5, Operation::read).value, AnyValue(ActionType::decapVrf));
}

TEST(ReflectedVrfAction, RefusesWritingItsVrfNameAsNotSupported) {
  AnyValue record = inRed();
  EXPECT_EQ(access(record, 2, Operation::write, {L3::VrfName("blue")}).code,
            ReturnCode::notSupported);
  EXPECT_EQ(record, inRed());
}

TEST(ReflectedVrfAction, IsCompletedWithFallbackAndPostDecapVrf) {
  AnyValue record = inRed();
  EXPECT_EQ(access(record, 3, Operation::write, {L3::VrfName("blue")}).code, ReturnCode::success);
  EXPECT_EQ(access(record, 4, Operation::write, {L3::VrfName("green")}).code, ReturnCode::success);
  EXPECT_EQ(record.as<VrfAction>().fallbackVrfName(), "blue");
  EXPECT_EQ(record.as<VrfAction>().postDecapVrfName(), "green");
}

TEST(ReflectedVrfAction, IsSetEqualAndOrderedAsAWhole) {
  const AnyValue unset = VrfAction();
  EXPECT_EQ(accessWhole(unset, Operation::isSet).value, AnyValue(false));
  EXPECT_EQ(accessWhole(inRed(), Operation::isSet).value, AnyValue(true));
  EXPECT_EQ(accessWhole(inRed(), Operation::isEqual, {inRed()}).value, AnyValue(true));
  EXPECT_EQ(accessWhole(inRed(), Operation::isEqual, {unset}).value, AnyValue(false));
  const AnyValue inDefault = VrfAction("default", ActionType::vrf);
  EXPECT_EQ(accessWhole(inDefault, Operation::isLess, {inRed()}).value, AnyValue(true));
  EXPECT_EQ(accessWhole(inRed(), Operation::isLess, {inDefault}).value, AnyValue(false));
  EXPECT_EQ(accessWhole(inRed(), Operation::isLess, {inRed()}).value, AnyValue(false));
}

TEST(ReflectedVrfAction, IsNotComparedWithARecordOfAnotherType) {
  for (const Operation operation : {Operation::isEqual, Operation::isLess}) {
    EXPECT_EQ(
        refusal<Mox::ArgumentException>([&] { accessWhole(inRed(), operation, {HwStatus()}); }),
        "ZelVrfSelectionPolicy::VrfAction: expected another of its kind, found "
        "ZelVrfSelectionPolicy::HwStatus");
  }
}

TEST(ReflectedRecords, AcceptOperations11To13AsAWholeAndNoOther) {
  for (int number = 0; number <= 13; ++number) {
    const auto operation = static_cast<Operation>(number);
    const bool compares = number == 12 || number == 13;
    const auto onAction =
        compares ? accessWhole(inRed(), operation, {inRed()}) : accessWhole(inRed(), operation);
    EXPECT_EQ(onAction.code, number >= 11 ? ReturnCode::success : ReturnCode::notSupported)
        << number;
    const AnyValue status = HwStatus();
    const auto onStatus =
        compares ? accessWhole(status, operation, {status}) : accessWhole(status, operation);
    EXPECT_EQ(onStatus.code,
              number == 11 || number == 12 ? ReturnCode::success : ReturnCode::notSupported)
        << number;
  }
}

TEST(ReflectedEntities, AcceptNothingAsAWhole) {
  World world;
  for (int number = 0; number <= 13; ++number) {
    EXPECT_EQ(accessWhole(*world.users, static_cast<Operation>(number)).code,
              ReturnCode::notSupported)
        << number;
  }
}

TEST(ReflectedHwStatus, IsMadeOfNothingOnly) {
  EXPECT_EQ(AnyValue::ofType(statusType()).as<HwStatus>(), HwStatus());
  const std::vector<AnyValue> one{true};
  EXPECT_EQ(refusal<Mox::ArgumentException>(
                [&] { static_cast<void>(AnyValue::ofType(statusType(), one)); }),
            "ZelVrfSelectionPolicy::HwStatus: expected 0 arguments, found 1");
}

TEST(ReflectedHwStatus, IsWrittenFieldByFieldPrintedParsedAndCopied) {
  AnyValue record = AnyValue::ofType(statusType());
  EXPECT_EQ(accessWhole(record, Operation::isSet).value, AnyValue(false));
  access(record, 2, Operation::write, {ProgrammingResult::programmingFailure});
  access(record, 3, Operation::write, {FailureCode::failureVrfResourceExhausted});
  access(record, 4, Operation::write, {Velo::String("no room")});
  EXPECT_EQ(accessWhole(record, Operation::isSet).value, AnyValue(true));

  const std::string text =
      "Value('ZelVrfSelectionPolicy::HwStatus', ** {'status': programmingFailure, "
      "'failureReason': failureVrfResourceExhausted, 'failureDescription': 'no room'})";
  EXPECT_EQ(record.text().bytes(), text);
  EXPECT_EQ(AnyValue::parsed(statusType(), text), record);
  EXPECT_EQ(AnyValue::copyOf(statusType(), record.value()), record);
  EXPECT_EQ(access(record, 2, Operation::read).value,
            AnyValue(ProgrammingResult::programmingFailure));
  EXPECT_EQ(access(record, 3, Operation::read).value,
            AnyValue(FailureCode::failureVrfResourceExhausted));
  EXPECT_EQ(access(record, 4, Operation::read).value, AnyValue(Velo::String("no room")));
}

TEST(ReflectedHwStatus, EqualRecordsHashEquallyAndOthersHardlyEver) {
  AnyValue failed = HwStatus();
  access(failed, 4, Operation::write, {Velo::String("no room")});
  EXPECT_EQ(failed.hash(), AnyValue(failed).hash());
  EXPECT_NE(failed.hash(), AnyValue(HwStatus()).hash());
}

TEST(ReflectedHwStatus, ARecordThatWasCopiedDoesNotChangeWithTheOriginal) {
  AnyValue original = HwStatus();
  const AnyValue copy = original;
  access(original, 4, Operation::write, {Velo::String("no room")});
  EXPECT_EQ(copy, AnyValue(HwStatus()));
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
