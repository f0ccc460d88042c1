#include "Mox/SassertHelper.h"

#include <gtest/gtest.h>

#include <csignal>

namespace Mox {
namespace {

TEST(SassertHelperDeathTest, PrintsItsCommentAndAbortsNamingConditionPathLineAndFunction) {
  EXPECT_EXIT(SassertHelper("count > 0", "/src/Counter", 56, "void Counter::drop()").stream()
                  << "no users of "
                  << "red",
              ::testing::KilledBySignal(SIGABRT),
              "^no users of red\n"
              "[^\n]*: /src/Counter:56: void Counter::drop\\(\\): "
              "Assertion `\"count > 0\" == nullptr' failed\\.\n$");
}

TEST(SassertHelperDeathTest, QuotesTheConditionAsItIsWritten) {
  EXPECT_DEATH(
      SassertHelper("vrfHwStatus()->hwStatusHas( vrfAction )", "path", 1, "f").stream()
          << "comment",
      "Assertion `\"vrfHwStatus\\(\\)->hwStatusHas\\( vrfAction \\)\" == nullptr' failed\\.");
}

TEST(SassertHelperDeathTest, WithoutCommentPrintsNoEmptyLine) {
  EXPECT_DEATH(SassertHelper("false", "path", 1, "f"),
               "^[^\n]*path:1: f: Assertion `\"false\" == nullptr' failed\\.\n$");
}

TEST(SassertHelperDeathTest, FailsAtTheEndOfTheFullExpression) {
  EXPECT_DEATH(
      {
        SassertHelper helper("false", "path", 1, "f");
        helper.stream() << "first";
        helper.stream() << ", second";
      },
      "^first, second\n");
}

}  // namespace
}  // namespace Mox
