// Attributes as an operator's console shows them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Mox/AttributeText.h"
#include "World.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Mox::attributeText;
using Mox::ReturnCode;

constexpr const char* redKey =
    "Value('ZelVrfSelectionPolicy::VrfAction', ** {'vrfName': 'red', 'fallbackVrfName': '', "
    "'postDecapVrfName': '', 'action': actionVrf})";

class AttributesAsText : public ::testing::Test {
 protected:
  World world_;
};

TEST_F(AttributesAsText, ACollectionIsListedWholeWithoutAKey) {
  EXPECT_EQ(attributeText(*world_.users, "vrfRefCount").text, std::string(redKey) + ": 1\n");
  EXPECT_EQ(attributeText(*world_.statuses, "hwStatus").text,
            std::string(redKey) +
                ": Value('ZelVrfSelectionPolicy::HwStatus', ** {'status': programmedInHw, "
                "'failureReason': failureNone, 'failureDescription': ''})\n");
  EXPECT_EQ(attributeText(*world_.vrfSm, "fallbackVrfInfo").text, "'red': 'blue'\n");
  world_.vrfSm->fallbackVrfInfoIs("green", "white");
  EXPECT_EQ(attributeText(*world_.vrfSm, "136").text, "'red': 'blue'\n'green': 'white'\n");
}

TEST_F(AttributesAsText, AnEmptyCollectionIsNothing) {
  EXPECT_EQ(attributeText(*vrfHwConfigFactory(), "vrfRefCount").code, ReturnCode::success);
  EXPECT_EQ(attributeText(*vrfHwConfigFactory(), "vrfRefCount").text, "");
}

TEST_F(AttributesAsText, AnEntryIsReadByTheKeyThatTheListShows) {
  EXPECT_EQ(attributeText(*world_.users, "vrfRefCount", redKey).text, "1");
  EXPECT_EQ(attributeText(*world_.vrfSm, "fallbackVrfInfo", "'red'").text, "'blue'");
  EXPECT_EQ(attributeText(*world_.vrfSm, "fallbackVrfInfo", "'none'").text, "''");
}

TEST_F(AttributesAsText, ASetListsItsMembersAndTellsOneByItsKey) {
  EXPECT_EQ(attributeText(*world_.dependents, "dependentVrfs").text, "'red'\n");
  EXPECT_EQ(attributeText(*world_.dependents, "dependentVrfs", "'red'").text, "true");
  EXPECT_EQ(attributeText(*world_.dependents, "dependentVrfs", "'blue'").text, "false");
}

TEST_F(AttributesAsText, AnEntityIsShownByItsTypeAndItsName) {
  EXPECT_EQ(attributeText(*world_.vrfSm, "vrfHelper").text,
            "ZelVrfSelectionPolicy::VrfHelper 'recorder'");
  EXPECT_EQ(attributeText(*world_.vrfSm, "vrfHwConfig").text, "ZelVrfSelectionPolicy::VrfHwConfig");
  EXPECT_EQ(attributeText(*world_.top, "policySm").text, "null");
  EXPECT_EQ(attributeText(*world_.instance, "vrfInstance").text,
            "Routing::Hardware::VrfStatus 'red'");
  EXPECT_EQ(attributeText(*world_.vrfSm, "vrfInstance").text,
            "'red': ZelVrfSelectionPolicy::VrfSm::VrfInstanceSm 'red'\n");
  EXPECT_EQ(attributeText(*world_.vrfSm, "dependentVrfInfo").text,
            "'blue': ZelVrfSelectionPolicy::DependentVrfInfo 'blue'\n");
}

TEST_F(AttributesAsText, ANestedMachineWithoutAnEntryGoesByTheNameOfWhatItFollows) {
  EXPECT_EQ(attributeText(*world_.vrfSm, "vrfPrefixLensInExactMatchV6", "'red'").text,
            "Mox::PtrInterface 'red'");
}

TEST_F(AttributesAsText, AFieldIsShownInItsStringForm) {
  EXPECT_EQ(attributeText(*world_.instance, "vrfName").text, "'red'");
  EXPECT_EQ(attributeText(*world_.dependents, "fallbackVrf").text, "'blue'");
  EXPECT_EQ(attributeText(world_.action, "action").text, "actionVrf");
  EXPECT_EQ(attributeText(world_.status, "failureReason").text, "failureNone");
}

TEST_F(AttributesAsText, HandlersAreNotRead) {
  EXPECT_EQ(attributeText(*world_.vrfSm, "handleInitialized").code, ReturnCode::notSupported);
  EXPECT_EQ(attributeText(*world_.chip, "389").code, ReturnCode::notSupported);
  EXPECT_TRUE(world_.journal.lines().empty());
}

TEST_F(AttributesAsText, WhatIsNotThereIsUnknown) {
  for (const char* attribute : {"vrfrefcount", "129", "99999999", "130 ", "", "-"})
    EXPECT_EQ(attributeText(*world_.users, attribute).code, ReturnCode::unknownAttribute)
        << attribute;
}

TEST_F(AttributesAsText, AKeyThatIsNoneIsARangeException) {
  EXPECT_EQ(refusal<Mox::RangeException>(
                [&] { static_cast<void>(attributeText(*world_.vrfSm, "vrfInstance", "red")); }),
            "expected ''' at byte 0, found 'red'");
  EXPECT_EQ(refusal<Mox::RangeException>([&] {
              static_cast<void>(
                  attributeText(*world_.vrfSm, "vrfInstance", "'" + std::string(101, 'x') + "'"));
            }),
            "Mox::String::bytes > maxLength() not allowed");
}

TEST_F(AttributesAsText, AKeyWhereNoneIsTakenIsRefused) {
  EXPECT_EQ(refusal<Mox::ArgumentException>(
                [&] { static_cast<void>(attributeText(*world_.vrfSm, "vrfHelper", "'red'")); }),
            "vrfHelper: takes no key");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
