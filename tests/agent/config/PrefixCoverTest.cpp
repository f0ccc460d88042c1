// Which prefixes cover all addresses of others.
#include "agent/config/PrefixCover.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace ZelAgent {
namespace {

std::vector<IpPrefix> prefixesOf(std::initializer_list<const char*> texts) {
  std::vector<IpPrefix> prefixes;
  for (const char* const text : texts)
    prefixes.push_back(parseIpPrefix(text).value());
  return prefixes;
}

TEST(PrefixCover, APrefixCoversItselfAndLongerOnes) {
  EXPECT_TRUE(cover(prefixesOf({"10.0.0.0/8"}), prefixesOf({"10.0.0.0/8", "10.9.0.0/16"})));
  EXPECT_FALSE(cover(prefixesOf({"10.9.0.0/16"}), prefixesOf({"10.0.0.0/8"})));
  EXPECT_FALSE(cover(prefixesOf({"10.0.0.0/8"}), prefixesOf({"10.9.0.0/16", "11.0.0.0/16"})));
}

TEST(PrefixCover, PartsCoverAWholeIfNoneIsLacking) {
  const auto whole = prefixesOf({"0.0.0.0/0"});
  EXPECT_TRUE(cover(prefixesOf({"192.0.0.0/2", "0.0.0.0/1", "128.0.0.0/2"}), whole));
  EXPECT_FALSE(cover(prefixesOf({"192.0.0.0/2", "0.0.0.0/1", "128.0.0.0/3"}), whole));
  EXPECT_FALSE(cover(prefixesOf({"64.0.0.0/2", "128.0.0.0/2"}), whole));
}

TEST(PrefixCover, PartsThatRepeatOthersCoverNoMore) {
  const auto whole = prefixesOf({"10.0.0.0/30"});
  EXPECT_FALSE(cover(prefixesOf({"10.0.0.0/31", "10.0.0.0/32", "10.0.0.1/32"}), whole));
  EXPECT_TRUE(
      cover(prefixesOf({"10.0.0.0/31", "10.0.0.1/32", "10.0.0.2/32", "10.0.0.3/32"}), whole));
}

TEST(PrefixCover, EachPrefixIsLookedForBesideOthersThatAreCovered) {
  const auto covering = prefixesOf({"10.0.0.0/24", "10.0.2.0/24", "10.0.4.0/24"});
  EXPECT_TRUE(cover(covering, prefixesOf({"10.0.4.128/25", "10.0.0.0/25", "10.0.2.0/24"})));
  EXPECT_FALSE(cover(covering, prefixesOf({"10.0.0.0/25", "10.0.3.0/24"})));
  EXPECT_FALSE(cover(covering, prefixesOf({"9.0.0.0/25"})));
}

TEST(PrefixCover, HoldsForIpv6) {
  EXPECT_TRUE(
      cover(prefixesOf({"2001:db8:8000::/33", "2001:db8::/33"}), prefixesOf({"2001:db8::/32"})));
  EXPECT_FALSE(cover(prefixesOf({"2001:db8::/33"}), prefixesOf({"2001:db8::/32"})));
}

TEST(PrefixCover, NothingCoversNoPrefix) {
  EXPECT_FALSE(cover({}, prefixesOf({"10.0.0.0/32"})));
}

}  // namespace
}  // namespace ZelAgent
