// Long reports in pages: what each page has, and how much is kept between them.
#include "agent/reports/ReportPages.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "agent/language/Limits.h"

namespace ZelAgent {
namespace {

using Cells = std::vector<std::string>;
using ::testing::StartsWith;

RowFormat<int> numberFormat() {
  return {{"NUMBER", "TEXT"},
          "  no numbers\n",
          [](const int& number) {
            return Cells{std::to_string(number), "of the list"};
          },
          [](const int& number) { return std::to_string(number); }};
}

std::vector<int> numbersTo(int count) {
  std::vector<int> numbers;
  for (int number = 0; number < count; ++number)
    numbers.push_back(number);
  return numbers;
}

TEST(ReportPages, AShortReportIsOnePage) {
  const auto text = pagesOf(numberFormat(), rowsOfList(numbersTo(2)), false);
  EXPECT_EQ(text->next(),
            "  NUMBER  TEXT\n"
            "  0       of the list\n"
            "  1       of the list\n");
  EXPECT_FALSE(text->hasNext());
  const auto array = pagesOf(numberFormat(), rowsOfList(numbersTo(3)), true);
  EXPECT_EQ(array->next(), "[0,1,2]");
  EXPECT_FALSE(array->hasNext());
}

TEST(ReportPages, AReportWithoutRowsIsOneLineOrAnEmptyArray) {
  EXPECT_EQ(wholeText(*pagesOf(numberFormat(), rowsOfList(numbersTo(0)), false)), "  no numbers\n");
  EXPECT_EQ(wholeText(*pagesOf(numberFormat(), rowsOfList(numbersTo(0)), true)), "[]");
}

TEST(ReportPages, EachPageOfATableHasTheHeadingAndALimitedSize) {
  const auto pages = pagesOf(numberFormat(), rowsOfList(numbersTo(5000)), false);
  int rows = 0;
  int count = 0;
  while (pages->hasNext()) {
    const std::string page = pages->next();
    if (page.empty()) continue;
    EXPECT_THAT(page, StartsWith("  NUMBER  TEXT\n  " + std::to_string(rows)));
    EXPECT_LE(page.size(), Limits::pageBytes);
    rows += static_cast<int>(std::count(page.begin(), page.end(), '\n')) - 1;
    ++count;
  }
  EXPECT_EQ(rows, 5000);
  EXPECT_GT(count, 5);
}

TEST(ReportPages, AllPagesOfAnArrayAreOneDocument) {
  const auto pages = pagesOf(numberFormat(), rowsOfList(numbersTo(20000)), true);
  std::string whole;
  while (pages->hasNext()) {
    const std::string page = pages->next();
    EXPECT_LE(page.size(), Limits::pageBytes + 2);
    whole += page;
  }
  EXPECT_GT(whole.size(), 5 * Limits::pageBytes);
  EXPECT_EQ(nlohmann::json::parse(whole), nlohmann::json(numbersTo(20000)));
}

TEST(ReportPages, AWideRowMakesThePageShorter) {
  Cells texts(100, "short");
  texts[50] = std::string(Limits::pageBytes - 100, 'x');
  const auto pages =
      tablePages({"TEXT"}, rowsOfList<Cells>({{texts[0]}, {texts[50]}, {texts[1]}}), "");
  EXPECT_EQ(pages->next(), "  TEXT\n  short\n");
  EXPECT_EQ(pages->next(), "  TEXT\n  " + texts[50] + '\n');
  EXPECT_EQ(pages->next(), "  TEXT\n  short\n");
  EXPECT_FALSE(pages->hasNext());
}

TEST(ReportPages, RowsThatAreReadPieceByPieceFillAPage) {
  int read = 0;
  const ReadRows<int> oneByOne = [&read](std::vector<int>& rows) {
    if (read % 2 == 0) rows.push_back(read);
    return ++read < 100;
  };
  const auto pages = pagesOf(numberFormat(), oneByOne, true);
  std::vector<std::string> filled;
  int empty = 0;
  while (pages->hasNext()) {
    const std::string page = pages->next();
    if (page.empty()) {
      ++empty;
    } else {
      filled.push_back(page);
    }
  }
  EXPECT_EQ(filled.size(), 1U);
  EXPECT_EQ(empty, 99) << "one reading at a time";
  EXPECT_EQ(read, 100);
}

// The rows that a report has read and not shown yet do not grow with its length.
TEST(ReportPages, AMillionRowsAreReadNoFasterThanPagesAreTaken) {
  constexpr std::size_t rowsOfARead = 200;
  constexpr std::size_t rowBytes = 150;
  std::size_t read = 0;
  const ReadRows<std::string> source = [&read](std::vector<std::string>& rows) {
    for (std::size_t row = 0; row < rowsOfARead; ++row)
      rows.push_back(std::string(rowBytes, '1'));
    read += rowsOfARead;
    return read < 1'000'000;
  };
  const ReportPagesPtr pages = arrayPages(source);
  std::size_t shown = 0;
  while (pages->hasNext()) {
    shown += pages->next().size();
    ASSERT_LE(read * (rowBytes + 1), shown + Limits::pageBytes + rowsOfARead * (rowBytes + 1));
  }
  EXPECT_EQ(shown, 1'000'000 * (rowBytes + 1) + 1);
}

TEST(ReportPages, OfSeveralReportsComeOneAfterTheOther) {
  std::vector<ReportPagesPtr> reports;
  reports.push_back(onePage("first\n"));
  reports.push_back(pagesOf(numberFormat(), rowsOfList(numbersTo(1)), true));
  reports.push_back(onePage("last\n"));
  const ReportPagesPtr pages = pagesInOrder(std::move(reports));
  EXPECT_EQ(pages->next(), "first\n");
  EXPECT_EQ(pages->next(), "[0]");
  EXPECT_TRUE(pages->hasNext());
  EXPECT_EQ(pages->next(), "last\n");
  EXPECT_FALSE(pages->hasNext());
}

}  // namespace
}  // namespace ZelAgent
