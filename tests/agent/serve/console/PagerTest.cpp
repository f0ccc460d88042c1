// Long answers, a screen at a time.
#include "agent/serve/console/Pager.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZelAgent {
namespace {

constexpr const char* asked = "--More--\r        \r";

// What is printed of the lines on a screen of three rows and ten columns, with these keys.
struct Paged {
  std::string printed;
  std::size_t keysLeft = 0;
};

Paged paged(const std::vector<std::string>& lines, std::string keys, Screen screen = {3, 10}) {
  std::ostringstream out;
  Pager pager(out, screen, [&] {
    if (keys.empty()) return -1;
    const int key = keys.front();
    keys.erase(0, 1);
    return key;
  });
  for (const std::string& line : lines) {
    if (!pager.line(line)) break;
  }
  return {std::move(out).str(), keys.size()};
}

TEST(Pager, DoesNotWaitForLinesThatFitTheScreen) {
  EXPECT_EQ(paged({"a", "b"}, " ").printed, "a\nb\n");
  EXPECT_EQ(paged({"a", "b"}, " ").keysLeft, 1U);
}

TEST(Pager, SpaceShowsTheNextScreen) {
  EXPECT_EQ(paged({"a", "b", "c", "d", "e"}, "  ").printed,
            std::string("a\nb\n") + asked + "c\nd\n" + asked + "e\n");
}

TEST(Pager, EnterShowsTheNextLine) {
  EXPECT_EQ(paged({"a", "b", "c", "d"}, "\r\n").printed,
            std::string("a\nb\n") + asked + "c\n" + asked + "d\n");
}

TEST(Pager, OtherKeysAreIgnored) {
  EXPECT_EQ(paged({"a", "b", "c"}, "xy ").printed, std::string("a\nb\n") + asked + "c\n");
}

TEST(Pager, EndsOnQOnCtrlCAndWithoutKeys) {
  for (const std::string end : {"q", "Q", "\x03"}) {
    const Paged ended = paged({"a", "b", "c", "d"}, end + ' ');
    EXPECT_EQ(ended.printed, std::string("a\nb\n") + asked) << end;
    EXPECT_EQ(ended.keysLeft, 1U) << end;
  }
  EXPECT_EQ(paged({"a", "b", "c", "d"}, "").printed, std::string("a\nb\n") + asked);
}

TEST(Pager, CountsTheRowsOfALongLine) {
  EXPECT_EQ(paged({"01234567890", "c"}, " ").printed, std::string("01234567890\n") + asked + "c\n");
  EXPECT_EQ(paged({"0123456789", "c"}, "").printed, "0123456789\nc\n");
  EXPECT_EQ(paged({std::string(99, 'x'), "c"}, "").printed, std::string(99, 'x') + "\n" + asked);
}

TEST(Pager, DoesNotWaitWithoutANumberOfRows) {
  EXPECT_EQ(paged({"a", "b", "c", "d"}, "", {0, 10}).printed, "a\nb\nc\nd\n");
}

}  // namespace
}  // namespace ZelAgent
