#include "tests/waiting/Wait.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

#include "tests/waiting/Descriptor.h"

namespace Waiting {
namespace {

constexpr std::chrono::milliseconds soon{20};

class Pipe final {
 public:
  Pipe() { EXPECT_EQ(pipe(ends_.data()), 0); }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close(ends_[0]);
    endInput();
  }

  [[nodiscard]] int output() const noexcept { return ends_[0]; }
  void put(std::string_view text) const {
    EXPECT_EQ(write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void endInput() {
    if (ends_[1] >= 0) close(ends_[1]);
    ends_[1] = -1;
  }

 private:
  std::array<int, 2> ends_{};
};

TEST(Wait, EndsWhenTheConditionIsTrue) {
  int looks = 0;
  EXPECT_TRUE(waitUntil(
      "a third look", [&] { return ++looks == 3; }, [] { return ""; }));
  EXPECT_EQ(looks, 3);
}

TEST(Wait, LooksOnceEvenAfterItsDeadline) {
  EXPECT_TRUE(waitUntil(
      "nothing", [] { return true; }, [] { return ""; }, Deadline(std::chrono::milliseconds(0))));
}

TEST(Wait, FailsAtItsDeadlineAndSaysWhatItSaw) {
  EXPECT_NONFATAL_FAILURE(
      EXPECT_FALSE(waitUntil(
          "a message", [] { return false; }, [] { return "2 others"; }, Deadline(soon))),
      " s for a message; seen so far: '2 others'");
}

TEST(WaitForEvents, ReturnsTheEventThatOccurs) {
  const Pipe pipe;
  pipe.put("x");
  EXPECT_EQ(waitForEvents(pipe.output(), POLLIN, Deadline()), POLLIN);
}

TEST(WaitForEvents, ReturnsThatTheOtherSideIsClosed) {
  Pipe pipe;
  pipe.endInput();
  EXPECT_EQ(waitForEvents(pipe.output(), POLLIN, Deadline()), POLLHUP);
}

TEST(WaitForEvents, ReturnsNothingAtTheDeadline) {
  const Pipe pipe;
  EXPECT_EQ(waitForEvents(pipe.output(), POLLIN, Deadline(soon)), 0);
}

TEST(ReadToEnd, AppendsAllBytes) {
  Pipe pipe;
  pipe.put("one\n");
  pipe.put("two\n");
  pipe.endInput();
  std::string text = "zero\n";
  EXPECT_TRUE(readToEnd(pipe.output(), text, Deadline()));
  EXPECT_EQ(text, "zero\none\ntwo\n");
}

TEST(ReadToEnd, KeepsWhatWasReadAtTheDeadline) {
  const Pipe pipe;
  pipe.put("begun");
  std::string text;
  EXPECT_FALSE(readToEnd(pipe.output(), text, Deadline(soon)));
  EXPECT_EQ(text, "begun");
}

}  // namespace
}  // namespace Waiting
