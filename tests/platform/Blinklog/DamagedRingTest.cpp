// Files that hold a ring no more, or never did, are refused in one line; none does harm.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <optional>
#include <random>
#include <string>

#include "Blinklog/Ring.h"
#include "Blinklog/RingImage.h"
#include "testing/RandomSeed.h"
#include "tests/platform/Blinklog/RingFolder.h"

namespace Blinklog {
namespace {

using ::testing::HasSubstr;

// As docs/trace-ring.md tells them.
constexpr std::size_t headerBytes = 4096;
constexpr std::size_t slotsOffset = std::size_t{256} * 1024;
constexpr std::size_t slotBytes = 256;
constexpr std::size_t damagedSlots = 4;

class DamagedRing : public ::testing::Test {
 protected:
  DamagedRing() {
    Ring ring(damagedSlots);
    ring.fileIs(file_);
    const SiteId named = siteIs({"/src/damaged", 1, "write", 5, {"of ", "%s", " ", "%u"}});
    for (std::uint32_t number = 0; number < 6; ++number) {
      ring.write(named, std::vector<Argument>{{'s', 0, "somebody"}, {'u', number}});
    }
    bytes_ = RingFolder::read(file_);
  }

  // What is wrong with a file of these bytes; nothing where it can be told. Whatever is told is in
  // order, and of a length that the bytes bound.
  std::optional<std::string> problemWith(const std::string& bytes) const {
    RingFolder::write(damaged_, bytes);
    return problemOf(damaged_);
  }
  static std::optional<std::string> problemOf(const std::string& path) {
    try {
      const RingImage image(path);
      checkTold(image);
      return std::nullopt;
    } catch (const RingFileError& error) {
      EXPECT_EQ(error.path(), path);
      EXPECT_EQ(std::count(error.problem().begin(), error.problem().end(), '\n'), 0);
      return error.problem();
    }
  }
  static void checkTold(const RingImage& image) {
    const std::vector<Record>& records = image.records();
    EXPECT_LE(records.size(), damagedSlots);
    EXPECT_TRUE(
        std::is_sorted(records.begin(), records.end(),
                       [](const Record& a, const Record& b) { return a.sequence < b.sequence; }));
    for (const Record& record : records)
      EXPECT_LE(record.text.size(), headerBytes * 4);
  }

  // The bytes with a number in them replaced.
  template <class Number>
  [[nodiscard]] std::string with(std::size_t at, Number number) const {
    std::string changed = bytes_;
    std::memcpy(changed.data() + at, &number, sizeof number);
    return changed;
  }
  template <class Number>
  [[nodiscard]] Number numberAt(std::size_t at) const {
    Number number{};
    std::memcpy(&number, bytes_.data() + at, sizeof number);
    return number;
  }
  void expectRefused(const std::string& bytes, const std::string& problem) const {
    EXPECT_EQ(problemWith(bytes), problem);
  }
  void expectDamaged(const std::string& bytes, const std::string& problem) const {
    expectRefused(bytes, "is damaged: " + problem + "; give an undamaged copy");
  }

  RingFolder folder_;
  std::string file_ = folder_.path("ring");
  std::string damaged_ = folder_.path("damaged");
  std::string bytes_;
};

TEST_F(DamagedRing, IsToldWhileItIsWhole) {
  EXPECT_EQ(problemWith(bytes_), std::nullopt);
  EXPECT_EQ(bytes_.size(), slotsOffset + damagedSlots * slotBytes);
}

TEST_F(DamagedRing, IsRefusedWhereThereIsNone) {
  for (const auto& [path, problem] :
       {std::pair(folder_.path("none"), "cannot be opened: No such file or directory"),
        std::pair(folder_.path(""), "is not a regular file"),
        std::pair(std::string("/dev/zero"), "is not a regular file")}) {
    try {
      const RingImage image(path);
      ADD_FAILURE() << path;
    } catch (const RingFileError& error) {
      EXPECT_EQ(error.problem(), std::string(problem) + "; give a file that holds a trace ring");
    }
  }
}

TEST_F(DamagedRing, IsRefusedWhereItIsEmptyOrSomethingElse) {
  expectRefused("", "is empty; give a file that holds a trace ring");
  const std::string other =
      "is no trace ring: it does not begin with \"Blinklog\"; give a file that holds a trace ring";
  expectRefused("x", other);
  expectRefused("{\"network-instances\": {}}", other);
  expectRefused(std::string(1U << 21U, '\0'), other);
  expectRefused(with(0, 'b'), other);
}

TEST_F(DamagedRing, IsRefusedWhereItsHeaderTellsWhatCannotBe) {
  expectRefused(with(8, std::uint32_t{0x04030201}),
                "has the other byte order; read it on a machine like the one that wrote it");
  expectDamaged(with(8, std::uint32_t{7}), "the mark of its byte order is 7");
  expectRefused(with(12, std::uint32_t{1}),
                "has version 1 of the format, not 2; read it with the release that wrote it");
  expectDamaged(
      with(16, std::uint32_t{0xffffffff}),
      "its header tells a table of 4294967295 bytes and slots of 256, not 258048 and 256");
  expectDamaged(with(20, std::uint32_t{0}),
                "its header tells a table of 258048 bytes and slots of 0, not 258048 and 256");
  expectDamaged(with(24, std::uint32_t{0}), "its header tells 0 slots, not 1 to 65536");
  expectDamaged(with(24, std::uint32_t{65537}), "its header tells 65537 slots, not 1 to 65536");
  expectDamaged(with(24, std::uint32_t{5}), "it has 263168 bytes where its header tells 263424");
  expectDamaged(with(40, ~std::uint64_t{0}),
                "its header tells that it was made 18446744073709551615 seconds after 1970");
}

TEST_F(DamagedRing, IsRefusedWhereItsTableOfSitesRunsOver) {
  const std::string suffix = " of its table of sites is longer than a row or the table can be";
  const auto sites = numberAt<std::uint32_t>(28);
  // Behind the last row there are zeros, which are rows of nothing, up to the end of the table.
  EXPECT_THAT(problemWith(with(28, ~std::uint32_t{0})).value_or(""), HasSubstr(suffix));
  for (const std::size_t length : {8U, 12U}) {  // the fragments of row 0, and its path
    for (const std::uint32_t absurd :
         {~std::uint32_t{0}, std::uint32_t{300000}, std::uint32_t{9000}})
      EXPECT_THAT(problemWith(with(headerBytes + length, absurd)).value_or(""), HasSubstr("row"));
  }
  EXPECT_GT(sites, 0U);
}

// A file whose only site has a path of that many bytes, and whose slots are empty.
std::string withOneSite(std::string bytes, std::uint32_t pathBytes) {
  const std::uint32_t numbers[] = {1, 5, 0, pathBytes};
  std::string row(reinterpret_cast<const char*>(numbers), sizeof numbers);
  row += std::string(pathBytes, 'x') + std::string(4, '\0');
  const std::uint32_t one = 1;
  std::memcpy(bytes.data() + 28, &one, sizeof one);
  bytes.replace(headerBytes, row.size(), row);
  for (std::size_t slot = 0; slot < damagedSlots; ++slot)
    bytes.replace(slotsOffset + slot * slotBytes, 8, std::string(8, '\xff'));
  return bytes;
}

TEST_F(DamagedRing, IsRefusedWhereARowHasMoreThan4096Bytes) {
  constexpr std::uint32_t longest = 4096 - 20;
  EXPECT_EQ(problemWith(withOneSite(bytes_, longest)), std::nullopt);
  expectDamaged(withOneSite(bytes_, longest + 1),
                "row 0 of its table of sites is longer than a row or the table can be");
}

TEST_F(DamagedRing, IsRefusedWhereASlotTellsWhatCannotBe) {
  const auto sites = numberAt<std::uint32_t>(28);
  const std::size_t slot = slotsOffset + 3 * slotBytes;
  expectDamaged(with(slot, std::uint64_t{4}), "slot 3 holds message 4, whose place is another");
  expectDamaged(with(slot, std::uint64_t{4003}),
                "it holds messages 2 and 4003, which no 4 slots hold at once");
  expectDamaged(with(slot + 8, sites), "slot 3 names site " + std::to_string(sites) +
                                           ", but there are " + std::to_string(sites));
  expectDamaged(with(slot + 8, ~std::uint32_t{0}),
                "slot 3 names site 4294967295, but there are " + std::to_string(sites));
  expectDamaged(with(slot + 12, std::uint32_t{233}),
                "slot 3 tells 233 bytes of arguments, not 0 to 232");
  expectDamaged(with(slot + 24, std::uint16_t{232}),
                "slot 3 holds an argument that is longer than what is left of the slot");
  expectDamaged(with(slot + 12, std::uint32_t{14}),
                "slot 3 holds an argument that is longer than what is left of the slot");
}

TEST_F(DamagedRing, IsRefusedAtEveryLengthThatIsNotItsOwn) {
  std::size_t refused = 0;
  for (std::size_t length = 0; length < bytes_.size(); length += length < 64 ? 1 : 509) {
    EXPECT_NE(problemWith(bytes_.substr(0, length)), std::nullopt) << length;
    ++refused;
  }
  for (const std::size_t length : {slotsOffset - 1, slotsOffset, slotsOffset + slotBytes,
                                   bytes_.size() - slotBytes, bytes_.size() - 1}) {
    EXPECT_NE(problemWith(bytes_.substr(0, length)), std::nullopt) << length;
    ++refused;
  }
  EXPECT_NE(problemWith(bytes_ + '\0'), std::nullopt);
  EXPECT_NE(problemWith(bytes_ + bytes_), std::nullopt);
  RecordProperty("lengths", static_cast<int>(refused + 2));
}

// More than any process may have as memory, in a file that takes no space.
TEST_F(DamagedRing, IsRefusedByItsSizeBeforeItIsRead) {
  RingFolder::write(damaged_, bytes_);
  std::filesystem::resize_file(damaged_, std::uintmax_t{1} << 43U);
  EXPECT_NE(problemOf(damaged_), std::nullopt);
}

// Where something stands that is looked at.
constexpr std::uint32_t manySlots = 4096;
// The longest text of each message of a full ring that is not refused. A message also takes the
// path and the function of its site, together 14 bytes.
constexpr std::size_t longestText = 7 * (slotsOffset + manySlots * slotBytes) / manySlots - 14;

// Writes a ring that is full of messages with a text of `textBytes` each, all of them `byte`.
void writeLongMessages(const std::string& file, std::size_t textBytes, char byte = 'x') {
  Ring ring(manySlots);
  ring.fileIs(file);
  const SiteId site = siteIs({"/src/long", 1, "write", 5, {std::string(textBytes, byte)}});
  for (std::uint32_t number = 0; number < manySlots; ++number)
    ring.write(site, std::vector<Argument>{});
}

TEST_F(DamagedRing, MayTakeSevenTimesItsSizeWhenItIsPrinted) {
  const std::string file = folder_.path("long");
  writeLongMessages(file, longestText);
  EXPECT_EQ(RingImage(file).records().size(), manySlots);
}

TEST_F(DamagedRing, IsRefusedWhenItWouldTakeMoreThanThat) {
  const std::string file = folder_.path("longer");
  writeLongMessages(file, longestText + 1);
  expectDamaged(RingFolder::read(file),
                "its messages would take more than 7 times its size when they are printed");
}

TEST_F(DamagedRing, CountsQuotesAndBackslashesAsTheyAreEscapedInJson) {
  for (const char byte : {'"', '\\'}) {
    const std::string file = folder_.path("escaped");
    writeLongMessages(file, longestText / 2, byte);
    EXPECT_EQ(RingImage(file).records().size(), manySlots);
    writeLongMessages(file, longestText / 2 + 1, byte);
    expectDamaged(RingFolder::read(file),
                  "its messages would take more than 7 times its size when they are printed");
  }
}

std::size_t placeOfInterest(std::mt19937& random, std::size_t rowsEnd) {
  switch (random() % 3) {
    case 0:
      return random() % 64;
    case 1:
      return headerBytes + random() % (rowsEnd - headerBytes);
    default:
      return slotsOffset + random() % (damagedSlots * slotBytes - 8);
  }
}

std::uint64_t oddNumber(std::mt19937& random) {
  constexpr std::uint64_t edges[] = {
      0, 1, 255, 256, 0x7fffffff, 0x80000000, 0xffffffff, 0xfffffffe, ~std::uint64_t{0}};
  return random() % 2 == 0 ? edges[random() % std::size(edges)] : random();
}

TEST_F(DamagedRing, OfRandomBytesIsToldOrRefused) {
  const ZelVrfSelectionPolicy::Testing::RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  const std::size_t rowsEnd = bytes_.find_last_not_of('\0', slotsOffset - 1) + 1;
  int told = 0;
  int refused = 0;
  for (int round = 0; round < 1500; ++round) {
    std::string damaged = bytes_;
    for (std::size_t changes = 1 + random() % 4; changes > 0; --changes) {
      const std::size_t at = placeOfInterest(random, rowsEnd);
      const std::uint64_t number = oddNumber(random);
      std::memcpy(damaged.data() + at, &number, std::size_t{1} << random() % 4);
    }
    ++(problemWith(damaged) ? refused : told);
  }
  std::printf("%d damaged files: %d refused, %d told\n", told + refused, refused, told);
  EXPECT_GT(told, 0);
  EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace Blinklog
