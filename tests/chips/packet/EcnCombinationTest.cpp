#include "chips/packet/EcnCombination.h"

#include <gtest/gtest.h>

namespace Chips {
namespace {

constexpr int drop = -1;

struct Combination {
  std::uint8_t inner;
  std::uint8_t outer;
  int after;
};

// Figure 4 of RFC 6040, row by row.
constexpr Combination combinations[] = {
    {ecnNotEct, ecnNotEct, ecnNotEct}, {ecnNotEct, ecnEct0, ecnNotEct},
    {ecnNotEct, ecnEct1, ecnNotEct},   {ecnNotEct, ecnCe, drop},
    {ecnEct0, ecnNotEct, ecnEct0},     {ecnEct0, ecnEct0, ecnEct0},
    {ecnEct0, ecnEct1, ecnEct1},       {ecnEct0, ecnCe, ecnCe},
    {ecnEct1, ecnNotEct, ecnEct1},     {ecnEct1, ecnEct0, ecnEct1},
    {ecnEct1, ecnEct1, ecnEct1},       {ecnEct1, ecnCe, ecnCe},
    {ecnCe, ecnNotEct, ecnCe},         {ecnCe, ecnEct0, ecnCe},
    {ecnCe, ecnEct1, ecnCe},           {ecnCe, ecnCe, ecnCe},
};

TEST(EcnCombination, IsThatOfRfc6040) {
  EXPECT_EQ(std::size(combinations), 16U);
  for (const Combination& combination : combinations) {
    const auto after = ecnAfterDecap(combination.inner, combination.outer);
    EXPECT_EQ(after ? int{*after} : drop, combination.after)
        << "inner " << int{combination.inner} << " outer " << int{combination.outer};
  }
}

TEST(EcnCombination, NamesTheCodePoints) {
  EXPECT_EQ(ecnNotEct, 0b00);
  EXPECT_EQ(ecnEct1, 0b01);
  EXPECT_EQ(ecnEct0, 0b10);
  EXPECT_EQ(ecnCe, 0b11);
}

}  // namespace
}  // namespace Chips
