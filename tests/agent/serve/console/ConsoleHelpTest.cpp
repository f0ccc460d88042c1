// What the console adds to the help of the daemon.
#include "agent/serve/console/ConsoleHelp.h"

#include <gmock/gmock.h>

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> completionsOf(const std::string& line) {
  return completionsAtConsole(
      line, [](const std::string&) { return std::vector<std::string>{"explain"}; });
}

std::optional<std::string> choicesOf(const std::string& line) {
  return choicesAtConsole(line, [](const std::string&) {
    return DaemonChoices{{{"explain", "Show a path"}}, ""};
  });
}

TEST(ConsoleHelp, AddsTheCommandsOfTheConsole) {
  EXPECT_THAT(completionsOf("ex"), ElementsAre("exit", "explain"));
  EXPECT_THAT(completionsOf("terminal l"), ElementsAre("length"));
  EXPECT_THAT(completionsOf("terminal length "), IsEmpty()) << "a number is not completed";
  EXPECT_EQ(choicesOf("ex"), "explain  Show a path\nexit     Leave the console\n");
  EXPECT_EQ(choicesOf("terminal length "), "N  a number of lines; 0 for no pauses\n");
}

TEST(ConsoleHelp, PrintsTheErrorOfTheDaemonUnlessTheConsoleKnowsTheWord) {
  const auto refuse = [](const std::string&) { return DaemonChoices{{}, "unknown"}; };
  EXPECT_EQ(choicesAtConsole("xyz", refuse), "error: unknown\n");
  EXPECT_EQ(choicesAtConsole("exi", refuse), "exit  Leave the console\n");
}

TEST(ConsoleHelp, ExplainsFilters) {
  EXPECT_THAT(completionsOf("show vrfs | "), ElementsAre("include", "exclude", "begin", "count"));
  EXPECT_THAT(completionsOf("show vrfs | include x | e"), ElementsAre("exclude"));
  EXPECT_EQ(choicesOf("show vrfs | c"), "count  Print the number of lines\n");
}

TEST(ConsoleHelp, AQuestionMarkIsPartOfAQuotedWordAndOfTheTextOfAFilter) {
  EXPECT_EQ(choicesOf("vrf 'what"), std::nullopt);
  EXPECT_EQ(choicesOf("show vrfs | include what"), std::nullopt);
  EXPECT_EQ(choicesOf("show vrfs | include "), std::nullopt);
  EXPECT_THAT(completionsOf("show vrfs | include e"), IsEmpty());
}

TEST(ConsoleHelp, OnlyLinesOfPlainWordsAreCommandsOfTheConsole) {
  EXPECT_THAT(plainWordsOf(" terminal  length 0 "), ElementsAre("terminal", "length", "0"));
  EXPECT_THAT(plainWordsOf("'exit'"), IsEmpty());
  EXPECT_THAT(plainWordsOf("exit | count"), IsEmpty());
}

}  // namespace
}  // namespace ZelAgent
