#include "Velo/String.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Velo/ByteHash.h"
#include "tests/platform/Allocations.h"

namespace Velo {
namespace {

static_assert(sizeof(String) == sizeof(void*));

TEST(VeloString, IsEmptyByDefaultAndWhenMadeFromNothing) {
  EXPECT_TRUE(String().empty());
  EXPECT_TRUE(String("").empty());
  EXPECT_EQ(String().bytes(), "");
  EXPECT_EQ(String().size(), 0u);
  EXPECT_EQ(String(), String(""));
}

TEST(VeloString, HoldsTheBytesItWasMadeFrom) {
  const String text("no free entry");
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(text.size(), 13u);
  EXPECT_EQ(text.bytes(), "no free entry");
  EXPECT_EQ(text.str(), "no free entry");
}

TEST(VeloString, HoldsAnyBytesNulIncluded) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte)
    all += static_cast<char>(byte);
  const String text(all);
  EXPECT_EQ(text.size(), 256u);
  EXPECT_EQ(text.str(), all);
  EXPECT_NE(String(std::string_view("a\0b", 3)), String("a"));
}

TEST(VeloString, DoesNotDependOnWhatItWasMadeFrom) {
  std::string source = "red";
  const String text(source);
  source = "YYY";
  EXPECT_EQ(text.bytes(), "red");
}

TEST(VeloString, EqualityAndOrderAreThoseOfTheBytes) {
  EXPECT_EQ(String("red"), String(std::string("red")));
  EXPECT_NE(String("red"), String("Red"));
  EXPECT_NE(String("red"), String());
  EXPECT_LT(String(), String("a"));
  EXPECT_LT(String("a"), String("ab"));
  EXPECT_LT(String("ab"), String("b"));
  EXPECT_LT(String("\x7f"), String("\x80"));
}

TEST(VeloString, CopyingSharesTheBytesAndDoesNotAllocate) {
  const String text("shared");
  const std::size_t before = PlatformTests::allocations();
  String copy = text;
  copy = text;
  EXPECT_EQ(PlatformTests::allocations(), before);
  EXPECT_EQ(copy.bytes().data(), text.bytes().data());
}

TEST(VeloString, IsFreedWithItsLastCopy) {
  const std::size_t before = PlatformTests::liveAllocations();
  {
    String outer;
    {
      const String inner("alive as long as a copy");
      outer = inner;
    }
    EXPECT_EQ(outer.bytes(), "alive as long as a copy");
    EXPECT_EQ(PlatformTests::liveAllocations(), before + 1);
  }
  EXPECT_EQ(PlatformTests::liveAllocations(), before);
}

TEST(VeloString, AllocatesOnceWhenBuiltAndNeverWhenEmpty) {
  const std::size_t before = PlatformTests::allocations();
  const String empty("");
  EXPECT_EQ(PlatformTests::allocations(), before);
  const String text("some text that is longer than a small buffer would hold");
  EXPECT_EQ(PlatformTests::allocations(), before + 1);
}

TEST(VeloString, SurvivesAssignmentToItselfAndLeavesTheMovedFromEmpty) {
  String text("red");
  String& same = text;
  text = same;
  EXPECT_EQ(text.bytes(), "red");
  const String moved = std::move(text);
  EXPECT_EQ(moved.bytes(), "red");
  EXPECT_TRUE(text.empty());  // NOLINT(bugprone-use-after-move): what is tested
}

TEST(VeloString, WritesItsBareBytes) {
  std::ostringstream stream;
  stream << String("a'b") << String();
  EXPECT_EQ(stream.str(), "a'b");
}

TEST(VeloString, HashIsTheByteHash) {
  EXPECT_EQ(String("red").hash(7), byteHash(7, "red"));
  EXPECT_EQ(String().hash(7), byteHash(7, ""));
}

TEST(ByteHash, IsTheSameForTheSameBytesWhereverTheyStand) {
  const std::string text = "a text of more than two words of eight bytes";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    std::string shifted(size + 2, 'x');
    std::copy_n(text.begin(), size, shifted.begin() + 1);
    EXPECT_EQ(byteHash(3, std::string_view(text).substr(0, size)),
              byteHash(3, std::string_view(shifted).substr(1, size)))
        << size;
  }
}

TEST(ByteHash, DependsOnTheSeed) {
  EXPECT_NE(byteHash(0, "red"), byteHash(1, "red"));
  EXPECT_NE(byteHash(0, ""), byteHash(1, ""));
}

TEST(ByteHash, DependsOnEveryBitOfEveryByte) {
  for (std::size_t size = 1; size <= 20; ++size) {
    const std::string text(size, 'a');
    for (std::size_t bit = 0; bit < size * 8; ++bit) {
      std::string changed = text;
      changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ 1 << bit % 8);
      EXPECT_NE(byteHash(0, changed), byteHash(0, text)) << size << " bytes, bit " << bit;
    }
  }
}

TEST(ByteHash, TellsTrailingZerosApart) {
  std::vector<unsigned> hashes;
  for (std::size_t size = 0; size <= 32; ++size)
    hashes.push_back(byteHash(0, std::string(size, '\0')));
  std::sort(hashes.begin(), hashes.end());
  EXPECT_EQ(std::adjacent_find(hashes.begin(), hashes.end()), hashes.end());
}

TEST(ByteHash, SpreadsSimilarNamesOverBuckets) {
  constexpr std::size_t buckets = 256;
  std::vector<int> load(buckets);
  for (int name = 0; name < 4096; ++name)
    ++load[byteHash(0, "vrf" + std::to_string(name)) % buckets];
  EXPECT_GT(*std::min_element(load.begin(), load.end()), 0);
  EXPECT_LT(*std::max_element(load.begin(), load.end()), 16 * 3);
}

}  // namespace
}  // namespace Velo
