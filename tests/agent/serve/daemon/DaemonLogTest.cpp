// The lines of the daemon's log on standard error.
#include "agent/serve/daemon/DaemonLog.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>

#include "tests/agent/FixedClock.h"
#include "tests/agent/LogTimes.h"

namespace ZelAgent {
namespace {

std::string loggedIn(LogForm form) {
  std::ostringstream err;
  DaemonLog log(err, form, fixedTime);
  log.print("error: no file");
  log.print("warning: an odd file");
  log.print("a.json applied");
  log.print(LogPriority::notice, "programmed again");
  log.print(LogPriority::debug, "error: in a trace");
  return err.str();
}

// DEVICE:INODE of a descriptor, as systemd writes it.
std::string streamOf(int descriptor) {
  struct stat found {};
  EXPECT_EQ(fstat(descriptor, &found), 0);
  return std::to_string(found.st_dev) + ':' + std::to_string(found.st_ino);
}

TEST(DaemonLog, HasTheTimeBeforeEachLine) {
  EXPECT_EQ(loggedIn(LogForm::time),
            "2027-01-15T08:00:00.000007Z error: no file\n"
            "2027-01-15T08:00:00.000007Z warning: an odd file\n"
            "2027-01-15T08:00:00.000007Z a.json applied\n"
            "2027-01-15T08:00:00.000007Z programmed again\n"
            "2027-01-15T08:00:00.000007Z error: in a trace\n");
}

TEST(DaemonLog, OfTheJournalHasThePriorityBeforeEachLine) {
  EXPECT_EQ(loggedIn(LogForm::priority),
            "<3>error: no file\n<4>warning: an odd file\n<6>a.json applied\n"
            "<5>programmed again\n<7>error: in a trace\n");
}

TEST(DaemonLog, ContinuesWhenItsStreamFails) {
  std::ostringstream err;
  DaemonLog log(err, LogForm::priority, fixedTime);
  err.setstate(std::ios::badbit);
  log.print("lost");
  log.print("kept");
  EXPECT_EQ(err.str(), "<6>kept\n");
}

TEST(DaemonLog, BeginsOtherWarningsAsItsLines) {
  EXPECT_TRUE(beginsWithTime(warningStart(STDERR_FILENO)()));
  EXPECT_EQ(logLineStart(LogForm::priority, LogPriority::warning, fixedTime()), "<4>");
}

TEST(DaemonLog, HasPrioritiesOnlyIfTheJournalIsItsStream) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string journal = streamOf(ends[1]);
  EXPECT_EQ(logFormOf(ends[1], journal.c_str()), LogForm::priority);
  EXPECT_EQ(logFormOf(ends[1], nullptr), LogForm::time);
  for (const std::string& other : {std::string(), journal + "0", "0:" + journal, std::string("x")})
    EXPECT_EQ(logFormOf(ends[1], other.c_str()), LogForm::time) << other;
  close(ends[0]);
  close(ends[1]);
  EXPECT_EQ(logFormOf(ends[1], journal.c_str()), LogForm::time) << "a closed descriptor";
}

}  // namespace
}  // namespace ZelAgent
