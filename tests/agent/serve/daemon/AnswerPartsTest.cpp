// Answers that are made part by part while their clients read.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "agent/commands/served/CommandDispatch.h"
#include "tests/agent/serve/daemon/ServedClients.h"

namespace ZelAgent {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* showRoutesLine = "show routes\n";

IpPrefix hostRoute(int number) {
  return parseIpPrefix("10.0." + std::to_string(number / 256) + '.' + std::to_string(number % 256) +
                       "/32")
      .value();
}

class AnswersInParts : public ServedClients {
 protected:
  static constexpr int routes = 3000;

  AnswersInParts() {
    for (int number = 0; number < routes; ++number)
      addRoute(number);
    connectAll();
  }

  void addRoute(int number) {
    served_.agent().routes().routeIs("red", hostRoute(number), {Chips::Route::Kind::egress, "e1"});
  }
  std::string whole(bool asJson) {
    const CommandOutput output = runCommand(served_, "show routes", asJson);
    return asJson ? output.dump() : output.get<std::string>();
  }
  // Lets the client take the answer bit by bit until nothing more comes.
  std::string takeAll(ScriptedClient& client) {
    scheduler_.rounds();
    while (client.waiting() > 0) {
      client.take(client.waiting());
      scheduler_.rounds();
    }
    return client.received();
  }
  // Makes the first part of the answer wait.
  void begin(ScriptedClient& client) {
    client.roomIs(0);
    client.send(showRoutesLine);
    scheduler_.rounds();
    EXPECT_GT(client.waiting(), 0U);
  }
};

TEST_F(AnswersInParts, AreTheWholeOutputInEachFraming) {
  first_.send(showRoutesLine);
  EXPECT_EQ(takeAll(first_), whole(false) + ".\n");
  first_.send("{\"command\": \"show routes\"}\n");
  const std::string quoted = takeAll(first_);
  EXPECT_EQ(nlohmann::json::parse(quoted),
            (nlohmann::json{{"status", 0}, {"output", whole(false)}}));
  EXPECT_EQ(quoted.find('\n'), quoted.size() - 1);
  first_.send("{\"command\": \"show routes\", \"json\": true}\n");
  EXPECT_EQ(takeAll(first_), "{\"status\":0,\"output\":" + whole(true) + "}\n");
  EXPECT_GT(whole(false).size(), 4 * Limits::shortAnswerBytes);
}

TEST_F(AnswersInParts, KeepOneShortPartForAClientThatReadsSlowly) {
  for (const char* const request : {showRoutesLine, "{\"command\": \"show routes\"}\n"}) {
    ScriptedClient client;
    connect(client);
    client.roomIs(0);
    client.send(request);
    const std::string received = takeAll(client);
    EXPECT_GT(received.size(), 4 * Limits::shortAnswerBytes);
    EXPECT_LE(client.mostWaiting(), Limits::shortAnswerBytes);
    client.endSending();
  }
}

TEST_F(AnswersInParts, AreNotMadeBeforeTheClientTakesThePartBefore) {
  begin(first_);
  EXPECT_TRUE(scheduler_.isIdle());
  EXPECT_FALSE(first_.isRead());
  first_.take(first_.waiting() - 1);
  EXPECT_TRUE(scheduler_.isIdle());
  first_.take(1);
  EXPECT_FALSE(scheduler_.isIdle());
}

TEST_F(AnswersInParts, LeaveTurnsToOtherClientsBetweenTwoParts) {
  first_.send(showRoutesLine);
  second_.send(request(1) + request(2));
  scheduler_.round();
  scheduler_.round();
  EXPECT_EQ(second_.received(), answer(1) + answer(2));
  EXPECT_THAT(first_.received(), Not(EndsWith("\n.\n")));
  scheduler_.rounds();
  EXPECT_THAT(first_.received(), EndsWith("\n.\n"));
}

TEST_F(AnswersInParts, AreFollowedByTheAnswerToTheNextRequest) {
  first_.roomIs(0);
  first_.send(showRoutesLine + request(1));
  EXPECT_EQ(takeAll(first_), whole(false) + ".\n" + answer(1));
}

TEST_F(AnswersInParts, ReachAClientThatSendsNoMore) {
  first_.roomIs(0);
  first_.send(showRoutesLine);
  scheduler_.round();
  first_.deliver();
  first_.endSending();
  EXPECT_EQ(takeAll(first_), whole(false) + ".\n");
}

TEST_F(AnswersInParts, EndWithAClientThatReadsNothing) {
  begin(first_);
  scheduler_.pass(timeout);
  EXPECT_FALSE(first_.isConnected());
  EXPECT_TRUE(scheduler_.isIdle());
}

TEST_F(AnswersInParts, EndWithAClientThatIsGone) {
  begin(first_);
  first_.fail();
  EXPECT_FALSE(first_.isConnected());
  EXPECT_TRUE(scheduler_.isIdle());
  EXPECT_EQ(scheduler_.running(), 0U);
}

TEST_F(AnswersInParts, GiveAClientItsTimeoutForEachPart) {
  begin(first_);
  for (int part = 0; part < 3; ++part) {
    scheduler_.pass(timeout - std::chrono::milliseconds(1));
    ASSERT_TRUE(first_.isConnected());
    first_.take(first_.waiting());
    scheduler_.rounds();
  }
  EXPECT_GT(first_.waiting(), 0U);
}

TEST_F(AnswersInParts, NeedNoRoomOfLongAnswers) {
  ServerLimits limits{256, std::size_t{1} << 20U, timeout};
  limits.totalUnsentBytes = 0;
  server_ = std::make_unique<ControlServer>(scheduler_, served_, limits);
  ScriptedClient slow;
  ScriptedClient other;
  connect(slow);
  connect(other);
  begin(slow);
  begin(other);
  EXPECT_THAT(takeAll(slow), EndsWith("\n.\n"));
  EXPECT_THAT(takeAll(other), EndsWith("\n.\n"));
  server_.reset();
}

TEST_F(AnswersInParts, ShowTheRoutesThatExistWhenAPartIsMade) {
  begin(first_);
  served_.agent().routes().routeDel("red", hostRoute(0));
  served_.agent().routes().routeDel("red", hostRoute(routes - 1));
  addRoute(routes);
  const std::string received = takeAll(first_);
  EXPECT_THAT(received, HasSubstr(" 10.0.0.0/32 "));
  EXPECT_THAT(received, Not(HasSubstr(' ' + toText(hostRoute(routes - 1)) + ' ')));
  EXPECT_THAT(received, HasSubstr(' ' + toText(hostRoute(routes)) + ' '));
  for (int number = 1; number < routes - 1; number += 7) {
    const std::string row = "  red  " + toText(hostRoute(number)) + ' ';
    const std::size_t found = received.find(row);
    ASSERT_NE(found, std::string::npos) << row;
    EXPECT_EQ(received.find(row, found + 1), std::string::npos) << row;
  }
}

TEST_F(AnswersInParts, BeginWithTheHeadingOnEachPage) {
  first_.send(showRoutesLine);
  const std::string received = takeAll(first_);
  EXPECT_THAT(received, StartsWith("  VRF  PREFIX"));
  EXPECT_NE(received.find("\n  VRF  PREFIX"), std::string::npos);
}

}  // namespace
}  // namespace ZelAgent
