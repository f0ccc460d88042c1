#include "Ip/Prefix.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace Ip {
namespace {

Address v4(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
  Address address;
  address.bytes = {a, b, c, d};
  return address;
}

Address v6(std::initializer_list<std::uint8_t> first, std::uint8_t rest = 0) {
  Address address{Family::v6, {}};
  address.bytes.fill(rest);
  std::copy(first.begin(), first.end(), address.bytes.begin());
  return address;
}

TEST(IpAddress, HasAsManyBitsAsItsFamily) {
  EXPECT_EQ(addressBits(Family::v4), 32);
  EXPECT_EQ(addressBits(Family::v6), 128);
}

TEST(IpAddress, OfAnotherFamilyIsAnother) {
  EXPECT_NE((Address{Family::v4, {}}), (Address{Family::v6, {}}));
}

TEST(FirstBits, AreKeptAndTheOthersCleared) {
  const Address address = v4(0xff, 0xff, 0xff, 0xff);
  EXPECT_EQ(firstBits(address, 0), v4(0, 0, 0, 0));
  EXPECT_EQ(firstBits(address, 1), v4(0x80, 0, 0, 0));
  EXPECT_EQ(firstBits(address, 7), v4(0xfe, 0, 0, 0));
  EXPECT_EQ(firstBits(address, 8), v4(0xff, 0, 0, 0));
  EXPECT_EQ(firstBits(address, 9), v4(0xff, 0x80, 0, 0));
  EXPECT_EQ(firstBits(address, 31), v4(0xff, 0xff, 0xff, 0xfe));
  EXPECT_EQ(firstBits(address, 32), address);
}

TEST(FirstBits, OfALongAddressReachItsLastBit) {
  const Address address = v6({}, 0xff);
  EXPECT_EQ(firstBits(address, 128), address);
  Address expected = address;
  expected.bytes[15] = 0xfe;
  EXPECT_EQ(firstBits(address, 127), expected);
  EXPECT_EQ(firstBits(address, 0), v6({}));
  EXPECT_EQ(firstBits(address, 33), v6({0xff, 0xff, 0xff, 0xff, 0x80}));
}

TEST(FirstBits, ClearWhateverBitWasSetAfterThem) {
  for (unsigned length = 0; length <= 128; ++length) {
    const Address cleared = firstBits(v6({}, 0xff), length);
    for (unsigned bit = 0; bit < 128; ++bit) {
      const bool isSet = (cleared.bytes[bit / 8] & 0x80U >> bit % 8) != 0;
      EXPECT_EQ(isSet, bit < length) << "bit " << bit << " of " << length;
    }
  }
}

TEST(FirstBits, KeepTheFamily) {
  EXPECT_EQ(firstBits(v6({1}), 0).family, Family::v6);
  EXPECT_EQ(firstBits(v4(1, 0, 0, 0), 0).family, Family::v4);
}

TEST(IpPrefix, ContainsTheAddressesThatBeginWithItsBits) {
  const Prefix prefix{v4(10, 16, 0, 0), 12};
  EXPECT_TRUE(prefix.contains(v4(10, 16, 0, 0)));
  EXPECT_TRUE(prefix.contains(v4(10, 31, 255, 255)));
  EXPECT_FALSE(prefix.contains(v4(10, 32, 0, 0)));
  EXPECT_FALSE(prefix.contains(v4(10, 15, 255, 255)));
  EXPECT_FALSE(prefix.contains(v4(11, 16, 0, 0)));
}

TEST(IpPrefix, OfFullLengthContainsOneAddress) {
  const Prefix prefix{v4(10, 0, 0, 1), 32};
  EXPECT_TRUE(prefix.contains(v4(10, 0, 0, 1)));
  EXPECT_FALSE(prefix.contains(v4(10, 0, 0, 0)));
  const Prefix prefix6{v6({0x20, 0x01}, 1), 128};
  EXPECT_TRUE(prefix6.contains(v6({0x20, 0x01}, 1)));
  EXPECT_FALSE(prefix6.contains(firstBits(v6({0x20, 0x01}, 1), 127)));
}

TEST(IpPrefix, OfNoLengthContainsEveryAddressOfItsFamily) {
  const Prefix any4;
  EXPECT_TRUE(any4.contains(v4(255, 255, 255, 255)));
  EXPECT_FALSE(any4.contains(v6({})));
  const Prefix any6{Address{Family::v6, {}}, 0};
  EXPECT_TRUE(any6.contains(v6({}, 0xff)));
  EXPECT_FALSE(any6.contains(v4(0, 0, 0, 0)));
}

TEST(IpPrefix, IsEqualByAddressAndLength) {
  EXPECT_EQ((Prefix{v4(10, 0, 0, 0), 8}), (Prefix{v4(10, 0, 0, 0), 8}));
  EXPECT_NE((Prefix{v4(10, 0, 0, 0), 8}), (Prefix{v4(10, 0, 0, 0), 9}));
  EXPECT_NE((Prefix{v4(10, 0, 0, 0), 8}), (Prefix{v4(11, 0, 0, 0), 8}));
}

}  // namespace
}  // namespace Ip
