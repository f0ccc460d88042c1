#include "Mox/QuotedString.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "testing/RandomSeed.h"

namespace Mox {
namespace {

using ZelVrfSelectionPolicy::Testing::RandomSeed;

// The byte as it is, between quotes.
std::string rawForm(int byte) {
  std::string form(3, '\'');
  form[1] = static_cast<char>(byte);
  return form;
}

// The form of one byte as the description of the string form has it.
std::string expectedForm(int byte) {
  switch (byte) {
    case '\'':
      return R"('\'')";
    case '\\':
      return R"('\\')";
    case '\n':
      return R"('\n')";
    case '\r':
      return R"('\r')";
    case '\t':
      return R"('\t')";
    default:
      break;
  }
  if (byte >= 0x20 && byte < 0x7f) return rawForm(byte);
  constexpr const char* digits = "0123456789abcdef";
  return std::string("'\\x") + digits[byte / 16] + digits[byte % 16] + "'";
}

std::string readWhole(const std::string& text) {
  CharRange range(text);
  std::string bytes = readQuoted(range);
  range.needEnd();
  return bytes;
}

TEST(QuotedString, EveryByteHasItsForm) {
  for (int byte = 0; byte < 256; ++byte)
    EXPECT_EQ(Mox::quoted(std::string(1, static_cast<char>(byte))), expectedForm(byte)) << byte;
}

TEST(QuotedString, EveryByteIsReadBack) {
  for (int byte = 0; byte < 256; ++byte)
    EXPECT_EQ(readWhole(expectedForm(byte)), std::string(1, static_cast<char>(byte))) << byte;
}

TEST(QuotedString, EveryHexadecimalFormButTheCanonicalOnesIsRefused) {
  constexpr const char* digits = "0123456789abcdef";
  for (int byte = 0; byte < 256; ++byte) {
    const std::string form = std::string("'\\x") + digits[byte / 16] + digits[byte % 16] + "'";
    if (form == expectedForm(byte)) {
      EXPECT_EQ(readWhole(form), std::string(1, static_cast<char>(byte)));
    } else {
      EXPECT_THROW(static_cast<void>(readWhole(form)), RangeException) << form;
    }
  }
}

TEST(QuotedString, EveryEscapeLetterButTheSixIsRefused) {
  for (int letter = 0; letter < 256; ++letter) {
    if (std::string("nrtx'\\").find(static_cast<char>(letter)) != std::string::npos) continue;
    const std::string form = std::string("'\\") + static_cast<char>(letter) + "00'";
    EXPECT_THROW(static_cast<void>(readWhole(form)), RangeException) << letter;
  }
}

TEST(QuotedString, EveryRawByteThatNeedsAnEscapeIsRefused) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string raw = rawForm(byte);
    if (raw == expectedForm(byte)) continue;
    EXPECT_THROW(static_cast<void>(readWhole(raw)), RangeException) << byte;
  }
}

TEST(QuotedString, BrokenFormsAreRefused) {
  for (const char* form :
       {"", "red", "'", "'red", "red'", R"('\)", R"('\')", R"('\x)", R"('\x0)", R"('\x0')",
        R"('\xg0')", R"('\x0g')", R"('\xFF')", R"('\x0A')", R"('\X00')", "\"red\""})
    EXPECT_THROW(static_cast<void>(readWhole(form)), RangeException) << form;
}

TEST(QuotedString, ReadingStopsBehindTheClosingQuote) {
  CharRange range("'red', 'blue'");
  EXPECT_EQ(readQuoted(range), "red");
  EXPECT_EQ(range.rest(), ", 'blue'");
}

TEST(QuotedString, AppendsToWhatIsThere) {
  std::string text = "name: ";
  appendQuoted(text, "it's");
  EXPECT_EQ(text, R"(name: 'it\'s')");
}

TEST(QuotedString, RandomBytesSurviveTheWayThereAndBack) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  for (int round = 0; round < 2000; ++round) {
    std::string bytes(random() % 40, ' ');
    for (char& byte : bytes)
      byte = static_cast<char>(random());
    ASSERT_EQ(readWhole(Mox::quoted(bytes)), bytes);
  }
}

TEST(QuotedString, WhateverIsReadIsWrittenTheSame) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  constexpr std::string_view letters = "'\\nrtx0a1A \n\x7f\x80";
  int read = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string text = "'";
    for (auto left = random() % 6; left != 0; --left)
      text += letters[random() % letters.size()];
    text += "'";
    try {
      ASSERT_EQ(Mox::quoted(readWhole(text)), text);
      ++read;
    } catch (const RangeException&) {
      continue;
    }
  }
  EXPECT_GT(read, 100);
}

}  // namespace
}  // namespace Mox
