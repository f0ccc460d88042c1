// Every attribute of every type, against every operation number.

#include "Rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "Mox/AttributeText.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Mox::Operation;
using Mox::ReturnCode;

constexpr int lastOperation = 13;

class EveryAttribute : public ::testing::TestWithParam<Row> {};

TEST_P(EveryAttribute, AcceptsItsOperationsAndRefusesEveryOther) {
  const Row& row = GetParam();
  for (int number = 0; number <= lastOperation; ++number) {
    World world;
    const auto answer = Mox::access(world.object(row.type), row.number,
                                    static_cast<Operation>(number), row.arguments(number, world));
    EXPECT_EQ(answer.code, row.accepts(number) ? ReturnCode::success : ReturnCode::notSupported)
        << "operation " << number;
    EXPECT_TRUE(row.accepts(number) || answer.value.type() == nullptr) << "operation " << number;
  }
}

TEST_P(EveryAttribute, RefusesWhateverChangesAnObjectThatMayOnlyBeRead) {
  const Row& row = GetParam();
  for (const int number : row.operations) {
    World world;
    const Mox::Object object = world.object(row.type);
    const bool isRecord = object.type().reflection->value != nullptr;
    const Mox::Object readOnly =
        isRecord ? Mox::Object(std::as_const(row.type == std::string("VrfAction") ? world.action
                                                                                  : world.status))
                 : Mox::Object(*static_cast<const Mox::PtrInterface*>(object.readable()));
    const bool changes = number == 1 || number == 2 || number == 10;
    const auto answer = Mox::access(readOnly, row.number, static_cast<Operation>(number),
                                    row.arguments(number, world));
    EXPECT_EQ(answer.code, changes ? ReturnCode::notSupported : ReturnCode::success)
        << "operation " << number;
  }
}

TEST_P(EveryAttribute, IsFoundByItsNumberAndByItsName) {
  const Row& row = GetParam();
  const Mox::Type& type = typeNamed(row.type);
  const Mox::Attribute* attribute = Mox::findAttribute(type, row.number);
  ASSERT_NE(attribute, nullptr);
  EXPECT_EQ(attribute, Mox::findAttribute(type, row.name));
  EXPECT_EQ(attribute->number, row.number);
  EXPECT_EQ(attribute->name, row.name);
}

TEST_P(EveryAttribute, TellsItsKindAndTheOperationsThatItAccepts) {
  const Row& row = GetParam();
  const Mox::Attribute* attribute = Mox::findAttribute(typeNamed(row.type), row.number);
  ASSERT_NE(attribute, nullptr);
  EXPECT_EQ(attribute->kind(), row.kind);
  for (int number = 0; number <= lastOperation; ++number) {
    EXPECT_EQ(attribute->accepts(static_cast<Operation>(number)), row.accepts(number))
        << "operation " << number;
  }
}

TEST_P(EveryAttribute, IsIteratedIfItIsACollection) {
  const Row& row = GetParam();
  World world;
  const auto walk = Mox::iterate(world.object(row.type), row.number);
  EXPECT_EQ(walk != nullptr, row.accepts(3));
}

TEST_P(EveryAttribute, RefusesAnArgumentTooManyByItsName) {
  const Row& row = GetParam();
  for (const int number : row.operations) {
    World world;
    auto arguments = row.arguments(number, world);
    arguments.emplace_back(true);
    const std::string said = refusal<Mox::ArgumentException>([&] {
      Mox::access(world.object(row.type), row.number, static_cast<Operation>(number), arguments);
    });
    const std::size_t expected = arguments.size() - 1;
    EXPECT_EQ(said, row.name + (": expected " + std::to_string(expected)) +
                        (expected == 1 ? " argument" : " arguments") + ", found " +
                        std::to_string(arguments.size()));
  }
}

TEST_P(EveryAttribute, RefusesAnArgumentOfAnotherKindByItsName) {
  const Row& row = GetParam();
  const Mox::AnyValue stranger = PolicyMap::ActionType::discard;
  for (const int number : row.operations) {
    World world;
    auto arguments = row.arguments(number, world);
    for (Mox::AnyValue& argument : arguments)
      argument = stranger;
    if (arguments.empty()) continue;
    const std::string said = refusal<Mox::ArgumentException>([&] {
      Mox::access(world.object(row.type), row.number, static_cast<Operation>(number), arguments);
    });
    EXPECT_THAT(said, ::testing::StartsWith(row.name + std::string(": expected a value")));
    EXPECT_THAT(said, ::testing::EndsWith("found PolicyMap::ActionType"));
  }
}

// Names of tests have no colons.
std::string testName(std::string name) {
  std::replace(name.begin(), name.end(), ':', '_');
  return name;
}
std::string nameOfRow(const ::testing::TestParamInfo<Row>& row) {
  return testName(row.param.type + std::string("_") + row.param.name);
}
std::string nameOfType(const ::testing::TestParamInfo<std::string>& type) {
  return testName(type.param);
}

INSTANTIATE_TEST_SUITE_P(All, EveryAttribute, ::testing::ValuesIn(everyRow()), nameOfRow);

class EveryType : public ::testing::TestWithParam<std::string> {};

TEST_P(EveryType, AnswersEveryOtherNumberWithUnknownAttributeWhateverTheOperation) {
  std::set<int> known;
  for (const Row& row : everyRow()) {
    if (row.type == GetParam()) known.insert(row.number);
  }
  World world;
  const Mox::Object object = world.object(GetParam());
  EXPECT_EQ(object.type().reflection->attributes.size(), known.size());
  for (int number = -2; number <= 600; ++number) {
    if (known.contains(number)) continue;
    for (int operation = 0; operation <= lastOperation; ++operation) {
      const auto answer = Mox::access(object, static_cast<Mox::AttributeId>(number),
                                      static_cast<Operation>(operation));
      ASSERT_EQ(answer.code, ReturnCode::unknownAttribute) << number << " " << operation;
    }
    ASSERT_EQ(Mox::iterate(object, static_cast<Mox::AttributeId>(number)), nullptr) << number;
  }
  EXPECT_EQ(Mox::findAttribute(object.type(), "noSuchAttribute"), nullptr);
}

TEST_P(EveryType, NumbersItsAttributesOnce) {
  std::set<int> numbers;
  std::set<std::string_view> names;
  for (const Mox::Attribute& attribute : typeNamed(GetParam()).reflection->attributes) {
    EXPECT_TRUE(numbers.insert(attribute.number).second) << attribute.number;
    EXPECT_TRUE(names.insert(attribute.name).second) << attribute.name;
  }
}

TEST_P(EveryType, ShowsEachReadableAttributeAsTextByNumberAsByName) {
  for (const Row& row : everyRow()) {
    if (row.type != GetParam()) continue;
    World world;
    const auto byName = Mox::attributeText(world.object(row.type), row.name);
    const auto byNumber = Mox::attributeText(world.object(row.type), std::to_string(row.number));
    const auto expected = row.accepts(0) ? ReturnCode::success : ReturnCode::notSupported;
    EXPECT_EQ(byName.code, expected) << row.name;
    EXPECT_EQ(byNumber.code, expected) << row.number;
    EXPECT_EQ(byName.text, byNumber.text) << row.name;
    EXPECT_TRUE(row.accepts(0) || byName.text.empty()) << row.name;
  }
}

INSTANTIATE_TEST_SUITE_P(All, EveryType,
                         ::testing::Values("VrfAction", "HwStatus", "VrfHwConfig", "VrfHwStatus",
                                           "DependentVrfInfo", "PolicySmMounts", "VrfHelper",
                                           "ZelVrfSelectionPolicySm", "VrfSm",
                                           "VrfSm::VrfInstanceSm"),
                         nameOfType);

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
