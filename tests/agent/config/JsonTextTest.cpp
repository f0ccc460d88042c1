#include "agent/config/JsonText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "agent/language/Errors.h"
#include "tests/files/TemporaryFolder.h"

namespace ZelAgent {
namespace {

std::string errorOf(const std::string& text) {
  try {
    const auto document = parseJson(text, "f.json");
    return "no error, but " + document.dump();
  } catch (const ConfigError& error) {
    return error.what();
  }
}

TEST(JsonText, ReadsWellFormedText) {
  EXPECT_EQ(parseJson(R"( {"a": [1, {"b": null}], "c": {"b": 2}} )", "f").dump(),
            R"({"a":[1,{"b":null}],"c":{"b":2}})");
}

TEST(JsonText, GivesLineAndColumnOfMalformedText) {
  EXPECT_EQ(errorOf(""),
            "f.json:1:1: malformed JSON: while parsing value - unexpected end of input; expected "
            "'[', '{', or a literal");
  EXPECT_EQ(errorOf("{\n  \"a\": 1,\n  oops\n}"),
            "f.json:3:3: malformed JSON: while parsing object key - invalid literal; last read: "
            "'1,<U+000A>  o'; expected string literal");
  EXPECT_EQ(errorOf("{} {}"),
            "f.json:1:4: malformed JSON: while parsing value - unexpected '{'; expected end of "
            "input");
}

TEST(JsonText, RefusesANulByteWhereItStands) {
  for (const std::string& text : {std::string("{}\n {}\0 {", 8), std::string("{}\n   \0", 7),
                                  std::string("{\n  \"\0\"}", 8)}) {
    EXPECT_EQ(errorOf(text), "f.json:2:4: malformed JSON: a NUL byte; expected text");
  }
}

TEST(JsonText, CountsColumnsInCharacters) {
  EXPECT_EQ(errorOf("{\"åå\": ?}").substr(0, 12), "f.json:1:8: ");
}

TEST(JsonText, ErrorsStayOnePrintableLine) {
  std::string endless(5000, 'x');
  endless.front() = '"';
  for (const std::string& text :
       {std::string("\"a\nb\""), std::string("\"\xff\""), std::string("{\"\x1b[31m\": 1"),
        std::string("[1e999]"), endless, std::string(5000, '[')}) {
    const std::string error = errorOf(text);
    EXPECT_EQ(error.find_first_of("\n\x1b\xff"), std::string::npos) << error;
    EXPECT_LT(error.size(), 500U);
    EXPECT_EQ(error.rfind("f.json:1:", 0), 0U) << error;
  }
}

TEST(JsonText, RefusesAMemberGivenTwiceWhereTheSecondStands) {
  EXPECT_EQ(errorOf("{\"a\": 1,\n  \"a\": 2}"),
            "f.json:2:3: member \"a\" is given twice in one object; give each member once");
  EXPECT_EQ(errorOf(R"([{"x\"y": {"z": 1}, "x\"y": 2}])").substr(0, 13), "f.json:1:21: ");
}

TEST(JsonText, RefusesMoreThanHundredLevels) {
  const auto nested = [](std::size_t levels) {
    return std::string(levels, '[') + std::string(levels, ']');
  };
  EXPECT_EQ(errorOf(nested(100)), "no error, but " + nested(100));
  EXPECT_EQ(errorOf(nested(101)), "f.json:1:101: nests deeper than 100 levels");
  EXPECT_EQ(errorOf(std::string(5000000, '[')), "f.json:1:101: nests deeper than 100 levels");
}

TEST(JsonText, RefusesUtf16AndTakesUtf8WithItsMark) {
  for (const std::string start : {"\xff\xfe{", "\xfe\xff{"}) {
    EXPECT_EQ(errorOf(start), "f.json:1:1: malformed JSON: UTF-16 text; expected UTF-8");
  }
  EXPECT_EQ(errorOf("\xef\xbb\xbf{}"), "no error, but {}");
}

TEST(JsonText, KeepsTheOrderOfTheDocument) {
  const JsonValue document = parseDocument(R"({"b": [1, "x"], "a": {"c": -1.50}})", "f");
  const auto& members = *document.as<JsonValue::Object>();
  ASSERT_EQ(members.size(), 2U);
  EXPECT_EQ(members[0].name, "b");
  EXPECT_EQ(members[1].name, "a");
  const auto& inner = members[1].value.as<JsonValue::Object>()->at(0).value;
  EXPECT_EQ(inner.as<JsonOtherNumber>()->text, "-1.50");
  EXPECT_LT(document.order(), members[0].value.order());
  EXPECT_LT(members[0].value.as<JsonValue::Array>()->at(1).order(), members[1].value.order());
  EXPECT_LT(members[1].value.order(), inner.order());
}

TEST(JsonText, TakesTheSameMemberInDifferentObjects) {
  EXPECT_EQ(parseJson(R"({"a": {"a": 1}, "b": [{"a": 1}, {"a": 1}]})", "f").size(), 2U);
}

TEST(JsonText, TellsWhyAFileCannotBeRead) {
  const std::string folder = TestFiles::processFolder();
  const std::string missing = folder + "/no-such-file.json";
  Progress none({});
  try {
    (void)readDocumentFile(missing, none);
    FAIL() << "a missing file was read";
  } catch (const ConfigError& error) {
    EXPECT_EQ(std::string(error.what()),
              missing + ": cannot be read: No such file or directory; give a readable JSON file");
  }
  try {
    (void)readDocumentFile(folder, none);
    FAIL() << "a directory was read";
  } catch (const ConfigError& error) {
    EXPECT_EQ(std::string(error.what()), folder + ": is a directory; give a readable JSON file");
  }
}

}  // namespace
}  // namespace ZelAgent
