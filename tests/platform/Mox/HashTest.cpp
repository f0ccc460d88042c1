#include "Mox/Hash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>

#include "Velo/ByteHash.h"

namespace Mox {
namespace {

unsigned hashOf(std::uint32_t seed, std::uint32_t stream, std::initializer_list<unsigned> words) {
  Hash hash(seed, stream);
  for (const unsigned word : words)
    hash.hashMix(word);
  return hash.result();
}

TEST(Hash, IsTheSameForTheSameWords) {
  EXPECT_EQ(hashOf(1, 0, {1, 2, 3}), hashOf(1, 0, {1, 2, 3}));
}

TEST(Hash, DependsOnSeedAndStream) {
  EXPECT_NE(hashOf(1, 0, {1}), hashOf(2, 0, {1}));
  EXPECT_NE(hashOf(1, 0, {1}), hashOf(1, 1, {1}));
  EXPECT_NE(hashOf(1, 0, {1}), hashOf(0, 1, {1}));
}

TEST(Hash, DependsOnTheOrderAndNumberOfWords) {
  EXPECT_NE(hashOf(1, 0, {1, 2}), hashOf(1, 0, {2, 1}));
  EXPECT_NE(hashOf(1, 0, {0}), hashOf(1, 0, {}));
  EXPECT_NE(hashOf(1, 0, {0, 0}), hashOf(1, 0, {0}));
}

TEST(Hash, DependsOnEveryBitOfEveryWord) {
  for (unsigned bit = 0; bit < 32; ++bit) {
    const unsigned word = 1U << bit;
    EXPECT_NE(hashOf(1, 0, {word, 7, 7}), hashOf(1, 0, {0, 7, 7})) << bit;
    EXPECT_NE(hashOf(1, 0, {7, word, 7}), hashOf(1, 0, {7, 0, 7})) << bit;
    EXPECT_NE(hashOf(1, 0, {7, 7, word}), hashOf(1, 0, {7, 7, 0})) << bit;
  }
}

TEST(Hash, SpreadsSmallNumbers) {
  std::set<unsigned> results;
  for (unsigned word = 0; word < 10000; ++word)
    results.insert(hashOf(1, 0, {word}));
  EXPECT_GT(results.size(), 9995u);
}

TEST(Hash, ReadingTheResultDoesNotDisturbIt) {
  Hash hash(1, 0);
  hash.hashMix(1);
  EXPECT_EQ(hash.result(), hash.result());
  hash.hashMix(2);
  EXPECT_EQ(hash.result(), hashOf(1, 0, {1, 2}));
}

TEST(HashSingleAttr, IsTheByteHash) {
  EXPECT_EQ(hashSingleAttr(0, "red"), Velo::byteHash(0, "red"));
  EXPECT_EQ(hashSingleAttr(9, ""), Velo::byteHash(9, ""));
}

TEST(HashHelper, SeedIsTheSameThroughoutAProcess) {
  const unsigned seed = HashHelper::hashSeed32();
  EXPECT_EQ(HashHelper::hashSeed32(), seed);
  unsigned ofAnotherThread = ~seed;
  std::thread([&] { ofAnotherThread = HashHelper::hashSeed32(); }).join();
  EXPECT_EQ(ofAnotherThread, seed);
}

}  // namespace
}  // namespace Mox
