// Messages of the library, as text and as JSON.
#include "agent/reports/TraceReport.h"

#include <gtest/gtest.h>

#include "Blinklog/Site.h"
#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

TEST(TraceReport, EachMessageHasEveryFieldOfItsSite) {
  const Blinklog::Site first{"vrf/A.cpp", 11, "onVrf", 5, {}};
  const Blinklog::Site second{"tables/B.cpp", 22, "~Table", 7, {}};
  const std::vector<Blinklog::Record> records{{101, 1'800'000'000'123'456'789, &first, "vrf red"},
                                              {102, 0, &second, ""}};
  EXPECT_EQ(printedBy([&](std::ostream& out) { writeTrace(out, records); }),
            "101 2027-01-15T08:00:00.123456Z level 5 line 11 onVrf: vrf red\n"
            "102 1970-01-01T00:00:00.000000Z level 7 line 22 ~Table: \n");
  EXPECT_EQ(traceJson(records).dump(),
            R"([{"sequence":101,"time":"2027-01-15T08:00:00.123456Z","level":5,"path":"vrf/A.cpp",)"
            R"("line":11,"function":"onVrf","text":"vrf red"},)"
            R"({"sequence":102,"time":"1970-01-01T00:00:00.000000Z","level":7,)"
            R"("path":"tables/B.cpp","line":22,"function":"~Table","text":""}])");
}

TEST(TraceReport, TheArrayIsPrintedAsItIsReturned) {
  const Blinklog::Site site{"vrf/A.cpp", 11, "onVrf", 5, {}};
  const std::vector<Blinklog::Record> records{{101, 1, &site, "a\n\"b\""}, {102, 2, &site, "\xff"}};
  for (std::size_t count : {0U, 1U, 2U}) {
    const auto some = std::span(records).first(count);
    EXPECT_EQ(printedBy([&](std::ostream& out) { writeJsonTrace(out, some); }),
              oneLine(traceJson(some)));
  }
}

TEST(TraceReport, AMessageIsOnePrintableLineOfAnyLength) {
  const Blinklog::Site site{"p", 1, "f\x1b", 2, {}};
  const std::string longText(2000, 'x');
  const std::vector<Blinklog::Record> records{{1, 0, &site, "a\nb"}, {2, 1000, &site, longText}};
  EXPECT_EQ(printedBy([&](std::ostream& out) { writeTrace(out, records); }),
            "1 1970-01-01T00:00:00.000000Z level 2 line 1 f\\x1b: a\\x0ab\n"
            "2 1970-01-01T00:00:00.000001Z level 2 line 1 f\\x1b: " +
                longText + "\n");
}

TEST(TraceReport, WithoutMessagesThereIsNoLine) {
  EXPECT_EQ(printedBy([](std::ostream& out) { writeTrace(out, {}); }), "");
  EXPECT_EQ(traceJson({}).dump(), "[]");
}

}  // namespace
}  // namespace ZelAgent
