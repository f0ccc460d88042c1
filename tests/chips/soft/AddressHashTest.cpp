// Nobody can choose addresses whose hashes collide.
#include "chips/soft/routes/AddressHash.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <set>
#include <vector>

namespace Chips {
namespace {

Ip::Address addressOf(std::uint64_t high, std::uint64_t low) {
  Ip::Address address{Ip::Family::v6, {}};
  for (unsigned at = 0; at < 8; ++at) {
    address.bytes[at] = static_cast<std::uint8_t>(high >> (56 - 8 * at));
    address.bytes[8 + at] = static_cast<std::uint8_t>(low >> (56 - 8 * at));
  }
  return address;
}

TEST(AddressHash, AddressesThatAreChosenToCollideWithoutTheSeedDoNot) {
  // These collide if both halves are combined first, and then scrambled.
  std::set<std::size_t> hashes;
  for (std::uint64_t low = 0; low < 1000; ++low)
    hashes.insert(AddressHash()(addressOf(std::rotl(low * 0x9e3779b97f4a7c15, 32), low)));
  EXPECT_GT(hashes.size(), 990U);
}

TEST(AddressHash, AddressesThatCollideByOneSeedDoNotByAnother) {
  constexpr std::size_t buckets = 1024;
  std::vector<Ip::Address> together;
  for (std::uint64_t low = 0; low < 50 * buckets; ++low) {
    const Ip::Address address = addressOf(0x20010db800000000, low);
    if (AddressHash{1}(address) % buckets == 0) together.push_back(address);
  }
  ASSERT_GT(together.size(), 20U);
  std::set<std::size_t> used;
  for (const Ip::Address& address : together)
    used.insert(AddressHash{2}(address) % buckets);
  EXPECT_GT(used.size(), together.size() / 2);
}

TEST(AddressHash, IsThatOfTheSeedOfTheProcess) {
  const Ip::Address address = addressOf(1, 2);
  EXPECT_EQ(AddressHash()(address), AddressHash{Mox::HashHelper::hashSeed32()}(address));
}

TEST(AddressHash, DependsOnEveryByteOfTheAddress) {
  std::set<std::size_t> hashes{AddressHash()(addressOf(0, 0))};
  for (unsigned bit = 0; bit < 64; ++bit) {
    hashes.insert(AddressHash()(addressOf(std::uint64_t{1} << bit, 0)));
    hashes.insert(AddressHash()(addressOf(0, std::uint64_t{1} << bit)));
  }
  Ip::Address v4;
  hashes.insert(AddressHash()(v4));
  for (unsigned byte = 0; byte < 4; ++byte) {
    v4.bytes[byte] = 1;
    hashes.insert(AddressHash()(v4));
  }
  EXPECT_EQ(hashes.size(), 1U + 128U + 5U);
}

}  // namespace
}  // namespace Chips
