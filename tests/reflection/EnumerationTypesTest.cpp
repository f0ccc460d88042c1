#include "ZelVrfSelectionPolicy/reflection/EnumerationTypes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "World.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Mox::AnyValue;
using ::testing::ElementsAre;

AnyValue made(const char* type, const AnyValue& of) {
  return AnyValue::ofType(typeNamed(type), std::span(&of, 1));
}

TEST(ReflectedEnumerations, TellTheirNamesByCode) {
  EXPECT_THAT(typeNamed("ProgrammingResult").reflection->names(),
              ElementsAre("programmedInHw", "programmingFailure"));
  EXPECT_THAT(typeNamed("FailureCode").reflection->names(),
              ElementsAre("failureNone", "failureVrfResourceAlloc", "failureVrfResourceExhausted"));
}

TEST(ReflectedEnumerations, AreMadeOfNothingACodeOrAName) {
  EXPECT_EQ(AnyValue::ofType(typeNamed("FailureCode")), AnyValue(FailureCode::failureNone));
  EXPECT_EQ(made("FailureCode", 2U), AnyValue(FailureCode::failureVrfResourceExhausted));
  EXPECT_EQ(made("ProgrammingResult", Velo::String("programmingFailure")),
            AnyValue(ProgrammingResult::programmingFailure));
}

TEST(ReflectedEnumerations, AreNotMadeOfACodeOrNameThatIsNone) {
  EXPECT_EQ(refusal<Mox::RangeException>([] { made("FailureCode", 3U); }),
            "no ZelVrfSelectionPolicy::FailureCode has the code 3, expected 0 to 2");
  EXPECT_EQ(refusal<Mox::RangeException>([] { made("FailureCode", Velo::String("none")); }),
            "no ZelVrfSelectionPolicy::FailureCode has the name 'none', expected failureNone, "
            "failureVrfResourceAlloc or failureVrfResourceExhausted");
}

TEST(ReflectedEnumerations, ArePrintedAndParsedByTheirNames) {
  for (const char* type : {"ProgrammingResult", "FailureCode"}) {
    unsigned code = 0;
    for (const std::string_view name : typeNamed(type).reflection->names()) {
      const AnyValue value = made(type, code++);
      EXPECT_EQ(value.text().bytes(), name);
      EXPECT_EQ(AnyValue::parsed(typeNamed(type), name), value);
    }
  }
}

TEST(ReflectedEnumerations, AreParsedWhole) {
  EXPECT_NE(refusal<Mox::RangeException>([] {
              static_cast<void>(AnyValue::parsed(typeNamed("FailureCode"), "failureNone "));
            }).find("expected the end of the text"),
            std::string::npos);
}

TEST(ReflectedEnumerations, HaveNoAttributesAndNoOrder) {
  const AnyValue value = FailureCode::failureNone;
  EXPECT_EQ(Mox::access(value, 2, Mox::Operation::read).code, Mox::ReturnCode::unknownAttribute);
  EXPECT_EQ(Mox::accessWhole(value, Mox::Operation::isLess, {value}).code,
            Mox::ReturnCode::notSupported);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
