#include "ZelVrfSelectionPolicy/values/HwStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <concepts>
#include <sstream>

#include "Mox/Strep.h"
#include "ParseError.h"

namespace ZelVrfSelectionPolicy {
namespace {

using ::testing::HasSubstr;
using Testing::parseError;
using ::testing::StartsWith;

HwStatus status(ProgrammingResult result, FailureCode reason, const Velo::String& description) {
  HwStatus made;
  made.statusIs(result);
  made.failureReasonIs(reason);
  made.failureDescriptionIs(description);
  return made;
}

HwStatus failed(const Velo::String& description) {
  return status(ProgrammingResult::programmingFailure, FailureCode::failureVrfResourceExhausted,
                description);
}

bool areEqual(const HwStatus& a, const HwStatus& b) {
  return HwStatus::isEq(&a, &b);
}

template <class Record>
concept HasOrdering = requires(const Record& a, const Record& b) {
  a < b;
};

static_assert(!HasOrdering<HwStatus>, "outcomes have no order");
static_assert(std::copyable<HwStatus> && std::default_initializable<HwStatus>);

TEST(HwStatus, DefaultRecordSaysThatAllIsWell) {
  const HwStatus well;
  EXPECT_EQ(well.status(), ProgrammingResult::programmedInHw);
  EXPECT_EQ(well.failureReason(), FailureCode::failureNone);
  EXPECT_TRUE(well.failureDescription().empty());
}

TEST(HwStatus, DefaultRecordPrintsItsNamesAndAnEmptyDescription) {
  EXPECT_EQ(valueToStrep(HwStatus()).bytes(),
            "Value('ZelVrfSelectionPolicy::HwStatus', ** {'status': programmedInHw, "
            "'failureReason': failureNone, 'failureDescription': ''})");
}

TEST(HwStatus, DefaultRecordPrintedAndParsedIsEqual) {
  const auto parsed = Mox::strepToValue<HwStatus>(valueToStrep(HwStatus()).bytes());
  EXPECT_TRUE(areEqual(parsed, HwStatus()));
}

TEST(HwStatus, StringFormShowsTheFieldsInDeclaredOrder) {
  EXPECT_EQ(valueToStrep(failed("no room")).bytes(),
            "Value('ZelVrfSelectionPolicy::HwStatus', ** {'status': programmingFailure, "
            "'failureReason': failureVrfResourceExhausted, 'failureDescription': 'no room'})");
}

TEST(HwStatus, StreamedItWritesExactlyTheStringForm) {
  std::ostringstream stream;
  stream << failed("it's full");
  EXPECT_EQ(stream.str(), valueToStrep(failed("it's full")).str());
}

TEST(HwStatus, RecordsThatDifferOnlyInDescriptionAreUnequal) {
  EXPECT_FALSE(areEqual(failed("a"), failed("b")));
  EXPECT_FALSE(areEqual(failed(""), failed(std::string(1, '\0'))));
  EXPECT_TRUE(areEqual(failed("a"), failed("a")));
}

TEST(HwStatus, StatusAndReasonTakePartInEquality) {
  const HwStatus whole = failed("a");
  EXPECT_FALSE(areEqual(whole, status(ProgrammingResult::programmedInHw,
                                      FailureCode::failureVrfResourceExhausted, "a")));
  EXPECT_FALSE(areEqual(whole, status(ProgrammingResult::programmingFailure,
                                      FailureCode::failureVrfResourceAlloc, "a")));
}

TEST(HwStatus, AllThreeFieldsAreWritable) {
  HwStatus written;
  written.statusIs(ProgrammingResult::programmingFailure);
  EXPECT_EQ(written.status(), ProgrammingResult::programmingFailure);
  written.failureReasonIs(FailureCode::failureVrfResourceAlloc);
  EXPECT_EQ(written.failureReason(), FailureCode::failureVrfResourceAlloc);
  written.failureDescriptionIs("why");
  EXPECT_EQ(written.failureDescription(), Velo::String("why"));
}

TEST(HwStatus, DefaultRecordIsNotSetAndAnyOneFieldSetsIt) {
  EXPECT_FALSE(HwStatus());
  EXPECT_TRUE(status(ProgrammingResult::programmingFailure, FailureCode::failureNone, ""));
  EXPECT_TRUE(status(ProgrammingResult::programmedInHw, FailureCode::failureVrfResourceAlloc, ""));
  EXPECT_TRUE(status(ProgrammingResult::programmedInHw, FailureCode::failureNone, "a"));
}

TEST(HwStatus, PrintedAndParsedItIsEqual) {
  std::string everyByte(256, '\0');
  for (std::size_t i = 0; i < everyByte.size(); ++i)
    everyByte[i] = static_cast<char>(i);
  for (const HwStatus& original :
       {failed(everyByte), failed("'})"), failed(std::string(5000, 'x')),
        status(ProgrammingResult::programmedInHw, FailureCode::failureVrfResourceAlloc, "\\")}) {
    const auto parsed = Mox::strepToValue<HwStatus>(valueToStrep(original).bytes());
    EXPECT_TRUE(areEqual(parsed, original)) << original << "\n" << parsed;
  }
}

TEST(HwStatus, TrailingTextFailsTheParser) {
  EXPECT_THAT(parseError<HwStatus>(valueToStrep(HwStatus()).str() + " "),
              HasSubstr("expected the end of the text"));
}

TEST(HwStatus, TheConstructorFromARangeLeavesWhatFollows) {
  const std::string text = valueToStrep(failed("full")).str() + ", next";
  Mox::CharRange range(text);
  EXPECT_TRUE(areEqual(HwStatus(range), failed("full")));
  EXPECT_EQ(range.rest(), ", next");
}

class HwStatusLiteral : public ::testing::TestWithParam<std::string> {
 protected:
  // A valid text with `replacement` in place of the literal.
  static std::string textWith(const std::string& replacement) {
    std::string text = valueToStrep(failed("full")).str();
    return text.replace(text.find(GetParam()), GetParam().size(), replacement);
  }
};

TEST_P(HwStatusLiteral, MissingFailsTheParser) {
  EXPECT_NE(parseError<HwStatus>(textWith("")), "");
}

TEST_P(HwStatusLiteral, WithAnyByteDifferentFailsTheParser) {
  for (std::size_t at = 0; at < GetParam().size(); ++at) {
    std::string different = GetParam();
    different[at] = different[at] == '#' ? '*' : '#';
    EXPECT_NE(parseError<HwStatus>(textWith(different)), "") << different;
  }
}

TEST_P(HwStatusLiteral, WithAnExtraBlankFailsTheParser) {
  EXPECT_NE(parseError<HwStatus>(textWith(" " + GetParam())), "");
  EXPECT_NE(parseError<HwStatus>(textWith(GetParam() + " ")), "");
}

TEST_P(HwStatusLiteral, TwiceFailsTheParser) {
  EXPECT_NE(parseError<HwStatus>(textWith(GetParam() + GetParam())), "");
}

INSTANTIATE_TEST_SUITE_P(Each, HwStatusLiteral,
                         ::testing::Values("Value('ZelVrfSelectionPolicy::HwStatus', ** {",
                                           "'status': ", ", 'failureReason': ",
                                           ", 'failureDescription': ", "})"));

TEST(HwStatus, EveryProperPrefixFailsTheParser) {
  const std::string text = valueToStrep(failed("full")).str();
  for (std::size_t size = 0; size < text.size(); ++size) {
    EXPECT_NE(parseError<HwStatus>(text.substr(0, size)), "") << size;
  }
}

std::string textOf(const std::string& result, const std::string& reason,
                   const std::string& description) {
  return "Value('ZelVrfSelectionPolicy::HwStatus', ** {'status': " + result +
         ", 'failureReason': " + reason + ", 'failureDescription': " + description + "})";
}

TEST(HwStatus, AnUnknownStatusIsARangeErrorOfItsAttribute) {
  for (const char* unknown : {"", "programmed", "programmedInHw2", "ProgrammedInHw", "0",
                              "'programmedInHw'", "failureNone"}) {
    EXPECT_THAT(parseError<HwStatus>(textOf(unknown, "failureNone", "''")), StartsWith("status: "))
        << unknown;
  }
}

TEST(HwStatus, AnUnknownReasonIsARangeErrorOfItsAttribute) {
  for (const char* unknown :
       {"", "failure", "failureNone2", "FailureNone", "0", "'failureNone'", "programmedInHw"}) {
    EXPECT_THAT(parseError<HwStatus>(textOf("programmedInHw", unknown, "''")),
                StartsWith("failureReason: "))
        << unknown;
  }
}

TEST(HwStatus, AnUnreadableDescriptionIsARangeErrorOfItsAttribute) {
  for (const char* unreadable : {"", "full", "\"full\"", "'full", "'\\q'", "'\t'"}) {
    EXPECT_THAT(parseError<HwStatus>(textOf("programmedInHw", "failureNone", unreadable)),
                StartsWith("failureDescription: "))
        << unreadable;
  }
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy
