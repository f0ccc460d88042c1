#include "PolicyMap/ActionType.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "Mox/Reflection.h"

namespace PolicyMap {
namespace {

TEST(ActionType, IsOneByteAndNoneByDefault) {
  static_assert(sizeof(ActionType) == 1);
  EXPECT_EQ(ActionType{}, ActionType::none);
  EXPECT_EQ(static_cast<unsigned>(ActionType::none), 0u);
}

TEST(ActionType, EveryOneIsFoundByCodeAndByName) {
  for (const ActionType type :
       {ActionType::none, ActionType::vrf, ActionType::decapVrf, ActionType::discard}) {
    EXPECT_EQ(ActionTypeInstance(static_cast<unsigned>(type)), type);
    EXPECT_EQ(ActionTypeInstance(stringValue(type)), type);
  }
}

TEST(ActionType, NamesDiffer) {
  EXPECT_EQ(stringValue(ActionType::none).bytes(), "actionNone");
  EXPECT_EQ(stringValue(ActionType::vrf).bytes(), "actionVrf");
  EXPECT_EQ(stringValue(ActionType::decapVrf).bytes(), "actionDecapVrf");
  EXPECT_EQ(stringValue(ActionType::discard).bytes(), "actionDiscard");
}

TEST(ActionType, ItsTypeHasItsNamesByCode) {
  EXPECT_THAT(actionTypeType.reflection->names(),
              ::testing::ElementsAre("actionNone", "actionVrf", "actionDecapVrf", "actionDiscard"));
}

TEST(ActionType, UnknownCodesAndNamesAreRefused) {
  EXPECT_THROW(static_cast<void>(ActionTypeInstance(4)), Mox::RangeException);
  EXPECT_THROW(static_cast<void>(ActionTypeInstance(256)), Mox::RangeException);
  EXPECT_THROW(static_cast<void>(ActionTypeInstance("vrf")), Mox::RangeException);
}

TEST(ActionType, StringFormIsReadBack) {
  for (unsigned code = 0; code < 4; ++code) {
    const ActionType type = ActionTypeInstance(code);
    const Velo::String form = valueToStrep(type);
    Mox::CharRange range(form.bytes());
    EXPECT_EQ(sequenceToValue(range), type);
    EXPECT_TRUE(range.atEnd());
    std::ostringstream stream;
    stream << type;
    EXPECT_EQ(stream.str(), form.bytes());
  }
}

TEST(ActionType, ReadingAnythingElseIsRefused) {
  for (const char* text : {"", "vrf", "actionVrfs", "1", "'actionVrf'"}) {
    Mox::CharRange range(text);
    EXPECT_THROW(static_cast<void>(sequenceToValue(range)), Mox::RangeException) << text;
  }
}

TEST(ActionType, ACodeOfNoTypeIsShownInDecimal) {
  EXPECT_EQ(stringValue(ActionType{77}).bytes(), "77");
}

}  // namespace
}  // namespace PolicyMap
