// JSON that can be printed on a terminal.
#include "agent/language/JsonEscapes.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace ZelAgent {
namespace {

TEST(JsonEscapes, PrintableCharactersStay) {
  EXPECT_EQ(escapedJson("{\"bl\u00e5\":[1,\"\u84dd \U0001f600\"]}"),
            "{\"bl\u00e5\":[1,\"\u84dd \U0001f600\"]}");
}

TEST(JsonEscapes, UnprintableCharactersAreEscapes) {
  EXPECT_EQ(escapedJson("[\"\x7f\u0080\u009b\u061c\u200e\u2028\u202e\u2069\"]"),
            R"(["\u007f\u0080\u009b\u061c\u200e\u2028\u202e\u2069"])");
}

TEST(JsonEscapes, TheMeaningStays) {
  const nlohmann::json names{"\u009b\u202e", "\x1b", "red"};
  EXPECT_EQ(nlohmann::json::parse(escapedJson(names.dump())), names);
}

}  // namespace
}  // namespace ZelAgent
