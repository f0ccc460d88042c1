// The lines that report a reload.
#include "agent/serve/daemon/ReloadReport.h"

#include <gmock/gmock.h>

#include <csignal>
#include <new>
#include <stdexcept>

#include "agent/language/Errors.h"

namespace ZelAgent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

TEST(ReloadReport, HasALineThatTheFileWasApplied) {
  EXPECT_THAT(reportReload("a.json", [] { return Lines(); }), ElementsAre("a.json applied"));
}

TEST(ReloadReport, HasTheWarningsFirst) {
  EXPECT_THAT(reportReload("a.json",
                           [] {
                             return Lines{"one", "two"};
                           }),
              ElementsAre("warning: one", "warning: two", "a.json applied"));
}

TEST(ReloadReport, HasALineThatAWrongConfigurationChangedNothing) {
  EXPECT_THAT(reportReload("a.json", []() -> Lines { throw ConfigError("a.json:1:2: malformed"); }),
              ElementsAre("error: a.json:1:2: malformed; the configuration in force is unchanged"));
}

TEST(ReloadReport, HasALineForEachErrorOfAConfiguration) {
  EXPECT_THAT(
      reportReload("a.json", []() -> Lines { throw ConfigError("a: one\na: two"); }),
      ElementsAre("error: a: one", "error: a: two; the configuration in force is unchanged"));
}

TEST(ReloadReport, HasALineThatTheReloadFailedForAnyOtherError) {
  EXPECT_THAT(reportReload("a.json", []() -> Lines { throw std::runtime_error("no\nmemory"); }),
              ElementsAre("error: the reload failed: no\\x0amemory"));
}

TEST(ReloadReport, IsNoneWhenMemoryRunsOut) {
  const auto reload = []() -> Lines { throw std::bad_alloc(); };
  EXPECT_EXIT(static_cast<void>(reportReload("a.json", reload)), ::testing::KilledBySignal(SIGABRT),
              "^out of memory\n$");
}

TEST(ReloadReport, HasThePrintableNameOfTheFile) {
  EXPECT_THAT(reportReload("a\nb.json", [] { return Lines(); }),
              ElementsAre("a\\x0ab.json applied"));
}

TEST(ReloadReport, HasALineForEachWarningAlone) {
  EXPECT_THAT(warningLines({}), IsEmpty());
  EXPECT_THAT(warningLines({"one", "two"}), ElementsAre("warning: one", "warning: two"));
}

}  // namespace
}  // namespace ZelAgent
