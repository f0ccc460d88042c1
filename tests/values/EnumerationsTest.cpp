#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>
#include <string_view>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "Mox/Strep.h"
#include "ZelVrfSelectionPolicy/values/FailureCode.h"
#include "ZelVrfSelectionPolicy/values/ProgrammingResult.h"

namespace ZelVrfSelectionPolicy {
namespace {

static_assert(sizeof(ProgrammingResult) == 1 && sizeof(FailureCode) == 1);

/// An enumeration's names by code, and its own two instance functions.
struct ProgrammingResults {
  using Value = ProgrammingResult;
  static constexpr std::array<std::string_view, 2> names{"programmedInHw", "programmingFailure"};
  static Value instance(unsigned code) { return ProgrammingResultInstance(code); }
  static Value instance(const Velo::String& name) { return ProgrammingResultInstance(name); }
};
struct FailureCodes {
  using Value = FailureCode;
  static constexpr std::array<std::string_view, 3> names{"failureNone", "failureVrfResourceAlloc",
                                                         "failureVrfResourceExhausted"};
  static Value instance(unsigned code) { return FailureCodeInstance(code); }
  static Value instance(const Velo::String& name) { return FailureCodeInstance(name); }
};

template <class Enumeration>
class RecordEnumeration : public ::testing::Test {};
using Enumerations = ::testing::Types<ProgrammingResults, FailureCodes>;
TYPED_TEST_SUITE(RecordEnumeration, Enumerations);

TEST(FailureCode, Instance2IsFailureVrfResourceExhausted) {
  EXPECT_EQ(stringValue(FailureCodeInstance(2)).bytes(), "failureVrfResourceExhausted");
}

TEST(ProgrammingResult, InstanceOfProgrammingFailureIsCode1) {
  EXPECT_EQ(static_cast<unsigned>(ProgrammingResultInstance("programmingFailure")), 1U);
}

TYPED_TEST(RecordEnumeration, CodesAndNamesNameOneAnother) {
  for (unsigned code = 0; code < TypeParam::names.size(); ++code) {
    const auto value = TypeParam::instance(code);
    EXPECT_EQ(static_cast<unsigned>(value), code);
    EXPECT_EQ(TypeParam::instance(Velo::String(TypeParam::names[code])), value);
    EXPECT_EQ(stringValue(value).bytes(), TypeParam::names[code]);
  }
}

TYPED_TEST(RecordEnumeration, StringFormAndStreamAreTheName) {
  for (unsigned code = 0; code < TypeParam::names.size(); ++code) {
    const auto value = TypeParam::instance(code);
    EXPECT_EQ(valueToStrep(value).bytes(), TypeParam::names[code]);
    std::ostringstream stream;
    stream << value;
    EXPECT_EQ(stream.str(), TypeParam::names[code]);
  }
}

TYPED_TEST(RecordEnumeration, ReadingConsumesTheNameAlone) {
  for (unsigned code = 0; code < TypeParam::names.size(); ++code) {
    const std::string text = std::string(TypeParam::names[code]) + ", next";
    Mox::CharRange range(text);
    typename TypeParam::Value value{};
    sequenceToValue(range, &value);
    EXPECT_EQ(value, TypeParam::instance(code));
    EXPECT_EQ(range.rest(), ", next");
  }
}

TYPED_TEST(RecordEnumeration, AnUnknownNameIsARangeError) {
  for (const char* unknown : {"", "unknown", "failure", "FailureNone", "programmedinhw"}) {
    EXPECT_THROW(TypeParam::instance(Velo::String(unknown)), Mox::RangeException) << unknown;
    EXPECT_THROW(static_cast<void>(Mox::strepToValue<typename TypeParam::Value>(unknown)),
                 Mox::RangeException)
        << unknown;
  }
}

TYPED_TEST(RecordEnumeration, ACodeBeyondTheTableIsARangeError) {
  const auto beyond = static_cast<unsigned>(TypeParam::names.size());
  for (const unsigned code : {beyond, 255U, 256U, 0xffffffffU}) {
    EXPECT_THROW(TypeParam::instance(code), Mox::RangeException) << code;
  }
}

TYPED_TEST(RecordEnumeration, AValueBeyondTheTablePrintsAsItsNumber) {
  const auto beyond = static_cast<typename TypeParam::Value>(200);
  EXPECT_EQ(stringValue(beyond).bytes(), "200");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
