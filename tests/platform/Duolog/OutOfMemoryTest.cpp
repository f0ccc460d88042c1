// The last message of a process that has no memory. That the failure of an allocation leads to it
// is tested where allocations fail.
#include "Duolog/OutOfMemory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <limits>
#include <new>
#include <string>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "tests/platform/Allocations.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace Duolog {
namespace {

using ::testing::KilledBySignal;

constexpr const char* plainMessage = "^out of memory\n$";

/// The process that ends leaves its ring in a file.
class OutOfMemoryDeathTest : public ::testing::Test {
 protected:
  [[noreturn]] void end(std::size_t size = 0) const {
    Blinklog::ring().fileIs(file_);
    outOfMemory(size);
  }
  template <class Work>
  [[noreturn]] void endAfter(Work work) const {
    Blinklog::ring().fileIs(file_);
    work();
    outOfMemory();
  }
  [[nodiscard]] std::string lastMessage() const {
    const Blinklog::RingImage image(file_);
    return image.records().empty() ? "nothing" : image.records().back().text;
  }
  [[nodiscard]] const std::string& file() const noexcept { return file_; }

 private:
  Blinklog::RingFolder folder_;
  std::string file_ = folder_.path("ring");
};

TEST_F(OutOfMemoryDeathTest, IsTheLastMessageOnStderrAndInTheRing) {
  EXPECT_EXIT(end(), KilledBySignal(SIGABRT), plainMessage);
  EXPECT_EQ(lastMessage(), "out of memory");
}

TEST_F(OutOfMemoryDeathTest, ShowsASizeThatIsKnown) {
  EXPECT_EXIT(end(4096), KilledBySignal(SIGABRT), "^out of memory: 4096 bytes\n$");
  EXPECT_EQ(lastMessage(), "out of memory: 4096 bytes");
}

TEST_F(OutOfMemoryDeathTest, ShowsTheLargestSizeWhole) {
  const std::string shown =
      "out of memory: " + std::to_string(std::numeric_limits<std::size_t>::max()) + " bytes";
  EXPECT_EXIT(end(std::numeric_limits<std::size_t>::max()), KilledBySignal(SIGABRT),
              '^' + shown + "\n$");
  EXPECT_EQ(lastMessage(), shown);
}

TEST_F(OutOfMemoryDeathTest, FollowsTheMessagesThatTheRingHoldsAlready) {
  const auto before = Blinklog::siteIs({"/src/before", 7, "before", 5, {"before"}});
  EXPECT_EXIT(endAfter([&] { Blinklog::ring().write(before, {}); }), KilledBySignal(SIGABRT),
              plainMessage);
  const Blinklog::RingImage image(file());
  ASSERT_GE(image.records().size(), 2u);
  EXPECT_EQ(image.records().end()[-2].text, "before");
  const Blinklog::Record& last = image.records().back();
  EXPECT_EQ(last.text, "out of memory");
  EXPECT_EQ(last.site->path, "Duolog/OutOfMemory.cpp");
  EXPECT_EQ(last.site->function, "outOfMemory");
  EXPECT_EQ(last.site->line, 0u);
  EXPECT_EQ(last.site->level, 0u);
}

TEST_F(OutOfMemoryDeathTest, IsInTheRingThoughStderrIsClosed) {
  EXPECT_EXIT(endAfter([] { close(STDERR_FILENO); }), KilledBySignal(SIGABRT), "^$");
  EXPECT_EQ(lastMessage(), "out of memory");
}

TEST_F(OutOfMemoryDeathTest, AbortsThoughNobodyReadsStderr) {
  EXPECT_EXIT(endAfter([] {
                std::array<int, 2> ends{};
                if (pipe(ends.data()) != 0) _exit(1);
                dup2(ends[1], STDERR_FILENO);
                close(ends[0]);
              }),
              KilledBySignal(SIGABRT), "^$");
  EXPECT_EQ(lastMessage(), "out of memory");
}

TEST_F(OutOfMemoryDeathTest, AbortsThoughStderrIsAFullPipeThatNobodyReads) {
  EXPECT_EXIT(endAfter([] {
                std::array<int, 2> ends{};
                if (pipe2(ends.data(), O_NONBLOCK) != 0) _exit(1);
                while (write(ends[1], "full", 4) > 0) {
                }
                fcntl(ends[1], F_SETFL, 0);
                dup2(ends[1], STDERR_FILENO);
              }),
              KilledBySignal(SIGABRT), "^$");
  EXPECT_EQ(lastMessage(), "out of memory");
}

TEST_F(OutOfMemoryDeathTest, IsReportedOnceThoughTheHandlerOfTheAbortNeedsMemory) {
  EXPECT_EXIT(endAfter([] { std::signal(SIGABRT, [](int) { outOfMemory(1); }); }),
              KilledBySignal(SIGABRT), plainMessage);
  EXPECT_EQ(lastMessage(), "out of memory");
}

TEST_F(OutOfMemoryDeathTest, IsWhereTheNewHandlerOfThePlatformEnds) {
  ASSERT_NE(std::get_new_handler(), nullptr);
  EXPECT_EXIT(endAfter([] { std::get_new_handler()(); }), KilledBySignal(SIGABRT), plainMessage);
  EXPECT_EQ(lastMessage(), "out of memory");
}

// One allocation in this would be an exit with status 1.
TEST_F(OutOfMemoryDeathTest, IsReportedWithoutAllocating) {
  static std::size_t before = 0;
  EXPECT_EXIT(endAfter([] {
                std::signal(SIGABRT, [](int) {
                  if (PlatformTests::allocations() != before) _exit(1);
                });
                before = PlatformTests::allocations();
              }),
              KilledBySignal(SIGABRT), plainMessage);
}

}  // namespace
}  // namespace Duolog
