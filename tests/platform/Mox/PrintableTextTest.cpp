// Which characters may be printed as they are.
#include "Mox/PrintableText.h"

#include <gtest/gtest.h>

#include <string>

#include "Mox/QuotedString.h"

namespace Mox {
namespace {

TEST(PrintableAtFront, IsTheLengthOfAPrintableCharacter) {
  EXPECT_EQ(printableAtFront("ab"), 1U);
  EXPECT_EQ(printableAtFront("~"), 1U);
  EXPECT_EQ(printableAtFront("\u00a0b"), 2U);
  EXPECT_EQ(printableAtFront("\u00e5b"), 2U);
  EXPECT_EQ(printableAtFront("\u84ddb"), 3U);
  EXPECT_EQ(printableAtFront("\U0001f600b"), 4U);
  EXPECT_EQ(printableAtFront("\U0010ffff"), 4U);
}

TEST(PrintableAtFront, IsNothingForAnEmptyText) {
  EXPECT_EQ(printableAtFront(""), 0U);
}

TEST(PrintableAtFront, IsNothingForControlCharacters) {
  for (char byte = 0; byte < ' '; ++byte)
    EXPECT_EQ(printableAtFront(std::string(1, byte)), 0U) << int{byte};
  EXPECT_EQ(printableAtFront("\x7f"), 0U);
  for (int byte = 0x80; byte < 0xa0; ++byte)
    EXPECT_EQ(printableAtFront(std::string("\xc2") + static_cast<char>(byte)), 0U) << byte;
}

TEST(PrintableAtFront, IsNothingForSeparatorsOfLines) {
  EXPECT_EQ(printableAtFront("\u2028"), 0U);
  EXPECT_EQ(printableAtFront("\u2029"), 0U);
  EXPECT_EQ(printableAtFront("\u2027"), 3U);
}

TEST(PrintableAtFront, IsNothingForControlsOfTextDirection) {
  for (const char* text : {"\u061c", "\u200e", "\u200f", "\u202a", "\u202b", "\u202c", "\u202d",
                           "\u202e", "\u2066", "\u2067", "\u2068", "\u2069"}) {
    EXPECT_EQ(printableAtFront(text), 0U) << quoted(text);
  }
  for (const char* text : {"\u200d", "\u2010", "\u202f", "\u2065", "\u206a"})
    EXPECT_EQ(printableAtFront(text), 3U) << quoted(text);
}

TEST(PrintableAtFront, IsNothingForBytesThatAreNotUtf8) {
  for (const char* text : {"\x80", "\xff", "\xc3", "\xc3(", "\xe2\x82", "\xe2(\xa1", "\xf0\x9f\x98",
                           "\xf8\x88\x80\x80\x80"}) {
    EXPECT_EQ(printableAtFront(text), 0U) << quoted(text);
  }
}

TEST(PrintableAtFront, IsNothingForOverlongSequences) {
  for (const char* text : {"\xc1\xa1", "\xe0\x81\xa1", "\xf0\x80\x81\xa1", "\xc0\xaf"})
    EXPECT_EQ(printableAtFront(text), 0U) << quoted(text);
}

TEST(PrintableAtFront, IsNothingForWhatIsNoCharacter) {
  EXPECT_EQ(printableAtFront("\xed\xa0\x80"), 0U);
  EXPECT_EQ(printableAtFront("\xed\xbf\xbf"), 0U);
  EXPECT_EQ(printableAtFront("\xf4\x90\x80\x80"), 0U);
}

}  // namespace
}  // namespace Mox
