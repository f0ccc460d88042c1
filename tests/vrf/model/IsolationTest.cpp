#include "Isolation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace VrfModel {
namespace {

TEST(Isolation, GivesWhatTheWorkReturned) {
  EXPECT_EQ(isolated([] { return std::string("two differ"); }), "two differ");
}

TEST(Isolation, GivesNothingOfWorkThatSucceeded) {
  EXPECT_EQ(isolated([] {
              std::fputs("chatter", stderr);
              return std::string();
            }),
            "");
}

TEST(Isolation, TellsOfAnAbortWithItsLastWords) {
  const std::string report = isolated([]() -> std::string {
    std::fputs("last words", stderr);
    std::abort();
  });
  EXPECT_THAT(report, testing::HasSubstr("died of signal 6"));
  EXPECT_THAT(report, testing::HasSubstr("last words"));
}

TEST(Isolation, TellsOfAnEarlyExit) {
  const std::string report = isolated([]() -> std::string { std::exit(7); });
  EXPECT_THAT(report, testing::HasSubstr("exited with status 7"));
}

TEST(Isolation, ReportsAChildThatDoesNotEndInTime) {
  const std::string report = isolated(
      []() -> std::string {
        std::fputs("working\n", stderr);
        for (;;)
          pause();
      },
      std::chrono::milliseconds(500));
  EXPECT_THAT(report, testing::MatchesRegex("waited [0-9.]+ s for a child process to end; "
                                            "seen so far: 'working.*'"));
}

}  // namespace
}  // namespace VrfModel
