#include "Mox/AnyValue.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Acl/Config.h"
#include "L3/VrfName.h"
#include "Mox/Dir.h"
#include "PolicyMap/ActionType.h"
#include "Routing/Hardware/VrfStatus.h"
#include "tests/platform/Refusal.h"

namespace Mox {
namespace {

using Testing::refusal;

std::vector<AnyValue> oneOfEachKind() {
  return {true,
          7U,
          Velo::String("text"),
          L3::VrfName("red"),
          PolicyMap::ActionType::decapVrf,
          Ptr<Dir>(),
          Ptr<const Dir>()};
}

TEST(AnyValue, HoldsNothingAtFirst) {
  const AnyValue none;
  EXPECT_EQ(none.type(), nullptr);
  EXPECT_EQ(none.value(), nullptr);
  EXPECT_EQ(none.text().bytes(), "");
  EXPECT_EQ(none.hash(), 0U);
  EXPECT_EQ(none, AnyValue());
  EXPECT_FALSE(none.holds<unsigned>());
  EXPECT_EQ(refusal<ArgumentException>([&] { static_cast<void>(none.as<unsigned>()); }),
            "expected a value of the kind unsigned, found no value");
}

TEST(AnyValue, GivesItsValueAsWhatItIsAndAsNothingElse) {
  const AnyValue count = 7U;
  EXPECT_TRUE(count.holds<unsigned>());
  EXPECT_EQ(count.as<unsigned>(), 7U);
  EXPECT_FALSE(count.holds<bool>());
  EXPECT_EQ(refusal<ArgumentException>([&] { static_cast<void>(count.as<bool>()); }),
            "expected a value of the kind bool, found unsigned");
  EXPECT_EQ(refusal<ArgumentException>([&] { static_cast<void>(count.as<Ptr<Dir>>()); }),
            "expected a value of the kind Mox::Ptr<Mox::Dir>, found unsigned");
}

TEST(AnyValue, KnowsTheRegisteredEntryOfItsType) {
  for (const AnyValue& value : oneOfEachKind())
    EXPECT_EQ(value.type(), moxType(value.type()->name)) << value.type()->name;
}

TEST(AnyValue, OwnsACopyOfItsValue) {
  for (const AnyValue& original : oneOfEachKind()) {
    AnyValue copy = original;
    EXPECT_EQ(copy, original) << original.type()->name;
    EXPECT_NE(copy.value(), original.value()) << original.type()->name;
    AnyValue moved = std::move(copy);
    EXPECT_EQ(moved, original) << original.type()->name;
    moved = AnyValue();
    EXPECT_EQ(moved.type(), nullptr);
  }
}

TEST(AnyValue, IsNotAffectedByAssignmentToItself) {
  AnyValue name = L3::VrfName("red");
  const AnyValue& same = name;
  name = same;
  EXPECT_EQ(name.as<L3::VrfName>(), "red");
}

TEST(AnyValue, ValuesOfDifferentTypesDiffer) {
  EXPECT_NE(AnyValue(0U), AnyValue(false));
  EXPECT_NE(AnyValue(Velo::String("red")), AnyValue(L3::VrfName("red")));
  EXPECT_NE(AnyValue(0U), AnyValue());
}

TEST(AnyValue, EqualValuesHashEqually) {
  for (const AnyValue& value : oneOfEachKind())
    EXPECT_EQ(value.hash(), AnyValue(value).hash()) << value.type()->name;
  EXPECT_NE(AnyValue(1U).hash(), AnyValue(2U).hash());
  EXPECT_NE(AnyValue(true).hash(), AnyValue(false).hash());
  EXPECT_EQ(AnyValue(L3::VrfName("red")).hash(), L3::VrfName("red").hash(0));
}

TEST(AnyValue, IsParsedFromItsText) {
  for (const AnyValue& value : oneOfEachKind())
    EXPECT_EQ(AnyValue::parsed(*value.type(), value.text().bytes()), value) << value.type()->name;
  EXPECT_EQ(AnyValue(true).text().bytes(), "true");
  EXPECT_EQ(AnyValue(4294967295U).text().bytes(), "4294967295");
  EXPECT_EQ(AnyValue(Velo::String("it's")).text().bytes(), "'it\\'s'");
  EXPECT_EQ(AnyValue(L3::VrfName("red")).text().bytes(), "'red'");
  EXPECT_EQ(AnyValue(PolicyMap::ActionType::vrf).text().bytes(), "actionVrf");
  EXPECT_EQ(AnyValue(Ptr<Dir>()).text().bytes(), "null");
}

TEST(AnyValue, IsNotParsedFromAnyOtherText) {
  const std::vector<std::pair<const Type*, const char*>> wrong{
      {&boolType, "True"},
      {&boolType, ""},
      {&boolType, "true "},
      {&unsignedType, ""},
      {&unsignedType, "-1"},
      {&unsignedType, "+1"},
      {&unsignedType, "07"},
      {&unsignedType, " 7"},
      {&unsignedType, "4294967296"},
      {&unsignedType, "7x"},
      {&stringType, "text"},
      {&stringType, "'text' "},
      {&entityPtrType, "NULL"},
      {&entityPtrType, ""},
      {&constEntityPtrType, "Mox::Dir 'dir'"},
      {&L3::VrfName::moxType, "red"},
      {&PolicyMap::actionTypeType, "vrf"},
  };
  for (const auto& each : wrong) {
    const Type& type = *each.first;
    const char* text = each.second;
    EXPECT_NE(refusal<RangeException>([&] { static_cast<void>(AnyValue::parsed(type, text)); }), "")
        << type.name << " " << text;
  }
  EXPECT_EQ(
      refusal<RangeException>([] { static_cast<void>(AnyValue::parsed(unsignedType, "many")); }),
      "expected a number from 0 to 4294967295 at byte 0, found 'many'");
}

TEST(AnyValue, IsMadeOfTheArgumentsOfAConstructor) {
  EXPECT_EQ(AnyValue::ofType(unsignedType), AnyValue(0U));
  EXPECT_EQ(AnyValue::ofType(boolType), AnyValue(false));
  EXPECT_EQ(AnyValue::ofType(L3::VrfName::moxType), AnyValue(L3::VrfName()));
  const std::vector<AnyValue> name{Velo::String("actionDiscard")};
  EXPECT_EQ(AnyValue::ofType(PolicyMap::actionTypeType, name),
            AnyValue(PolicyMap::ActionType::discard));
  EXPECT_EQ(
      refusal<ArgumentException>([&] { static_cast<void>(AnyValue::ofType(unsignedType, name)); }),
      "unsigned: expected 0 arguments, found 1");
}

TEST(AnyValue, IsOfATypeOfValuesOnly) {
  EXPECT_EQ(refusal<ArgumentException>([] { static_cast<void>(AnyValue::ofType(Dir::moxType)); }),
            "Mox::Dir is not a type of values");
}

TEST(AnyValue, TakesACopyOfAValueOfItsOwnTypeOnly) {
  AnyValue count = 7U;
  const unsigned eight = 8;
  count.copyFrom(unsignedType, &eight);
  EXPECT_EQ(count, AnyValue(8U));
  const bool yes = true;
  EXPECT_EQ(refusal<ArgumentException>([&] { count.copyFrom(boolType, &yes); }),
            "expected a value of the kind bool, found unsigned");
  EXPECT_EQ(count, AnyValue(8U));
}

TEST(AnyValueOfAnEntity, HoldsTheEntityAndGivesItAsWhatItIs) {
  const Ptr<Dir> dir = Dir::DirIs("dir");
  {
    const AnyValue pointer = dir;
    EXPECT_EQ(dir->references(), 2U);
    EXPECT_EQ(pointer.as<Ptr<Dir>>(), dir);
    EXPECT_EQ(pointer.as<Ptr<const Entity>>(), dir);
    EXPECT_EQ(pointer.as<Ptr<PtrInterface>>(), dir);
    EXPECT_FALSE(pointer.holds<Ptr<Acl::Config>>());
  }
  EXPECT_EQ(dir->references(), 1U);
}

TEST(AnyValueOfAnEntity, OneThatMayOnlyBeReadStaysSo) {
  const Ptr<const Dir> dir = Dir::DirIs("dir");
  const AnyValue pointer = dir;
  EXPECT_EQ(pointer.as<Ptr<const Dir>>(), dir);
  EXPECT_FALSE(pointer.holds<Ptr<Dir>>());
  EXPECT_EQ(refusal<ArgumentException>([&] { static_cast<void>(pointer.as<Ptr<Dir>>()); }),
            "expected a value of the kind Mox::Ptr<Mox::Dir>, found "
            "Mox::Ptr<Mox::PtrInterface const> to Mox::Dir 'dir'");
}

TEST(AnyValueOfAnEntity, NullIsInEveryKindOfPointer) {
  for (const AnyValue& null : {AnyValue(Ptr<Dir>()), AnyValue(Ptr<const Dir>())}) {
    EXPECT_EQ(null.as<Ptr<Dir>>(), nullptr);
    EXPECT_EQ(null.as<Ptr<const Acl::Config>>(), nullptr);
  }
}

TEST(AnyValueOfAnEntity, IsShownByTypeAndName) {
  EXPECT_EQ(AnyValue(Dir::DirIs("dir")).text().bytes(), "Mox::Dir 'dir'");
  EXPECT_EQ(AnyValue(Dir::DirIs("")).text().bytes(), "Mox::Dir");
  EXPECT_EQ(AnyValue(Routing::Hardware::VrfStatus::VrfStatusIs("red")).text().bytes(),
            "Routing::Hardware::VrfStatus 'red'");
}

TEST(AnyValueOfAnEntity, EqualsThePointerToTheSameEntity) {
  const Ptr<Dir> dir = Dir::DirIs("dir");
  EXPECT_EQ(AnyValue(dir), AnyValue(dir));
  EXPECT_EQ(AnyValue(dir).hash(), AnyValue(dir).hash());
  EXPECT_NE(AnyValue(dir), AnyValue(Dir::DirIs("dir")));
}

}  // namespace
}  // namespace Mox
