#include "Mox/ReflectiveAccess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

#include "L3/VrfName.h"
#include "Mox/AttributeTable.h"
#include "Mox/AttributeText.h"

namespace Mox {
namespace {

using ::testing::ElementsAre;

/// An entity with an attribute of every sort.
class Lamp : public PtrInterface {
 public:
  using Levels = HashMap2018<L3::VrfName, unsigned, 0x1234>;
  static const Type moxType;

  static Ptr<Lamp> LampIs(const Velo::String& colour) { return makeActivePtr<Lamp>(colour); }
  explicit Lamp(const Velo::String& colour) : colour_(colour) {}
  const Type* fwkType() const override { return &moxType; }

  const Velo::String& colour() const noexcept { return colour_; }
  void colourIs(const Velo::String& colour) {
    if (colour.empty()) throw std::runtime_error("no colour");
    colour_ = colour;
  }
  bool isLit() const { return lit_; }
  unsigned dim(unsigned by, bool twice) { return brightness_ -= twice ? 2 * by : by; }
  void switchOff() noexcept { lit_ = false; }
  const Levels& levels() const noexcept { return levels_; }
  void levelsIs(const L3::VrfName& room, unsigned level) { levels_.insert(room, level); }

 private:
  Velo::String colour_;
  bool lit_ = true;
  unsigned brightness_ = 100;
  Levels levels_;
};

unsigned lengthOfColour(const Lamp& lamp) {
  return static_cast<unsigned>(lamp.colour().size());
}

constexpr Attribute attributes[] = {
    {130, "colour", field<&Lamp::colour, &Lamp::colourIs>()},
    {131, "isLit", field<&Lamp::isLit>()},
    {132, "dim", handler<&Lamp::dim>()},
    {133, "switchOff", handler<&Lamp::switchOff>()},
    {134, "levels", collection<Lamp, Lamp::Levels, &Lamp::levels, &Lamp::levelsIs>()},
    {135, "lengthOfColour", field<&lengthOfColour>()},
};
constexpr Reflection reflection{
    .attributes = attributes,
    .create = &createdBy<&Lamp::LampIs>,
    .nameOf = &namedBy<&Lamp::colour>,
};
constinit const Type Lamp::moxType{"Reflected::Lamp", &reflection};

class ReflectedLamp : public ::testing::Test {
 protected:
  Ptr<Lamp> lamp_ = Lamp::LampIs("red");
};

TEST_F(ReflectedLamp, IsReadAndWritten) {
  EXPECT_EQ(access(*lamp_, 130, Operation::read).value, AnyValue(Velo::String("red")));
  EXPECT_EQ(access(*lamp_, 130, Operation::write, {Velo::String("blue")}).code,
            ReturnCode::success);
  EXPECT_EQ(lamp_->colour().bytes(), "blue");
  EXPECT_EQ(access(*lamp_, 131, Operation::read).value, AnyValue(true));
}

TEST_F(ReflectedLamp, IsReadByAFunctionBesideTheClass) {
  EXPECT_EQ(access(*lamp_, 135, Operation::read).value, AnyValue(3U));
}

TEST_F(ReflectedLamp, AnswersWithTheCodesThatOthersKnow) {
  EXPECT_EQ(static_cast<int>(access(*lamp_, 131, Operation::read).code), 0);
  EXPECT_EQ(static_cast<int>(access(*lamp_, 131, Operation::write, {false}).code), 1);
  EXPECT_EQ(static_cast<int>(access(*lamp_, 136, Operation::read).code), 2);
  EXPECT_EQ(static_cast<int>(access(*lamp_, 131, static_cast<Operation>(200)).code), 1);
}

TEST_F(ReflectedLamp, CallsAHandlerWithItsArgumentsAndGivesItsResult) {
  EXPECT_EQ(access(*lamp_, 132, Operation::call, {10U, false}).value, AnyValue(90U));
  EXPECT_EQ(access(*lamp_, 132, Operation::call, {10U, true}).value, AnyValue(70U));
  EXPECT_EQ(access(*lamp_, 133, Operation::call).value, AnyValue());
  EXPECT_FALSE(lamp_->isLit());
}

TEST_F(ReflectedLamp, TheFirstWrongArgumentIsNamed) {
  try {
    access(*lamp_, 132, Operation::call, {false, 10U});
    ADD_FAILURE() << "no exception";
  } catch (const ArgumentException& error) {
    EXPECT_STREQ(error.what(),
                 "dim: expected a value of the kind unsigned as argument 1, found bool");
  }
}

TEST_F(ReflectedLamp, WhatAMutatorThrowsPassesThrough) {
  EXPECT_THROW(access(*lamp_, 130, Operation::write, {Velo::String()}), std::runtime_error);
  EXPECT_EQ(lamp_->colour().bytes(), "red");
}

TEST_F(ReflectedLamp, MayOnlyBeReadAsAConstant) {
  const Lamp& view = *lamp_;
  EXPECT_EQ(access(view, 130, Operation::read).code, ReturnCode::success);
  EXPECT_EQ(access(view, 130, Operation::write, {Velo::String("blue")}).code,
            ReturnCode::notSupported);
  EXPECT_EQ(access(view, 133, Operation::call).code, ReturnCode::notSupported);
  EXPECT_TRUE(lamp_->isLit());
}

TEST_F(ReflectedLamp, ACollectionAcceptsOnlyWhatItsRowNames) {
  EXPECT_EQ(access(*lamp_, 134, Operation::write, {L3::VrfName("hall"), 3U}).code,
            ReturnCode::success);
  EXPECT_EQ(access(*lamp_, 134, Operation::read, {L3::VrfName("hall")}).value, AnyValue(3U));
  EXPECT_EQ(access(*lamp_, 134, Operation::read, {L3::VrfName("attic")}).value, AnyValue(0U));
  EXPECT_EQ(access(*lamp_, 134, Operation::remove, {L3::VrfName("hall")}).code,
            ReturnCode::notSupported);
  EXPECT_EQ(lamp_->levels().count(), 1U);
  EXPECT_EQ(access(*lamp_, 134, Operation::count).value, AnyValue(1U));
  EXPECT_GT(lamp_->levels().capacity(), 0U);
  EXPECT_EQ(access(*lamp_, 134, Operation::capacity).value, AnyValue(lamp_->levels().capacity()));
}

TEST_F(ReflectedLamp, ACollectionIsReadByExactlyAsManyArgumentsAsTheOperationNeeds) {
  const auto refusal = [this](Operation operation, std::initializer_list<AnyValue> arguments) {
    try {
      access(*lamp_, 134, operation, arguments);
    } catch (const ArgumentException& error) {
      return std::string(error.what());
    }
    return std::string("accepted");
  };
  const L3::VrfName hall("hall");
  for (const Operation operation : {Operation::read, Operation::has}) {
    EXPECT_EQ(refusal(operation, {}), "levels: expected 1 argument, found 0");
    EXPECT_EQ(refusal(operation, {hall, 3U}), "levels: expected 1 argument, found 2");
  }
  for (const Operation operation : {Operation::count, Operation::capacity})
    EXPECT_EQ(refusal(operation, {hall}), "levels: expected 0 arguments, found 1");
}

TEST_F(ReflectedLamp, IsCreatedFromTheArgumentsOfItsCreator) {
  const Ptr<PtrInterface> created = create(Lamp::moxType, {Velo::String("green")});
  ASSERT_NE(created, nullptr);
  EXPECT_EQ(ptrCast<Lamp>(created)->colour().bytes(), "green");
  EXPECT_TRUE(created->hasNotificationActive());
  EXPECT_THROW(static_cast<void>(create(Lamp::moxType)), ArgumentException);
}

TEST_F(ReflectedLamp, TellsItsAttributesAndTheirKinds) {
  std::vector<std::string> kinds;
  for (const Attribute& attribute : Lamp::moxType.reflection->attributes)
    kinds.push_back(attribute.kind());
  EXPECT_THAT(
      kinds, ElementsAre("Velo::String", "bool", "handler(unsigned, bool) -> unsigned",
                         "handler() -> nothing", "collection L3::VrfName -> unsigned", "unsigned"));
}

TEST_F(ReflectedLamp, IsShownAsTextByNameAndByNumber) {
  lamp_->levelsIs("hall", 3);
  EXPECT_EQ(attributeText(*lamp_, "colour").text, "'red'");
  EXPECT_EQ(attributeText(*lamp_, "134").text, "'hall': 3\n");
  EXPECT_EQ(attributeText(*lamp_, "levels", "'hall'").text, "3");
  EXPECT_EQ(attributeText(*lamp_, "dim").code, ReturnCode::notSupported);
  EXPECT_EQ(attributeText(*lamp_, "136").code, ReturnCode::unknownAttribute);
  EXPECT_EQ(AnyValue(lamp_).text().bytes(), "Reflected::Lamp 'red'");
}

TEST(ReflectiveAccess, ATypeWithoutAReflectionHasNoAttributesAndIsNotCreated) {
  class Plain : public PtrInterface {};
  const Ptr<Plain> plain = makePtr<Plain>();
  EXPECT_EQ(access(*plain, 130, Operation::read).code, ReturnCode::unknownAttribute);
  EXPECT_EQ(accessWhole(*plain, Operation::isSet).code, ReturnCode::notSupported);
  EXPECT_EQ(iterate(*plain, 130), nullptr);
  EXPECT_EQ(create(*plain->fwkType()), nullptr);
  EXPECT_EQ(attributeText(*plain, "colour").code, ReturnCode::unknownAttribute);
}

}  // namespace
}  // namespace Mox
