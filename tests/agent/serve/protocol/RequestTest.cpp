// Requests and answers in both framings.
#include "agent/serve/protocol/Request.h"

#include <gmock/gmock.h>

#include "agent/language/Errors.h"
#include "agent/serve/protocol/Answer.h"

namespace ZelAgent {
namespace {

using ::testing::HasSubstr;

// What is wrong with the line, or "nothing".
std::string problemWith(const std::string& line) {
  try {
    static_cast<void>(readRequest(line));
  } catch (const RequestError& error) {
    return error.what();
  }
  return "nothing";
}

TEST(Request, APlainLineIsACommandAnsweredAsText) {
  const Request request = readRequest("show actions");
  EXPECT_EQ(request.command, "show actions");
  EXPECT_FALSE(request.asJson);
  EXPECT_EQ(framingOf("show actions"), Framing::text);
}

TEST(Request, ALineThatBeginsWithABraceIsJson) {
  const Request request = readRequest(R"({"command": "show vrfs", "json": true})");
  EXPECT_EQ(request.command, "show vrfs");
  EXPECT_TRUE(request.asJson);
  EXPECT_EQ(framingOf("{"), Framing::json);
}

TEST(Request, OutputIsTextByDefault) {
  EXPECT_FALSE(readRequest(R"({"command": "show"})").asJson);
}

TEST(Request, TablesHaveNoLimitByDefault) {
  EXPECT_EQ(readRequest("show").columns, 0);
  EXPECT_EQ(readRequest(R"({"command": "show"})").columns, 0);
  EXPECT_EQ(readRequest(R"({"command": "show", "columns": 80})").columns, 80);
}

TEST(Request, AWrongNumberOfColumnsIsReported) {
  for (const char* const number : {"-1", "65536", "80.5", "\"80\"", "null"}) {
    EXPECT_EQ(problemWith(std::string(R"({"command": "show", "columns": )") + number + "}"),
              "request: member columns must be a number from 0 to 65535");
  }
}

TEST(Request, WrongJsonIsReported) {
  EXPECT_THAT(problemWith("{"), HasSubstr("request:1:2: malformed JSON"));
  EXPECT_THAT(problemWith("{}"), HasSubstr("member command is missing"));
  EXPECT_THAT(problemWith(R"({"command": 7})"), HasSubstr("member command must be a text"));
  EXPECT_THAT(problemWith(R"({"command": "a", "json": 1})"), HasSubstr("must be true or false"));
  EXPECT_THAT(problemWith(R"({"command": "a", "jsn": true})"), HasSubstr("unknown member \"jsn\""));
  EXPECT_THAT(problemWith(R"({"command": "a", "command": "b"})"), HasSubstr("given twice"));
  EXPECT_THAT(problemWith(R"({"command": "a"} x)"), HasSubstr("malformed JSON"));
}

TEST(Request, EndlessNestingIsRefused) {
  EXPECT_THAT(problemWith("{\"command\":" + std::string(60000, '[')),
              HasSubstr("request:1:111: nests deeper than 100 levels"));
}

TEST(Request, NulBytesAndBytesThatAreNotUtf8AreRefused) {
  EXPECT_THAT(problemWith(std::string("sh\0w", 4)), HasSubstr("found a NUL byte"));
  EXPECT_THAT(problemWith("vrf \xff id 7"), HasSubstr("must be UTF-8, found \"vrf \\xff id 7\""));
  EXPECT_THAT(problemWith("vrf \xc0\x80 id 7"), HasSubstr("must be UTF-8"));
  EXPECT_THAT(problemWith("{\"command\": \"\xff\"}"), HasSubstr("must be UTF-8"));
  EXPECT_EQ(problemWith("vrf gr\xc3\xbcn id 7"), "nothing");
}

TEST(Request, IsReadBackFromItsLine) {
  const Request request = readRequest(toLine({"vrf 'a\\x00\"b' id 7", true, 80}));
  EXPECT_EQ(request.command, "vrf 'a\\x00\"b' id 7");
  EXPECT_TRUE(request.asJson);
  EXPECT_EQ(request.columns, 80);
}

TEST(Request, ALineWithoutColumnsDoesNotNameThem) {
  EXPECT_EQ(toLine({"show", false}), "{\"command\":\"show\",\"json\":false}\n");
}

TEST(Answer, AsJsonIsOneLineWithStatusAndOutput) {
  EXPECT_EQ(toBytes({ExitStatus::success, "a\nb\n"}, Framing::json),
            "{\"status\":0,\"output\":\"a\\nb\\n\"}\n");
  EXPECT_EQ(toBytes({ExitStatus::badInput, "wrong"}, Framing::json),
            "{\"status\":2,\"output\":\"wrong\"}\n");
  EXPECT_EQ(toBytes({ExitStatus::success, {{"a", 1}}}, Framing::json),
            "{\"status\":0,\"output\":{\"a\":1}}\n");
}

TEST(Answer, AsTextEndsWithALineOfOneDot) {
  EXPECT_EQ(toBytes({ExitStatus::success, "a\nb\n"}, Framing::text), "a\nb\n.\n");
  EXPECT_EQ(toBytes({ExitStatus::success, ""}, Framing::text), ".\n");
}

TEST(Answer, AsTextDoublesTheDotThatALineBeginsWith) {
  EXPECT_EQ(toBytes({ExitStatus::success, ".\n..a\nb.\n"}, Framing::text), "..\n...a\nb.\n.\n");
}

TEST(Answer, AsTextAnErrorIsOneLine) {
  EXPECT_EQ(toBytes({ExitStatus::badInput, "wrong"}, Framing::text), "error: wrong\n.\n");
}

}  // namespace
}  // namespace ZelAgent
