// The time of each message, in memory and in a file.
#include <gmock/gmock.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace Blinklog {
namespace {

using ::testing::ElementsAre;

constexpr std::int64_t second = 1'000'000'000;
constexpr std::uint64_t wallStart = 1'800'000'000'000'000'000;

// The clocks of the system, which only a test changes.
struct Clocks {
  std::int64_t monotonic = 0;
  std::int64_t tick = 0;
  std::int64_t wall = 0;
};
Clocks clocks;

int readClocks(clockid_t clock, timespec* time) noexcept {
  const std::int64_t now = clock == CLOCK_MONOTONIC          ? clocks.monotonic
                           : clock == CLOCK_MONOTONIC_COARSE ? clocks.tick
                           : clock == CLOCK_REALTIME         ? clocks.wall
                                                             : -1;
  *time = {now / second, now % second};
  return 0;
}

std::vector<std::uint64_t> timesOf(const std::vector<Record>& records) {
  std::vector<std::uint64_t> times;
  for (const Record& record : records)
    times.push_back(record.time - wallStart);
  return times;
}

class RingTime : public ::testing::Test {
 protected:
  RingTime() { clocks = {70 * second + 3, 70 * second, wallStart}; }

  static void writeTo(Ring& ring) {
    ring.write(siteIs({"/src/time", 1, "write", 5, {"x"}}), std::vector<Argument>{});
  }
  void write() { writeTo(ring()); }
  static void pass(std::int64_t nanoseconds) {
    clocks.monotonic += nanoseconds;
    clocks.tick += nanoseconds;
    clocks.wall += nanoseconds;
  }
  Ring& ring() {
    if (!ring_) ring_ = std::make_unique<Ring>(3, &readClocks);
    return *ring_;
  }

  RingFolder folder_;
  std::string file_ = folder_.path("ring");
  std::unique_ptr<Ring> ring_;
};

TEST_F(RingTime, OfAMessageIsTheWallClockOfItsTick) {
  ring();
  pass(5 * second + 123'456'789);
  write();
  pass(1);
  write();
  EXPECT_THAT(timesOf(ring().dump()),
              ElementsAre(5 * second + 123'456'786, 5 * second + 123'456'787));
}

TEST_F(RingTime, OfAMessageInTheTickOfTheStartMayBeBeforeTheStart) {
  write();
  EXPECT_EQ(ring().dump()[0].time, wallStart - 3);
}

TEST_F(RingTime, StaysWithItsMessageWhenTheOldestOnesAreReplaced) {
  ring();
  for (int message = 0; message < 5; ++message) {
    pass(second);
    write();
  }
  EXPECT_THAT(timesOf(ring().dump()), ElementsAre(3 * second - 3, 4 * second - 3, 5 * second - 3));
}

TEST_F(RingTime, DoesNotFollowAWallClockThatIsSetLater) {
  write();
  clocks.wall -= 3600 * second;
  pass(second);
  write();
  EXPECT_EQ(ring().dump()[1].time - ring().dump()[0].time, second);
}

TEST_F(RingTime, IsReadFromTheFileAloneAsTheRingReturnsIt) {
  write();
  pass(second);
  ring().fileIs(file_);
  pass(2 * second);
  write();
  const std::vector<std::uint64_t> times = timesOf(ring().dump());
  clocks = {};  // as in another process, after a restart of the system
  ring_.reset();
  EXPECT_EQ(timesOf(RingImage(file_).records()), times);
  EXPECT_EQ(times.back(), 3 * second - 3);
}

TEST_F(RingTime, IsTheTimeOfTheFirstStoreOfAMessage) {
  ring();
  {
    const Ring::Message begun(ring(), siteIs({"/src/time", 1, "write", 5, {"x"}}));
    pass(second);
  }
  EXPECT_EQ(ring().dump()[0].time, wallStart - 3);
}

TEST_F(RingTime, OfTheSystemNeverDecreasesAndIsNow) {
  const auto now = [] { return static_cast<std::uint64_t>(std::time(nullptr)) * second; };
  constexpr std::uint64_t longestTick = second / 100;
  const std::uint64_t before = now();
  Ring real(1000);
  for (std::size_t message = 0; message < real.slots(); ++message)
    writeTo(real);
  const std::vector<Record> records = real.dump();
  for (std::size_t at = 1; at < records.size(); ++at)
    ASSERT_GE(records[at].time, records[at - 1].time);
  EXPECT_GE(records.front().time + longestTick, before);
  EXPECT_LE(records.back().time, now() + second);
}

}  // namespace
}  // namespace Blinklog
