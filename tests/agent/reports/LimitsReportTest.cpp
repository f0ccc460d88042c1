// The table of limits, as text and as JSON.
#include "agent/reports/LimitsReport.h"

#include <gmock/gmock.h>

#include "tests/agent/reports/ReportText.h"

namespace ZelAgent {
namespace {

TEST(LimitsReport, HasEachLimitInItsPlace) {
  std::vector<std::string> names;
  for (const Limit& limit : limitTable())
    names.emplace_back(limit.name);
  EXPECT_THAT(names,
              ::testing::ElementsAre(
                  "name", "input file", "document levels", "port ranges", "shown errors",
                  "shown warnings", "number", "IPv4 prefix length", "IPv6 prefix length",
                  "packet payload", "chip resources", "chip rules", "fallback walk", "gateways",
                  "retries", "retry pause", "request", "answer", "waiting answers", "short answer",
                  "answer page", "answer levels", "clients", "client timeout", "answer timeouts",
                  "ctl timeout", "log changes", "log pause", "log lines", "log subjects",
                  "socket path", "completions", "console history", "shown text", "shown value",
                  "shown list", "shown interfaces", "trace ring", "trace message", "trace file"));
}

TEST(LimitsReport, PrintsADashForWhatALimitDoesNotHave) {
  const LimitTable limits{{"depth", 8, "levels", "--depth", "deeper is an error"},
                          {"number", 4294967296, "", "", "a larger one is cut"}};
  EXPECT_EQ(printedBy([&](std::ostream& out) { writeTextReport(out, limits); }),
            "  LIMIT   VALUE       UNIT    OPTION   MEANING\n"
            "  depth   8           levels  --depth  deeper is an error\n"
            "  number  4294967296  -       -        a larger one is cut\n");
  EXPECT_EQ(toJson(limits).dump(),
            R"([{"name":"depth","value":8,"unit":"levels","option":"--depth",)"
            R"("meaning":"deeper is an error"},{"name":"number","value":4294967296,"unit":null,)"
            R"("option":null,"meaning":"a larger one is cut"}])");
}

}  // namespace
}  // namespace ZelAgent
