#include "agent/config/IpPrefix.h"

#include <gtest/gtest.h>

namespace ZelAgent {
namespace {

std::string roundTrip(const std::string& text) {
  const auto prefix = parseIpPrefix(text);
  return prefix ? toText(*prefix) : "nothing";
}

TEST(IpPrefix, ReadsBothFamilies) {
  EXPECT_EQ(roundTrip("192.0.2.0/24"), "192.0.2.0/24");
  EXPECT_EQ(roundTrip("0.0.0.0/0"), "0.0.0.0/0");
  EXPECT_EQ(roundTrip("192.0.2.255/32"), "192.0.2.255/32");
  EXPECT_EQ(roundTrip("2001:DB8::/32"), "2001:db8::/32");
  EXPECT_EQ(roundTrip("::/0"), "::/0");
  EXPECT_EQ(roundTrip("2001:db8::1/128"), "2001:db8::1/128");
}

TEST(IpPrefix, ClearsBitsAfterTheLength) {
  EXPECT_EQ(roundTrip("10.255.255.255/9"), "10.128.0.0/9");
  EXPECT_EQ(roundTrip("2001:db8:ffff::1/33"), "2001:db8:8000::/33");
  EXPECT_EQ(parseIpPrefix("10.1.2.3/8"), parseIpPrefix("10.0.0.0/8"));
}

TEST(IpPrefix, TakesNothingElse) {
  for (const char* const text :
       {"", "/", "10.0.0.0", "10.0.0.0/", "10.0.0.0/33", "10.0.0.0/-1", "10.0.0.0/08", "10.0.0/8",
        "10.0.0.0/8 ", " 10.0.0.0/8", "10.0.0.0/+8", "2001:db8::/129", "2001:db8::%1/64",
        "10.0.0.0/99999999999", "10.0.0.256/8", "/8"}) {
    EXPECT_EQ(roundTrip(text), "nothing") << text;
  }
}

TEST(IpAddress, TakesNothingAfterTheAddress) {
  EXPECT_TRUE(parseIpAddress("192.0.2.1"));
  EXPECT_TRUE(parseIpAddress("::ffff:192.0.2.1"));
  EXPECT_FALSE(parseIpAddress(std::string("192.0.2.1\0x", 11)));
  EXPECT_FALSE(parseIpAddress("192.0.2.1/32"));
  EXPECT_FALSE(parseIpAddress("DROP"));
}

TEST(IpAddress, OfDifferentFamiliesAreDifferent) {
  EXPECT_NE(parseIpAddress("0.0.0.0"), parseIpAddress("::"));
}

}  // namespace
}  // namespace ZelAgent
