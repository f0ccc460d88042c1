// Names that were chosen so that their bytes have one hash under the seed 0 cost what others do.
#include "tests/platform/L3/CollidingNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "L3/VrfName.h"
#include "Mox/Hash.h"
#include "tests/platform/ByteComparisons.h"

namespace L3 {
namespace {

using PlatformTests::byteComparisons;
using ::testing::AllOf;
using ::testing::Ge;
using ::testing::Le;
using ::testing::SizeIs;

class CollidingNames : public ::testing::Test {
 protected:
  static constexpr unsigned count = 20000;

  [[nodiscard]] const std::vector<std::string>& texts() const { return names_.texts(); }

  [[nodiscard]] std::vector<VrfName> built() const { return {texts().begin(), texts().end()}; }

 private:
  PlatformTests::CollidingNames names_{count};
};

TEST_F(CollidingNames, DifferInBytesAndHaveOneHashUnderTheSeedZero) {
  std::set<unsigned> hashes;
  for (const std::string& text : texts())
    hashes.insert(Mox::hashSingleAttr(0, text));
  EXPECT_THAT(hashes, SizeIs(1));
  EXPECT_THAT(std::set<std::string>(texts().begin(), texts().end()), SizeIs(count));
}

TEST_F(CollidingNames, HaveOneByteHashAsTheirBytesHave) {
  for (const VrfName& name : built())
    ASSERT_EQ(name.byteHash(), Mox::hashSingleAttr(0, texts().front()));
}

TEST_F(CollidingNames, HaveHashesOfTheirOwnUnderEverySeed) {
  const std::vector<VrfName> names = built();
  for (const unsigned seed : {0U, 1U, 0x9e9099d6U, Mox::HashHelper::hashSeed32(),
                              Mox::HashHelper::hashSeed32() ^ 0x9e9099d6U}) {
    std::set<unsigned> hashes;
    for (const VrfName& name : names)
      hashes.insert(name.hash(seed));
    // Of so many random 32-bit numbers, one pair in ten runs is equal.
    EXPECT_THAT(hashes, SizeIs(Ge(count - 5))) << seed;
  }
}

// Comparing the bytes of a name with those of another takes at least one comparison for each name
// that is found, so a table that compares unseen would fail, too.
TEST_F(CollidingNames, AreFoundInTheTableOfNamesByAFewComparisonsOfBytes) {
  const std::size_t atFirst = byteComparisons();
  const std::vector<VrfName> names = built();
  EXPECT_THAT(byteComparisons() - atFirst, Le(4 * count)) << "new";

  const std::size_t thereafter = byteComparisons();
  const std::vector<VrfName> again = built();
  EXPECT_THAT(byteComparisons() - thereafter, AllOf(Ge(count), Le(4 * count))) << "present";
  EXPECT_TRUE(names == again);
}

TEST_F(CollidingNames, LeaveTheTableOfNamesByAFewComparisonsOfBytes) {
  std::vector<VrfName> names = built();
  const std::size_t before = byteComparisons();
  while (!names.empty())
    names.pop_back();  // the latest first, so that every other one is in the way
  EXPECT_THAT(byteComparisons() - before, Le(4 * count));
}

}  // namespace
}  // namespace L3
