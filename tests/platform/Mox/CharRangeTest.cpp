#include "Mox/CharRange.h"

#include <gtest/gtest.h>

#include <string>

#include "Mox/Exceptions.h"
#include "tests/platform/Refusal.h"

namespace Mox {
namespace {

using Testing::refusal;

TEST(CharRange, BeginsAtTheFrontOfTheText) {
  const CharRange range("text");
  EXPECT_EQ(range.rest(), "text");
  EXPECT_FALSE(range.atEnd());
  EXPECT_TRUE(CharRange("").atEnd());
}

TEST(CharRange, ConsumesTheLiteralThatComesNext) {
  CharRange range("{'name': }");
  range.needString("{'name': ");
  EXPECT_EQ(range.rest(), "}");
  range.needString("");
  EXPECT_EQ(range.rest(), "}");
  range.needString("}");
  EXPECT_TRUE(range.atEnd());
}

TEST(CharRange, RefusesAnotherLiteralSayingWhatWhereAndWhatStandsThere) {
  CharRange range("{'nome': }");
  range.needString("{");
  EXPECT_EQ(refusal<RangeException>([&] { range.needString("'name'"); }),
            R"(expected ''name'' at byte 1, found '\'nome\': }')");
  EXPECT_EQ(range.rest(), "'nome': }");
}

TEST(CharRange, RefusesALiteralThatIsCutShort) {
  CharRange range("val");
  EXPECT_EQ(refusal<RangeException>([&] { range.needString("value"); }),
            "expected 'value' at byte 0, found 'val'");
}

TEST(CharRange, SaysThatTheTextEnded) {
  CharRange range("ab");
  range.advance(2);
  EXPECT_EQ(refusal<RangeException>([&] { range.needString("c"); }),
            "expected 'c' at byte 2, found the end of the text");
}

TEST(CharRange, RequiresTheEnd) {
  CharRange range("a ");
  range.needString("a");
  EXPECT_EQ(refusal<RangeException>([&] { range.needEnd(); }),
            "expected the end of the text at byte 1, found ' '");
  range.advance(1);
  EXPECT_EQ(refusal<RangeException>([&] { range.needEnd(); }), "");
}

TEST(CharRange, ReadsWordsOfLettersDigitsAndUnderscores) {
  CharRange range("Az_09-x");
  EXPECT_EQ(range.needWord(), "Az_09");
  EXPECT_EQ(range.rest(), "-x");
  EXPECT_EQ(refusal<RangeException>([&] { static_cast<void>(range.needWord()); }),
            "expected a name at byte 5, found '-x'");
}

TEST(CharRange, ShowsOnlyTheBeginningOfALongRest) {
  CharRange range(std::string_view("0123456789012345678901234567890123456789"));
  EXPECT_EQ(refusal<RangeException>([&] { range.needString("x"); }),
            "expected 'x' at byte 0, found '012345678901234567890123'");
}

TEST(CharRange, RefusalsAreOneLineWhateverTheText) {
  CharRange range("\n\t\x01");
  EXPECT_EQ(refusal<RangeException>([&] { range.needString("x"); }),
            R"(expected 'x' at byte 0, found '\n\t\x01')");
}

TEST(CharRange, CopiesReadAheadWithoutMovingTheOriginal) {
  CharRange range("ab");
  CharRange ahead = range;
  ahead.needString("a");
  EXPECT_EQ(range.rest(), "ab");
  EXPECT_EQ(ahead.rest(), "b");
}

}  // namespace
}  // namespace Mox
