#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Mox/Exceptions.h"
#include "Mox/TraceHandle.h"
#include "Mox/TraceHelper.h"
#include "tests/platform/Allocations.h"

namespace Mox {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<unsigned> levelsOn(const TraceHandle& handle) {
  std::vector<unsigned> on;
  for (unsigned level = 0; level < TraceHandle::levels; ++level) {
    if (handle.isOn(level)) on.push_back(level);
  }
  return on;
}

void traceAt(const TraceHandle& handle, unsigned level, std::string_view text) {
  TraceHelper(handle, level, "/src/path", 26, "handleIt").stream() << text;
}

/// A handle at these levels, whatever an earlier test said of all handles.
class HandleAt : public TraceHandle {
 public:
  HandleAt(const char* name, unsigned on) : TraceHandle(name, on) { levelsOnIs(on); }
};

/// Collects the lines of the text trace; handles of its tests have names of their own, because
/// what was said of a name holds for the rest of the process.
class TraceTest : public ::testing::Test {
 protected:
  TraceTest() : before_(traceSinkIs([this](std::string_view line) { lines.emplace_back(line); })) {}
  ~TraceTest() override { traceSinkIs(before_); }

  std::vector<std::string> lines;

 private:
  TraceSink before_;
};

TEST_F(TraceTest, HasOneLinePerHelperOfALevelThatIsOn) {
  const HandleAt handle("TraceOne", 1U << 5);
  TraceHelper(handle, 5, "/src/path", 26, "handleIt").stream() << "Handling "
                                                               << "red" << ' ' << 7;
  EXPECT_THAT(lines, ElementsAre("TraceOne 5 /src/path:26 handleIt Handling red 7"));
}

TEST_F(TraceTest, HasNoLineOfALevelThatIsOff) {
  const HandleAt handle("TraceOff", 1U << 5);
  traceAt(handle, 4, "no");
  traceAt(handle, 6, "no");
  EXPECT_THAT(lines, IsEmpty());
}

TEST_F(TraceTest, LevelsAreIndependentOfOneAnother) {
  HandleAt handle("TraceLevels", 1U << 0 | 1U << 9);
  EXPECT_THAT(levelsOn(handle), ElementsAre(0, 9));
  handle.levelsOnIs(1U << 3);
  EXPECT_THAT(levelsOn(handle), ElementsAre(3));
}

TEST_F(TraceTest, LevelsReachTheHandlesThatAreLeftInWhateverOrderTheyGo) {
  std::optional<HandleAt> first;
  std::optional<HandleAt> second;
  std::optional<HandleAt> third;
  first.emplace("TraceFirst", 0U);
  second.emplace("TraceSecond", 0U);
  third.emplace("TraceThird", 0U);
  second.reset();
  traceLevelsIs("TraceFirst=5;TraceThird=7");
  EXPECT_THAT(levelsOn(*first), ElementsAre(5));
  EXPECT_THAT(levelsOn(*third), ElementsAre(7));
  first.reset();
  traceLevelsIs("TraceThird=8");
  EXPECT_THAT(levelsOn(*third), ElementsAre(8));
}

TEST_F(TraceTest, LevelsAreSetByHandleName) {
  const HandleAt named("TraceNamed", 0);
  const HandleAt other("TraceOther", 1U << 2);
  traceLevelsIs("TraceNamed=5,7");
  EXPECT_THAT(levelsOn(named), ElementsAre(5, 7));
  EXPECT_THAT(levelsOn(other), ElementsAre(2));
  traceLevelsIs("TraceNamed=1;TraceOther=4,4");
  EXPECT_THAT(levelsOn(named), ElementsAre(1));
  EXPECT_THAT(levelsOn(other), ElementsAre(4));
}

TEST_F(TraceTest, AnAsteriskStandsForEveryLevel) {
  const HandleAt handle("TraceAllLevels", 0);
  traceLevelsIs("TraceAllLevels=*");
  EXPECT_THAT(levelsOn(handle), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST_F(TraceTest, AnAsteriskStandsForEveryHandle) {
  const HandleAt first("TraceStarOne", 0);
  const HandleAt second("TraceStarTwo", 1U << 1);
  traceLevelsIs("*=7");
  EXPECT_THAT(levelsOn(first), ElementsAre(7));
  EXPECT_THAT(levelsOn(second), ElementsAre(7));
}

TEST_F(TraceTest, OfSeveralEntriesForAHandleTheLastHolds) {
  const HandleAt handle("TraceLast", 0);
  traceLevelsIs("TraceLast=5;*=7");
  EXPECT_THAT(levelsOn(handle), ElementsAre(7));
  traceLevelsIs("*=7;TraceLast=5;TraceLast=6");
  EXPECT_THAT(levelsOn(handle), ElementsAre(6));
}

TEST_F(TraceTest, WhatWasSaidHoldsForHandlesCreatedAfterwards) {
  traceLevelsIs("TraceLater=5");
  traceLevelsIs("TraceLater=6");
  const TraceHandle handle("TraceLater", 1U << 1);
  EXPECT_THAT(levelsOn(handle), ElementsAre(6));
}

TEST_F(TraceTest, AHandleThatIsGoneIsNotTouched) {
  { const TraceHandle gone("TraceGone", 0); }
  traceLevelsIs("TraceGone=5");
  const TraceHandle again("TraceGone", 0);
  EXPECT_THAT(levelsOn(again), ElementsAre(5));
}

TEST_F(TraceTest, BadLevelTextsAreRefusedWithoutEffect) {
  const HandleAt handle("TraceBad", 1U << 2);
  for (const char* text : {"TraceBad",
                           "TraceBad=",
                           "=5",
                           "=",
                           "TraceBad=x",
                           "TraceBad=10",
                           "TraceBad=-1",
                           "TraceBad=5 ",
                           "TraceBad= 5",
                           "TraceBad=5,",
                           "TraceBad=,5",
                           "TraceBad=5,,7",
                           "TraceBad=5;",
                           ";TraceBad=5",
                           "TraceBad=5;;TraceBad=7",
                           "TraceBad=5;x",
                           "TraceBad=5;TraceBad=11",
                           "TraceBad=**",
                           "TraceBad=5=7",
                           ";",
                           ","}) {
    EXPECT_THROW(traceLevelsIs(text), RangeException) << text;
    EXPECT_THAT(levelsOn(handle), ElementsAre(2)) << text;
  }
  const TraceHandle later("TraceBad", 1U << 3);
  const TraceHandle neverNamed("TraceNeverNamed", 1U << 3);
  EXPECT_EQ(levelsOn(later), levelsOn(neverNamed));
}

TEST_F(TraceTest, ARefusalNamesTheEntryAndTheFormExpected) {
  try {
    traceLevelsIs("TraceGood=5;TraceWrong=12");
    FAIL() << "accepted";
  } catch (const RangeException& error) {
    EXPECT_STREQ(error.what(),
                 "trace levels 'TraceWrong=12': expected NAME=LEVEL,LEVEL... with levels 0 to 9, "
                 "or * for all");
  }
}

TEST_F(TraceTest, ControlCharactersNeverBreakALine) {
  const HandleAt handle("TraceControl", 1U << 5);
  for (int byte = 0; byte < 256; ++byte) {
    lines.clear();
    traceAt(handle, 5, "a" + std::string(1, static_cast<char>(byte)) + "b");
    const bool isShown = byte >= 0x20 && byte < 0x7f;
    const char shown = isShown ? static_cast<char>(byte) : '?';
    EXPECT_THAT(
        lines, ElementsAre("TraceControl 5 /src/path:26 handleIt a" + std::string(1, shown) + "b"));
  }
}

TEST_F(TraceTest, NamesInUtf8AreKeptAndControlsOfTheTerminalAreNot) {
  const HandleAt handle("TraceUtf8", 1U << 5);
  traceAt(handle, 5, "bl\u00e5 \u84dd \u009b2J \u202e \xc1\xa1");
  EXPECT_THAT(lines, ElementsAre("TraceUtf8 5 /src/path:26 handleIt bl\u00e5 \u84dd ??2J ??? ??"));
}

TEST_F(TraceTest, ARefusalHasNoControlCharacters) {
  try {
    traceLevelsIs("\x1b[2J\u202e=x");
    FAIL() << "accepted";
  } catch (const RangeException& error) {
    EXPECT_STREQ(
        error.what(),
        "trace levels '\\x1b[2J\\xe2\\x80\\xae=x': expected NAME=LEVEL,LEVEL... with levels "
        "0 to 9, or * for all");
  }
}

TEST_F(TraceTest, ASinkIsGivenBackWhenItIsReplaced) {
  std::vector<std::string> others;
  TraceSink mine = traceSinkIs([&](std::string_view line) { others.emplace_back(line); });
  const HandleAt handle("TraceSinks", 1U << 5);
  traceAt(handle, 5, "to the other");
  EXPECT_THAT(lines, IsEmpty());
  EXPECT_EQ(others.size(), 1u);
  traceSinkIs(std::move(mine));
  traceAt(handle, 5, "to mine");
  EXPECT_EQ(lines.size(), 1u);
  EXPECT_EQ(others.size(), 1u);
}

TEST_F(TraceTest, ASinkThatFailsLosesItsLineAndNothingElse) {
  const HandleAt handle("TraceFailing", 1U << 5);
  TraceSink mine = traceSinkIs([](std::string_view) { throw std::runtime_error("full"); });
  EXPECT_NO_THROW(traceAt(handle, 5, "lost"));
  traceSinkIs(std::move(mine));
  traceAt(handle, 5, "kept");
  EXPECT_THAT(lines, ElementsAre("TraceFailing 5 /src/path:26 handleIt kept"));
}

/// Each test runs its statement in a new process, whose trace begins with the environment given.
class TraceInANewProcessDeathTest : public ::testing::Test {
 protected:
  TraceInANewProcessDeathTest() { ::testing::FLAGS_gtest_death_test_style = "threadsafe"; }
  ~TraceInANewProcessDeathTest() override {
    unsetenv("MOX_TRACE");
    ::testing::FLAGS_gtest_death_test_style = before_;
  }

  static void environmentIs(const char* levels) { setenv("MOX_TRACE", levels, 1); }

  // Traces one line at each level of two handles and ends the process.
  [[noreturn]] static void traceAllAndExit() {
    traceSinkIs(nullptr);
    const TraceHandle first("ChildOne", 1U << 1);
    const TraceHandle second("ChildTwo", 1U << 1);
    for (unsigned level = 0; level < TraceHandle::levels; ++level) {
      traceAt(first, level, "text");
      traceAt(second, level, "text");
    }
    std::exit(0);
  }

 private:
  std::string before_ = ::testing::FLAGS_gtest_death_test_style;
};

TEST_F(TraceInANewProcessDeathTest, GoesToStderrAtTheLevelsOfTheHandles) {
  unsetenv("MOX_TRACE");
  EXPECT_EXIT(traceAllAndExit(), ::testing::ExitedWithCode(0),
              "^ChildOne 1 /src/path:26 handleIt text\n"
              "ChildTwo 1 /src/path:26 handleIt text\n$");
}

TEST_F(TraceInANewProcessDeathTest, TakesItsLevelsFromTheEnvironment) {
  environmentIs("ChildOne=5,7");
  EXPECT_EXIT(traceAllAndExit(), ::testing::ExitedWithCode(0),
              "^ChildTwo 1 /src/path:26 handleIt text\n"
              "ChildOne 5 /src/path:26 handleIt text\n"
              "ChildOne 7 /src/path:26 handleIt text\n$");
}

TEST_F(TraceInANewProcessDeathTest, TakesAnAsteriskFromTheEnvironment) {
  environmentIs("*=7;ChildTwo=8");
  EXPECT_EXIT(traceAllAndExit(), ::testing::ExitedWithCode(0),
              "^ChildOne 7 /src/path:26 handleIt text\n"
              "ChildTwo 8 /src/path:26 handleIt text\n$");
}

TEST_F(TraceInANewProcessDeathTest, LetsALaterCallOverruleTheEnvironment) {
  environmentIs("*=7");
  EXPECT_EXIT(
      {
        traceLevelsIs("ChildOne=3");
        traceAllAndExit();
      },
      ::testing::ExitedWithCode(0),
      "^ChildOne 3 /src/path:26 handleIt text\n"
      "ChildTwo 7 /src/path:26 handleIt text\n$");
}

TEST_F(TraceInANewProcessDeathTest, IgnoresABadEnvironmentAsAWholeAndSaysSo) {
  environmentIs("ChildOne=5;ChildTwo=loud");
  EXPECT_EXIT(traceAllAndExit(), ::testing::ExitedWithCode(0),
              "^MOX_TRACE is ignored: trace levels 'ChildTwo=loud': expected [^\n]*\n"
              "ChildOne 1 /src/path:26 handleIt text\n"
              "ChildTwo 1 /src/path:26 handleIt text\n$");
}

TEST_F(TraceTest, AHandleIsMadeWithoutAllocating) {
  const std::size_t before = PlatformTests::allocations();
  const TraceHandle handle("TraceMadeWithoutAllocating", 1U << 3);
  EXPECT_EQ(PlatformTests::allocations(), before);
  traceLevelsIs("TraceMadeWithoutAllocating=4");
  EXPECT_THAT(levelsOn(handle), ElementsAre(4));
}

}  // namespace
}  // namespace Mox
