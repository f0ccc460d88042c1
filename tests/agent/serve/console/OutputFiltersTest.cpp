// The filters that follow a command at the console.
#include "agent/serve/console/OutputFilters.h"

#include <gmock/gmock.h>

#include <sstream>

#include "agent/language/Errors.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* vrfTable =
    "agent.json applied\n"
    "  VRF    ID  FALLBACK\n"
    "  red    2   blue\n"
    "  blue   3   -\n"
    "  green  -   -\n";

// What the filters of the line leave of the table.
std::string filtered(const std::string& line) {
  OutputFilters filters(partsOf(line).filters);
  std::string printed;
  const auto print = [&](std::string_view text) { printed += std::string(text) + '\n'; };
  std::istringstream lines(vrfTable);
  for (std::string text; std::getline(lines, text);)
    filters.line(text, print);
  filters.end(print);
  return printed;
}

std::string problemWithFilters(const std::string& line) {
  try {
    static_cast<void>(filtered(line));
  } catch (const EventError& error) {
    return error.what();
  }
  return "nothing";
}

TEST(OutputFilters, WithoutFiltersAllLinesArePrinted) {
  EXPECT_EQ(filtered("show vrfs"), vrfTable);
}

TEST(OutputFilters, IncludePrintsTheLinesWithTheTextAndHeadings) {
  EXPECT_EQ(filtered("show vrfs | include blue"),
            "  VRF    ID  FALLBACK\n"
            "  red    2   blue\n"
            "  blue   3   -\n");
}

TEST(OutputFilters, ExcludePrintsTheLinesWithoutTheTextAndHeadings) {
  EXPECT_EQ(filtered("show vrfs | exclude e"), "  VRF    ID  FALLBACK\n");
  EXPECT_EQ(filtered("show vrfs | exclude VRF"), vrfTable);
}

TEST(OutputFilters, BeginPrintsFromTheFirstLineWithTheText) {
  EXPECT_EQ(filtered("show vrfs | begin blue"),
            "  red    2   blue\n"
            "  blue   3   -\n"
            "  green  -   -\n");
}

TEST(OutputFilters, CountPrintsTheNumberOfLinesWithoutHeadings) {
  EXPECT_EQ(filtered("show vrfs | count"), "4\n");
  EXPECT_EQ(filtered("show vrfs | include nothing | count"), "0\n");
}

TEST(OutputFilters, EachFilterSeesWhatTheFilterBeforeItLeft) {
  EXPECT_EQ(filtered("show vrfs | begin blue | exclude green | include 3"), "  blue   3   -\n");
}

TEST(OutputFilters, AKeywordMayBeShortened) {
  EXPECT_EQ(filtered("show vrfs | i green | c"), "1\n");
}

TEST(OutputFilters, TheTextIsTheRestOrAQuotedWord) {
  EXPECT_EQ(filtered("show vrfs |  include  3   -  | count"), "1\n");
  EXPECT_EQ(filtered("show vrfs | include '3   - ' | count"), "0\n");
  EXPECT_EQ(filtered("show vrfs | include ' | ' | count"), "0\n");
}

TEST(OutputFilters, AWrongFilterIsAnErrorThatNamesWhatIsRight) {
  EXPECT_EQ(problemWithFilters("show |"),
            "| must be followed by include, exclude, begin or count, found the end of the filter");
  EXPECT_EQ(problemWithFilters("show | grep x"),
            "| must be followed by include, exclude, begin or count, found 'grep'");
  EXPECT_EQ(problemWithFilters("show | include"), "| include TEXT: TEXT is missing");
  EXPECT_EQ(problemWithFilters("show | begin 'a' b"),
            "| begin TEXT: expected the end of the text at byte 3, found ' b'");
  EXPECT_EQ(problemWithFilters("show | count x"), "| count: the filter must end here, found 'x'");
  EXPECT_EQ(problemWithFilters("show | count | include x"),
            "| count must be the last filter, found 'include x'");
}

TEST(OutputFilters, OnlyAWordOfItsOwnSeparates) {
  EXPECT_THAT(partsOf("vrf a|b add").filters, IsEmpty());
  EXPECT_THAT(partsOf("vrf '|' add").filters, IsEmpty());
  EXPECT_THAT(partsOf("vrf 'a | b\\' | c' add").filters, IsEmpty());
  EXPECT_THAT(partsOf("show # vrfs | count").filters, IsEmpty());
  const LineParts parts = partsOf("vrf 'a | b' add | begin # x |  count ");
  EXPECT_EQ(parts.command, "vrf 'a | b' add ");
  EXPECT_THAT(parts.filters, ElementsAre("begin # x", "count"));
}

TEST(OutputFilters, ALineMayEndInAQuotedWord) {
  EXPECT_TRUE(partsOf("vrf 'a b").isInQuotes);
  EXPECT_FALSE(partsOf("vrf 'a b'").isInQuotes);
  EXPECT_TRUE(partsOf("show | include 'a").isInQuotes);
}

}  // namespace
}  // namespace ZelAgent
