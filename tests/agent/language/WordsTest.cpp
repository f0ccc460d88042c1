// How words are written and read back, and how messages list them.
#include "agent/language/Words.h"

#include <gtest/gtest.h>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"

namespace ZelAgent {
namespace {

std::string readBack(const std::string& line) {
  Mox::CharRange range(line);
  const std::optional<Word> word = takeWord(range);
  return word ? word->text : "(none)";
}

TEST(Words, AWordStandsWithoutQuotesWhereItCanBeReadBack) {
  EXPECT_EQ(toWord("red"), "red");
  EXPECT_EQ(toWord("Ethernet1/2.7"), "Ethernet1/2.7");
  EXPECT_EQ(toWord("a#"), "a#");
}

TEST(Words, EveryOtherWordIsQuoted) {
  for (const std::string text : {"", "a b", "#a", "it's", "a\\b", "\n", "\xff"}) {
    EXPECT_EQ(toWord(text).front(), '\'') << toWord(text);
    EXPECT_EQ(readBack(toWord(text)), text);
  }
}

TEST(Words, ALineEndsAtItsEndAndAtAComment) {
  EXPECT_EQ(readBack(""), "(none)");
  EXPECT_EQ(readBack(" \t "), "(none)");
  EXPECT_EQ(readBack("# red"), "(none)");
  EXPECT_EQ(readBack("  red # blue"), "red");
}

TEST(Words, AWordThatMustBeQuotedIsNotTakenWithoutQuotes) {
  EXPECT_THROW(readBack("it's"), Mox::RangeException);
  EXPECT_THROW(readBack("'red'blue"), Mox::RangeException);
}

TEST(Words, OnlyAWholeNumberOf32BitsIsANumber) {
  EXPECT_EQ(parseNumber("0"), 0U);
  EXPECT_EQ(parseNumber("4294967295"), 4294967295U);
  for (const char* const text : {"", "-1", "+1", " 1", "1 ", "1x", "4294967296"})
    EXPECT_EQ(parseNumber(text), std::nullopt) << text;
}

TEST(Words, JoinedWordsHaveTheSeparatorBetweenThem) {
  EXPECT_EQ(joined({}, ", "), "");
  EXPECT_EQ(joined({"a"}, ", "), "a");
  EXPECT_EQ(joined({"a", "b", "c"}, ", "), "a, b, c");
}

TEST(Words, AlternativesReadAsAChoice) {
  EXPECT_EQ(alternatives({"a"}), "a");
  EXPECT_EQ(alternatives({"a", "b"}), "a or b");
  EXPECT_EQ(alternatives({"a", "b", "c"}), "a, b or c");
}

TEST(Words, ABlankLineHasBlanksAndTabsOnly) {
  EXPECT_TRUE(isBlankLine(""));
  EXPECT_TRUE(isBlankLine(" \t"));
  EXPECT_FALSE(isBlankLine(" a"));
}

}  // namespace
}  // namespace ZelAgent
