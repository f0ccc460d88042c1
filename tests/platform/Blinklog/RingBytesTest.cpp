// The bytes of a file that holds a ring, as docs/trace-ring.md describes them, and what a reader
// takes from slots that are used again or incomplete.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace Blinklog {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::size_t tableStart = 4096;
constexpr std::size_t slotsStart = 262144;
constexpr std::size_t oneSlot = 256;

template <class Number>
std::string bytesOf(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}
std::string word(std::size_t number) {
  return bytesOf(static_cast<std::uint32_t>(number));
}
std::string lengthAndText(std::string_view text) {
  return word(text.size()).append(text);
}

// The clocks of a system that was started 70 s ago.
int testClock(clockid_t clock, timespec* time) noexcept {
  *time = clock == CLOCK_REALTIME           ? timespec{1'800'000'000, 5}
          : clock == CLOCK_MONOTONIC        ? timespec{70, 6}
          : clock == CLOCK_MONOTONIC_COARSE ? timespec{70, 123'456'789}
                                            : timespec{};
  return 0;
}

class RingBytes : public ::testing::Test {
 protected:
  RingBytes() { ring_.fileIs(file_); }

  static SiteId siteAt(unsigned line, std::vector<std::string> fragments) {
    return siteIs({"/src/bytes", line, "write", 5, std::move(fragments)});
  }
  void write(SiteId site, std::vector<Argument> arguments) { ring_.write(site, arguments); }
  void writeNumbers(std::uint32_t from, std::uint32_t to) {
    for (std::uint32_t number = from; number < to; ++number)
      write(siteAt(1, {"number ", "%u"}), {{'u', number}});
  }
  // Fills all slots, so that the bytes of longer messages are behind those of the next ones.
  void writeLongMessages() {
    const std::string all(100, 'x');
    for (std::size_t slot = 0; slot < ring_.slots(); ++slot) {
      write(siteAt(2, {"%s", "%u", "%s", "%u"}),
            {{'s', 0, all}, {'u', 0x78787878}, {'s', 0, all}, {'u', 0x78787878}});
    }
  }

  std::string bytes() const { return RingFolder::read(file_); }
  std::string bytesAt(std::size_t place, std::size_t size) const {
    return bytes().substr(place, size);
  }
  // The beginning of a slot, up to `size` bytes of its arguments.
  std::string slotBytes(std::size_t slot, std::size_t size) const {
    return bytesAt(slotsStart + slot * oneSlot, 24 + size);
  }
  static std::string slotOf(std::uint64_t sequence, SiteId site, const std::string& arguments) {
    return bytesOf(sequence) + bytesOf(site) + word(arguments.size()) +
           bytesOf(std::uint64_t{70'123'456'789}) + arguments;
  }
  static std::string storedText(std::string_view text, std::uint16_t cut = 0) {
    return bytesOf(static_cast<std::uint16_t>(text.size())).append(bytesOf(cut)).append(text);
  }

  // The texts that a dump shows. The file must show the same.
  std::vector<std::string> texts() const {
    std::vector<std::string> dumped;
    for (const Record& record : ring_.dump())
      dumped.push_back(record.text);
    const RingImage image(file_);
    std::vector<std::string> read;
    for (const Record& record : image.records())
      read.push_back(record.text);
    EXPECT_EQ(read, dumped);
    return read;
  }

  RingFolder folder_;
  std::string file_ = folder_.path("ring");
  Ring ring_{4, &testClock};
};

TEST_F(RingBytes, OfTheHeaderAreAsDocumented) {
  const auto before = static_cast<std::uint64_t>(std::time(nullptr));
  const std::string other = folder_.path("other");
  Ring ring(3, &testClock);
  ring.fileIs(other);
  const SiteId newest = siteAt(3, {"the newest site"});
  const std::string header = RingFolder::read(other).substr(0, 64);
  std::uint64_t madeAt = 0;
  std::memcpy(&madeAt, header.data() + 40, sizeof madeAt);
  EXPECT_EQ(header.substr(0, 40), "Blinklog" + word(0x01020304) + word(2) + word(258048) +
                                      word(256) + word(3) + word(newest + 1) + word(0) +
                                      word(static_cast<std::size_t>(getpid())));
  EXPECT_EQ(header.substr(48), bytesOf(std::uint64_t{70'000'000'006}) +
                                   bytesOf(std::uint64_t{1'800'000'000'000'000'005}));
  EXPECT_GE(madeAt, before);
  EXPECT_LE(madeAt, static_cast<std::uint64_t>(std::time(nullptr)));
  EXPECT_EQ(RingFolder::read(other).size(), slotsStart + 3 * oneSlot);
}

TEST_F(RingBytes, BetweenHeaderAndTableAreZero) {
  EXPECT_EQ(bytesAt(64, tableStart - 64), std::string(tableStart - 64, '\0'));
}

TEST_F(RingBytes, OfARowAreAsDocumented) {
  static_cast<void>(siteIs({"/src/first", 4, "f", 5, {"first"}}));
  static_cast<void>(siteIs({"/src/second", 70000, "second", 7, {"<", "%s", ">"}}));
  const std::string rows = word(4) + word(5) + word(1) + lengthAndText("/src/first") +
                           lengthAndText("f") + lengthAndText("first") +  //
                           word(70000) + word(7) + word(3) + lengthAndText("/src/second") +
                           lengthAndText("second") + lengthAndText("<") + lengthAndText("%s") +
                           lengthAndText(">");
  const std::string table = bytesAt(tableStart, slotsStart - tableStart);
  const std::size_t found = table.find(rows);
  ASSERT_NE(found, std::string::npos);
  EXPECT_EQ(table.find_first_not_of('\0', found + rows.size()), std::string::npos);
}

TEST_F(RingBytes, OfARowAreReadBack) {
  const Site all{"/src/back", 70001, "back", 9, {"a", "%u", "", "%b", "%s"}};
  write(siteIs(all), {{'u', 1}, {'b', 0}, {'s', 0, "z"}});
  const RingImage image(file_);
  ASSERT_EQ(image.records().size(), 1U);
  EXPECT_EQ(*image.records()[0].site, all);
  EXPECT_EQ(image.records()[0].text, "a1falsez");
}

TEST_F(RingBytes, OfASlotAreAsDocumented) {
  const SiteId mixed = siteAt(5, {"%s", "%u", "%b", "%s"});
  write(mixed, {{'s', 0, "red"}, {'u', 0xfedcba98}, {'b', 1}, {'s', 0, ""}});
  const std::string arguments = storedText("red") + word(0xfedcba98) + word(1) + storedText("");
  EXPECT_EQ(slotBytes(0, arguments.size()), slotOf(0, mixed, arguments));
}

TEST_F(RingBytes, OfATextThatIsCutFillTheSlot) {
  const SiteId text = siteAt(6, {"%s", "%u"});
  write(text, {{'s', 0, std::string(229, 'x')}, {'u', 7}});
  EXPECT_EQ(slotBytes(0, 232), slotOf(0, text, storedText(std::string(228, 'x'), 1)));
  write(text, {{'s', 0, std::string(228, 'x')}, {'u', 7}});
  EXPECT_EQ(slotBytes(1, 232), slotOf(1, text, storedText(std::string(228, 'x'), 0)));
  write(text, {{'s', 0, std::string(224, 'x')}, {'u', 7}});
  EXPECT_EQ(slotBytes(2, 232), slotOf(2, text, storedText(std::string(224, 'x'), 0) + word(7)));
  EXPECT_THAT(texts(), ElementsAre(std::string(228, 'x') + "......", std::string(228, 'x') + "...",
                                   std::string(224, 'x') + "7"));
}

TEST_F(RingBytes, OfEmptySlotsHaveAllBitsOfTheNumberSet) {
  for (std::size_t slot = 0; slot < 4; ++slot)
    EXPECT_EQ(slotBytes(slot, 0).substr(0, 8), std::string(8, '\xff'));
  writeNumbers(0, 1);
  EXPECT_EQ(slotBytes(0, 0).substr(0, 8), bytesOf(std::uint64_t{0}));
  EXPECT_EQ(slotBytes(1, 0).substr(0, 8), std::string(8, '\xff'));
  ring_.clear();
  EXPECT_EQ(slotBytes(0, 0).substr(0, 8), std::string(8, '\xff'));
}

TEST_F(RingBytes, OfMessageNAreInSlotNModuloTheNumberOfSlots) {
  writeNumbers(0, 4);
  for (std::uint64_t slot = 0; slot < 4; ++slot)
    EXPECT_EQ(slotBytes(slot, 0).substr(0, 8), bytesOf(slot));
  writeNumbers(4, 6);
  EXPECT_EQ(slotBytes(0, 4), slotOf(4, siteAt(1, {"number ", "%u"}), word(4)));
  EXPECT_EQ(slotBytes(1, 4), slotOf(5, siteAt(1, {"number ", "%u"}), word(5)));
  EXPECT_EQ(slotBytes(2, 4), slotOf(2, siteAt(1, {"number ", "%u"}), word(2)));
  EXPECT_EQ(slotBytes(3, 4), slotOf(3, siteAt(1, {"number ", "%u"}), word(3)));
  EXPECT_THAT(texts(), ElementsAre("number 2", "number 3", "number 4", "number 5"));
}

TEST_F(RingBytes, OfALongerMessageDoNotShowBehindAShorterText) {
  writeLongMessages();
  for (const std::string text : {"", "y", "yy"})
    write(siteAt(7, {"<", "%s", ">"}), {{'s', 0, text}});
  EXPECT_THAT(texts(), ElementsAre(::testing::_, "<>", "<y>", "<yy>"));
}

TEST_F(RingBytes, OfALongerMessageDoNotShowForArgumentsThatAreMissing) {
  writeLongMessages();
  const SiteId four = siteAt(8, {"%s", "|", "%u", "|", "%s", "|", "%b"});
  write(four, {});
  write(four, {{'s', 0, "y"}});
  write(four, {{'s', 0, "y"}, {'u', 1}});
  write(four, {{'s', 0, "y"}, {'u', 1}, {'s', 0, ""}});
  EXPECT_THAT(texts(), ElementsAre("...|...|...|...", "y|...|...|...", "y|1|...|...", "y|1||..."));
}

TEST_F(RingBytes, OfAMessageThatIsBeingWrittenAreLeftOut) {
  writeNumbers(0, 6);
  {
    Ring::Message begun(ring_, siteAt(9, {"%u", "%u"}));
    EXPECT_THAT(texts(), ElementsAre("number 3", "number 4", "number 5"));
    begun.put({'u', 6});
    EXPECT_THAT(texts(), ElementsAre("number 3", "number 4", "number 5"));
    EXPECT_EQ(ring_.written(), 6U);
  }
  EXPECT_THAT(texts(), ElementsAre("number 3", "number 4", "number 5", "6..."));
}

TEST_F(RingBytes, OfTheFirstMessageAreLeftOutWhileItIsWritten) {
  const Ring::Message begun(ring_, siteAt(9, {"%u", "%u"}));
  EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(RingBytes, OfASlotWithoutANumberAreLeftOut) {
  writeNumbers(0, 6);
  std::string torn = bytes();
  torn.replace(slotsStart + 3 * oneSlot, 8, std::string(8, '\xff'));
  const std::string path = folder_.path("torn");
  RingFolder::write(path, torn);
  const RingImage image(path);
  std::vector<std::uint64_t> sequences;
  for (const Record& record : image.records())
    sequences.push_back(record.sequence);
  EXPECT_THAT(sequences, ElementsAre(2U, 4U, 5U));
}

TEST_F(RingBytes, OfOneSlotHoldTheLastMessage) {
  const std::string path = folder_.path("one");
  Ring one(1);
  one.fileIs(path);
  for (std::uint32_t number = 0; number < 3; ++number)
    one.write(siteAt(1, {"number ", "%u"}), std::vector<Argument>{{'u', number}});
  const RingImage image(path);
  ASSERT_EQ(image.records().size(), 1U);
  EXPECT_EQ(image.records()[0].sequence, 2U);
  EXPECT_EQ(image.records()[0].text, "number 2");
}

}  // namespace
}  // namespace Blinklog
