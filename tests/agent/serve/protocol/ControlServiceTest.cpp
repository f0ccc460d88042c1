// The reply to each kind of request line.
#include "agent/serve/protocol/ControlService.h"

#include <gmock/gmock.h>

#include <string>

#include "agent/commands/served/ServedAgent.h"
#include "tests/agent/TestFiles.h"

namespace ZelAgent {
namespace {

using Kind = RequestLine::Kind;
using ::testing::StartsWith;

constexpr const char* capacity = "chip capacity 5\n  no hook call\n.\n";
constexpr const char* capacityAsJson =
    "{\"status\":0,\"output\":\"chip capacity 5\\n  no hook call\\n\"}\n";
const std::string jsonRequest = "{\"command\": \"chip capacity 5\"}";

class Replies : public ::testing::Test {
 protected:
  Reply reply(const std::string& text, Kind kind = Kind::whole, std::size_t longest = 1000) {
    return ControlService(served_, longest).reply({kind, text});
  }

  ServedAgent served_{"unused.json", 8};
};

TEST_F(Replies, HaveTheFramingOfTheRequest) {
  EXPECT_EQ(reply("chip capacity 5").bytes, capacity);
  EXPECT_EQ(reply(jsonRequest).bytes, capacityAsJson);
  EXPECT_EQ(reply("").bytes, ".\n");
}

TEST_F(Replies, AreNotTheLastOnes) {
  EXPECT_FALSE(reply("chip capacity 5").isLast);
  EXPECT_FALSE(reply("wrong").isLast);
  EXPECT_FALSE(reply("half", Kind::unfinished).isLast);
}

TEST_F(Replies, ToALineThatIsTooLongAreTheLastOnes) {
  const std::string refusal =
      "a request must be a line of at most 65536 bytes, found more; the connection is closed";
  Reply last = reply("xxx", Kind::tooLong);
  EXPECT_EQ(last.bytes, "error: " + refusal + "\n.\n");
  EXPECT_TRUE(last.isLast);
  last = reply("{\"comm", Kind::tooLong);
  EXPECT_EQ(last.bytes, "{\"status\":2,\"output\":\"" + refusal + "\"}\n");
  EXPECT_TRUE(last.isLast);
  EXPECT_TRUE(reply("xxx", Kind::tooLong, 1).isLast) << "though it is replaced";
}

TEST_F(Replies, ToAnUnfinishedLineRefuseIt) {
  EXPECT_EQ(reply("chip capacity 5", Kind::unfinished).bytes,
            "error: a request must end with a newline, found the end after \"chip capacity 5\"\n"
            ".\n");
  EXPECT_EQ(reply("{", Kind::unfinished).bytes,
            "{\"status\":2,\"output\":\"a request must end with a newline, found the end after "
            "\\\"{\\\"\"}\n");
}

TEST_F(Replies, OfTheGreatestLengthAreWhole) {
  const std::size_t size = std::string(capacity).size();
  EXPECT_EQ(reply("chip capacity 5", Kind::whole, size).bytes, capacity);
  EXPECT_EQ(reply("chip capacity 5", Kind::whole, size - 1).bytes,
            "error: the answer has 33 bytes; the limit is 32 bytes\n.\n");
}

TEST_F(Replies, AsJsonOfTheGreatestLengthAreWhole) {
  const std::size_t size = std::string(capacityAsJson).size();
  EXPECT_EQ(reply(jsonRequest, Kind::whole, size).bytes, capacityAsJson);
  EXPECT_EQ(reply(jsonRequest, Kind::whole, size - 1).bytes,
            "{\"status\":1,\"output\":\"the answer has " + std::to_string(size) +
                " bytes; the limit is " + std::to_string(size - 1) + " bytes\"}\n");
}

TEST_F(Replies, ToWrongInputHaveStatusTwo) {
  const auto refused = StartsWith("{\"status\":2,\"output\":\"");
  EXPECT_THAT(reply("{}").bytes, refused);                                      // a request
  EXPECT_THAT(reply("{\"command\": \"nonsense\"}").bytes, refused);             // a command
  EXPECT_THAT(reply("{\"command\": \"config no-such-file\"}").bytes, refused);  // a file
  EXPECT_THAT(reply("{\"command\": \"reload\"}").bytes, refused);               // the file
}

}  // namespace
}  // namespace ZelAgent
