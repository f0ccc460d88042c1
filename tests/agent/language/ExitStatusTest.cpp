// What a command prints besides its result, and the status that it ends with.
#include "agent/language/ExitStatus.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZelAgent {
namespace {

TEST(ExitStatusOutput, AnErrorIsOneLineAndItsStatusIsReturned) {
  std::ostringstream err;
  EXPECT_EQ(reportError(err, "a: wrong"), ExitStatus::badInput);
  EXPECT_EQ(reportError(err, "b", ExitStatus::failure), ExitStatus::failure);
  EXPECT_EQ(err.str(), "error: a: wrong\nerror: b\n");
}

TEST(ExitStatusOutput, SeveralErrorsAreALineEach) {
  std::ostringstream err;
  reportError(err, "a: wrong\nb: wrong");
  EXPECT_EQ(err.str(), "error: a: wrong\nerror: b: wrong\n");
}

TEST(ExitStatusOutput, EachWarningIsALine) {
  std::ostringstream err;
  reportWarnings(err, {"a", "b"});
  EXPECT_EQ(err.str(), "warning: a\nwarning: b\n");
}

TEST(ExitStatusOutput, OutputThatWasWrittenIsASuccess) {
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(finishOutput(out, err), ExitStatus::success);
  EXPECT_EQ(err.str(), "");
}

TEST(ExitStatusOutput, OutputThatCouldNotBeWrittenIsAFailure) {
  std::ostringstream out;
  out.setstate(std::ios::badbit);
  std::ostringstream err;
  EXPECT_EQ(finishOutput(out, err), ExitStatus::failure);
  EXPECT_EQ(err.str(), "error: standard output cannot be written\n");
}

}  // namespace
}  // namespace ZelAgent
