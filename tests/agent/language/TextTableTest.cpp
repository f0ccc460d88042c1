// The layout of tables.
#include "agent/language/TextTable.h"

#include <gtest/gtest.h>

#include <sstream>

namespace ZelAgent {
namespace {

std::string written(const TextTable& table, std::size_t columns) {
  std::ostringstream out;
  tableColumnsAre(out, columns);
  writeTable(out, table);
  return std::move(out).str();
}

const TextTable described = {{"VRF", "ID", "DESCRIPTION"},
                             {"red", "1", "one two three four"},
                             {"a-long-name-of-a-vrf", "2", "-"}};

TEST(TextTable, AColumnIsAsWideAsItsWidestCell) {
  EXPECT_EQ(written(described, 0),
            "  VRF                   ID  DESCRIPTION\n"
            "  red                   1   one two three four\n"
            "  a-long-name-of-a-vrf  2   -\n");
  EXPECT_EQ(written(described, 46), written(described, 0));
}

TEST(TextTable, NarrowsTheWidestColumnsToTheColumnsOfTheStream) {
  EXPECT_EQ(written(described, 45),
            "  VRF                  ID  DESCRIPTION\n"
            "  red                  1   one two three four\n"
            "  a-long-name-of-a-vr  2   -\n"
            "  f\n");
}

TEST(TextTable, ContinuesACellAtABlank) {
  EXPECT_EQ(written(described, 34),
            "  VRF            ID  DESCRIPTION\n"
            "  red            1   one two three\n"
            "                     four\n"
            "  a-long-name-o  2   -\n"
            "  f-a-vrf\n");
}

TEST(TextTable, NarrowsNoColumnBelowItsHeadingOrEightColumns) {
  EXPECT_EQ(written(described, 1),
            "  VRF       ID  DESCRIPTION\n"
            "  red       1   one two\n"
            "                three four\n"
            "  a-long-n  2   -\n"
            "  ame-of-a\n"
            "  -vrf\n");
}

TEST(TextTable, AlignsWideAndCombiningCharacters) {
  EXPECT_EQ(written({{"VRF", "ID"}, {"東京", "1"}, {"gru\u0308n", "2"}, {"red", "3"}}, 0),
            "  VRF   ID\n"
            "  東京  1\n"
            "  gru\u0308n  2\n"
            "  red   3\n");
}

TEST(TextTable, CutsNoWideCharacter) {
  EXPECT_EQ(written({{"VRF", "ID"}, {"東京都千代田区", "1"}}, 15),
            "  VRF        ID\n"
            "  東京都千   1\n"
            "  代田区\n");
}

}  // namespace
}  // namespace ZelAgent
