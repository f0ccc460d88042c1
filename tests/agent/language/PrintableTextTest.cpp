#include "agent/language/PrintableText.h"

#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

TEST(PrintableText, LeavesPlainAndWideCharactersAlone) {
  EXPECT_EQ(printable("Ethernet1/1 blå 蓝 😀"), "Ethernet1/1 blå 蓝 😀");
}

TEST(PrintableText, EscapesWhatWouldBreakTheLineOrTheTerminal) {
  EXPECT_EQ(printable(std::string("a\nb\x1b[2J\x7f\0z", 10)), "a\\x0ab\\x1b[2J\\x7f\\x00z");
  EXPECT_EQ(printable("\xc2\x85"), "\\xc2\\x85");
}

TEST(PrintableText, EscapesBytesThatAreNotUtf8) {
  EXPECT_EQ(printable("\xff"), "\\xff");
  EXPECT_EQ(printable("\xc3"), "\\xc3");
  EXPECT_EQ(printable("\xe2(\xa1"), "\\xe2(\\xa1");
}

TEST(PrintableText, EscapesOverlongUtf8AndControlsOfTextDirection) {
  EXPECT_EQ(printable("\xc1\xa1"), "\\xc1\\xa1");
  EXPECT_EQ(printable("a\u202e\u2028"), "a\\xe2\\x80\\xae\\xe2\\x80\\xa8");
}

TEST(PrintableText, OfSeveralLinesKeepsTheirEnds) {
  EXPECT_EQ(printableLines(""), "");
  EXPECT_EQ(printableLines("a\n\nb\x1b\n"), "a\n\nb\\x1b\n");
  EXPECT_EQ(printableLines("\na\r"), "\na\\x0d");
}

TEST(PrintableText, CutsBetweenCharacters) {
  EXPECT_EQ(printable("abcdef", 3), "abc...");
  EXPECT_EQ(printable("abc", 3), "abc");
  EXPECT_EQ(printable("abå", 3), "ab...");
}

TEST(PrintableText, QuotesTheBoundedText) {
  EXPECT_EQ(inQuotes(std::string(101, 'x')), '"' + std::string(100, 'x') + "...\"");
}

}  // namespace
}  // namespace ZelAgent
