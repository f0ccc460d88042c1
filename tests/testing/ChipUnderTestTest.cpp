// What the suite assumes of a chip that reports nothing, and how the chips are named in reports.
#include "testing/ChipUnderTest.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <sstream>
#include <typeinfo>

namespace ZelVrfSelectionPolicy::Testing {

// A maker of chips links the tests of the suite. This program does not run them.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(VrfHelperConformance);

namespace {

// A chip that implements only what it must.
class SilentChip final : public ChipUnderTest {
 public:
  explicit SilentChip(std::size_t first = 0, std::size_t second = 0)
      : first_(first), second_(second) {}
  Mox::Ptr<VrfHelper> makeHelper(const ChipFacts& /*facts*/) override { return nullptr; }

  [[nodiscard]] std::size_t first() const noexcept { return first_; }
  [[nodiscard]] std::size_t second() const noexcept { return second_; }

 private:
  std::size_t first_;
  std::size_t second_;
};

TEST(ChipThatReportsNothing, IsFilledByAtMost65536Creations) {
  SilentChip chip;
  EXPECT_EQ(chip.mostCreations(), 65536U);
  EXPECT_EQ(chip.resourcesInUse(), std::nullopt);
  EXPECT_EQ(chip.capacity(), std::nullopt);
  EXPECT_EQ(chip.programOf(VrfAction("red", PolicyMap::ActionType::vrf)), std::nullopt);
  EXPECT_FALSE(chip.failNextHook());
}

TEST(ShortTypeName, IsTheTypeWithoutItsNamespaces) {
  EXPECT_EQ(shortTypeName(typeid(SilentChip)), "SilentChip");
  EXPECT_EQ(shortTypeName(typeid(int)), "int");
}

TEST(MakerOfChips, IsNamedByTheTypeAndItsArguments) {
  EXPECT_EQ(chipUnderTest<SilentChip>().name(), "SilentChip");
  EXPECT_EQ(chipUnderTest<SilentChip>(std::size_t{8}).name(), "SilentChip(8)");
  std::ostringstream written;
  written << chipUnderTest<SilentChip>(std::size_t{8}, std::size_t{9});
  EXPECT_EQ(written.str(), "SilentChip(8,9)");
}

TEST(MakerOfChips, PassesTheArgumentsToEachChip) {
  const ChipMaker maker = chipUnderTest<SilentChip>(std::size_t{8}, std::size_t{9});
  const auto first = maker.make();
  const auto second = maker.make();
  EXPECT_NE(first, second);
  const auto& chip = dynamic_cast<SilentChip&>(*second);
  EXPECT_EQ(chip.first(), 8U);
  EXPECT_EQ(chip.second(), 9U);
}

}  // namespace
}  // namespace ZelVrfSelectionPolicy::Testing
