#include "agent/model/forwarding/VrfIds.h"

#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

TEST(VrfIds, HandsOutTheLowestFreeIdFromOne) {
  VrfIds ids;
  EXPECT_EQ(ids.idIs("a"), 1U);
  EXPECT_EQ(ids.idIs("b"), 2U);
  EXPECT_EQ(ids.idIs("c"), 3U);
  ids.idDel("b");
  ids.idDel("a");
  EXPECT_EQ(ids.idIs("d"), 1U);
  EXPECT_EQ(ids.idIs("e"), 2U);
  EXPECT_EQ(ids.idIs("f"), 4U);
}

TEST(VrfIds, KeepsTheIdOfAVrf) {
  VrfIds ids;
  (void)ids.idIs("a");
  (void)ids.idIs("b");
  ids.idDel("a");
  EXPECT_EQ(ids.idIs("b"), 2U);
}

TEST(VrfIds, GivingBackTwiceFreesOnce) {
  VrfIds ids;
  (void)ids.idIs("a");
  ids.idDel("a");
  ids.idDel("a");
  ids.idDel("never");
  EXPECT_EQ(ids.idIs("b"), 1U);
  EXPECT_EQ(ids.idIs("c"), 2U);
}

}  // namespace
}  // namespace ZelAgent
