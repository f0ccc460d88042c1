#include "Mox/EnumType.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <string_view>

#include "Mox/CharRange.h"
#include "Mox/Exceptions.h"
#include "tests/platform/Refusal.h"

namespace Mox {
namespace {

using Testing::refusal;

constexpr std::array<std::string_view, 3> names{"off", "on", "dimmed"};
constexpr EnumType<unsigned char> switchType("Lamp::Switch", names);

enum class Switch : unsigned char { off, on, dimmed };
constexpr EnumType<Switch> switches("Lamp::Switch", names);

TEST(EnumType, NamesItsCodes) {
  EXPECT_EQ(switchType.name(0), "off");
  EXPECT_EQ(switchType.name(1), "on");
  EXPECT_EQ(switchType.name(2), "dimmed");
  EXPECT_EQ(switchType.typeName(), "Lamp::Switch");
  EXPECT_TRUE(std::equal(names.begin(), names.end(), switchType.names().begin()));
}

TEST(EnumType, ShowsACodeBeyondItsTableInDecimal) {
  EXPECT_EQ(switchType.name(3), "3");
  EXPECT_EQ(switchType.name(10), "10");
  EXPECT_EQ(switchType.name(255), "255");
}

TEST(EnumType, ShownCodesKeepTheirText) {
  const std::string_view first = switchType.name(200);
  const std::string_view second = switchType.name(201);
  EXPECT_EQ(first, "200");
  EXPECT_EQ(second, "201");
}

TEST(EnumType, GivesTheCodeOfAName) {
  EXPECT_EQ(switchType.code("off"), 0);
  EXPECT_EQ(switchType.code("dimmed"), 2);
}

TEST(EnumType, AcceptsTheCodesOfItsTableOnly) {
  EXPECT_EQ(switchType.code(0u), 0);
  EXPECT_EQ(switchType.code(2u), 2);
  EXPECT_EQ(refusal<RangeException>([] { return switchType.code(3u); }),
            "no Lamp::Switch has the code 3, expected 0 to 2");
  EXPECT_NE(refusal<RangeException>([] { return switchType.code(256u); }), "");
  EXPECT_NE(refusal<RangeException>([] { return switchType.code(0xffffffffu); }), "");
}

TEST(EnumType, RefusesNamesThatItDoesNotHave) {
  EXPECT_EQ(refusal<RangeException>([] { return switchType.code("bright"); }),
            "no Lamp::Switch has the name 'bright', expected off, on or dimmed");
  for (const char* name : {"", "OFF", "off ", "of", "3", "0"})
    EXPECT_NE(refusal<RangeException>([name] { return switchType.code(name); }), "") << name;
}

TEST(EnumType, ReadsANameFromARange) {
  CharRange range("dimmed}");
  EXPECT_EQ(switchType.read(range), 2);
  EXPECT_EQ(range.rest(), "}");
}

TEST(EnumType, ReadingAWrongNameConsumesNothingAndSaysWhatWouldBeRight) {
  CharRange range("bright}");
  EXPECT_EQ(refusal<RangeException>([&range] { return switchType.read(range); }),
            "expected off, on or dimmed at byte 0, found 'bright}'");
  EXPECT_EQ(range.rest(), "bright}");
}

TEST(EnumType, ReadsWholeNamesOnly) {
  for (const char* text : {"offs", "off_", "o", "", "'off'", " off", "3", "255"}) {
    CharRange range(text);
    EXPECT_THROW(static_cast<void>(switchType.read(range)), RangeException) << text;
    EXPECT_EQ(range.rest(), text);
  }
}

TEST(EnumTypeOfValues, HasTheSameNames) {
  EXPECT_EQ(switches.typeName(), "Lamp::Switch");
  EXPECT_EQ(switches.names().data(), names.data());
  EXPECT_EQ(switches.name(Switch::off), "off");
  EXPECT_EQ(switches.name(Switch::dimmed), "dimmed");
  EXPECT_EQ(switches.name(Switch{3}), "3");
}

TEST(EnumTypeOfValues, GivesTheValueOfACodeOrAName) {
  EXPECT_EQ(switches.value(2), Switch::dimmed);
  EXPECT_EQ(switches.value("on"), Switch::on);
}

TEST(EnumTypeOfValues, RefusesWhatItDoesNotHaveInTheSameWords) {
  EXPECT_EQ(refusal<RangeException>([] { return switches.value(256); }),
            refusal<RangeException>([] { return switchType.code(256U); }));
  EXPECT_EQ(refusal<RangeException>([] { return switches.value("On"); }),
            "no Lamp::Switch has the name 'On', expected off, on or dimmed");
}

TEST(EnumTypeOfValues, ReadsANameFromARange) {
  CharRange range("dimmed, next");
  EXPECT_EQ(switches.read(range), Switch::dimmed);
  EXPECT_EQ(range.rest(), ", next");
}

}  // namespace
}  // namespace Mox
