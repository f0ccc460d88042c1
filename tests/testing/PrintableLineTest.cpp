#include "testing/conformance/PrintableLine.h"

#include <gtest/gtest.h>

namespace ZelVrfSelectionPolicy::Testing::Conformance {
namespace {

using namespace std::string_view_literals;

TEST(PrintableLine, PrintableUtf8OfAnyLanguageFits) {
  for (const std::string_view text :
       {""sv, "no room for \"red\""sv, "\xc3\xa4"sv, "\xe2\x82\xac"sv, "\xf0\x9f\x99\x82"sv})
    EXPECT_EQ(faultOfLine(text), "") << text;
}

TEST(PrintableLine, ControlCharactersAndBreaksOfLinesDoNotFit) {
  for (const std::string_view text : {"ab\n"sv, "ab\t"sv, "ab\0"sv, "ab\x1b[31m"sv, "ab\x7f"sv,
                                      "ab\xc2\x85"sv, "ab\xe2\x80\xa8"sv, "ab\xe2\x80\xa9"sv})
    EXPECT_EQ(faultOfLine(text), "byte 2 is no printable UTF-8");
}

TEST(PrintableLine, WhatIsNoUtf8DoesNotFit) {
  for (const std::string_view text :
       {"a\xff"sv, "a\x80"sv, "a\xc3"sv, "a\xc3z"sv, "a\xc0\xaf"sv, "a\xe0\x80\xaf"sv,
        "a\xed\xa0\x80"sv, "a\xf4\x90\x80\x80"sv, "a\xf0\x9f\x99"sv})
    EXPECT_EQ(faultOfLine(text), "byte 1 is no printable UTF-8");
}

TEST(PrintableLine, TheLongestDescriptionIsLongEnoughForEveryReport) {
  EXPECT_EQ(faultOfLine(std::string(1000, 'x')), "");
  EXPECT_EQ(faultOfLine(std::string(1001, 'x')), "it has 1001 bytes, more than 1000");
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing::Conformance
