#include "chips/tables/Ipv4Trie.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <set>
#include <utility>

#include "testing/RandomRounds.h"
#include "testing/RandomSeed.h"

namespace ChipTables {
namespace {

using ZelVrfSelectionPolicy::Testing::randomRounds;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

constexpr std::uint32_t ip(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return a << 24 | b << 16 | c << 8 | d;
}

const ZelTrieNode* nodeAt(const void* nodes, std::uint32_t node) {
  return static_cast<const ZelTrieNode*>(nodes) + node;
}

class TrieWorld {
 public:
  explicit TrieWorld(std::size_t nodes, Stores stores = Stores())
      : memory(nodes), trie(memory, clock, std::move(stores)), root(trie.rootIs().value()) {}

  // The next hop and the length of the longest route, (0, 0) for none.
  [[nodiscard]] std::pair<std::uint32_t, std::uint32_t> find(std::uint32_t address,
                                                             std::uint32_t from) const {
    const std::uint64_t leaf = zelTrieFind({nodeAt, memory.data()}, from, address);
    return {zelTrieTarget(leaf), zelTrieLength(leaf)};
  }
  [[nodiscard]] std::uint32_t hop(std::uint32_t address) const { return find(address, root).first; }

  GraceClock clock{[] {}};
  std::vector<ZelTrieNode> memory;
  Ipv4Trie trie;
  std::uint32_t root;
};

TEST(Ipv4Trie, HasNothingAtFirst) {
  const TrieWorld world(2);
  EXPECT_EQ(world.hop(ip(10, 0, 0, 1)), 0U);
  EXPECT_EQ(world.find(ip(10, 0, 0, 1), 0).first, 0U) << "number 0 is no trie";
  EXPECT_TRUE(world.trie.routes(world.root).empty());
}

TEST(Ipv4Trie, TheLongestRouteDecides) {
  TrieWorld world(10);
  EXPECT_EQ(world.trie.routeIs(world.root, {0, 0, 1}), 0U);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 1, 2, 3), 32, 5}), 0U);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 0, 0, 0), 7, 2}), 0U);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 0, 0, 0), 8, 3}), 0U);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 1, 0, 0), 15, 4}), 0U);
  using Found = std::pair<std::uint32_t, std::uint32_t>;
  EXPECT_EQ(world.find(ip(9, 255, 255, 255), world.root), (Found{1, 0}));
  EXPECT_EQ(world.find(ip(11, 0, 0, 0), world.root), (Found{2, 7}));
  EXPECT_EQ(world.find(ip(10, 2, 0, 0), world.root), (Found{3, 8}));
  EXPECT_EQ(world.find(ip(10, 1, 2, 4), world.root), (Found{4, 15}));
  EXPECT_EQ(world.find(ip(10, 1, 2, 3), world.root), (Found{5, 32}));
}

TEST(Ipv4Trie, ARouteReplacesThatOfItsPrefix) {
  TrieWorld world(10);
  for (const std::uint32_t length : {0U, 3U, 8U, 9U, 24U, 32U}) {
    const std::uint32_t address = length == 0 ? 0 : ip(64, 0, 0, 0);
    EXPECT_EQ(world.trie.routeIs(world.root, {address, length, 7}), 0U) << length;
    EXPECT_EQ(world.trie.routeIs(world.root, {address, length, 8}), 7U) << length;
    EXPECT_EQ(world.hop(ip(64, 0, 0, 0)), 8U) << length;
  }
}

TEST(Ipv4Trie, ADeletedRouteUncoversTheNextLongest) {
  TrieWorld world(10);
  const std::array<std::uint32_t, 6> lengths{0, 4, 8, 13, 24, 32};
  for (const std::uint32_t length : lengths) {
    const std::uint32_t address = length == 0 ? 0 : ip(16, 8, 0, 0);
    const std::uint32_t cut = length < 13 && length > 0 ? ip(16, 0, 0, 0) : address;
    EXPECT_EQ(world.trie.routeIs(world.root, {cut, length, length + 1}), 0U);
  }
  for (std::size_t left = lengths.size(); left-- > 0;) {
    EXPECT_EQ(world.hop(ip(16, 8, 0, 0)), lengths[left] + 1);
    const std::uint32_t length = lengths[left];
    const std::uint32_t address = length == 0 ? 0 : length < 13 ? ip(16, 0, 0, 0) : ip(16, 8, 0, 0);
    EXPECT_EQ(world.trie.routeDel(world.root, address, length), length + 1);
    EXPECT_EQ(world.trie.routeDel(world.root, address, length), 0U) << "it is already deleted";
  }
  EXPECT_EQ(world.hop(ip(16, 8, 0, 0)), 0U);
}

TEST(Ipv4Trie, AFullMemoryRefusesAndChangesNothing) {
  TrieWorld world(4);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 0, 0, 0), 16, 1}), 0U);
  EXPECT_EQ(world.trie.available(), 1U);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(20, 0, 0, 1), 32, 2}), std::nullopt);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(20, 0, 0, 0), 24, 2}), std::nullopt);
  EXPECT_EQ(world.hop(ip(20, 0, 0, 1)), 0U);
  EXPECT_EQ(world.trie.available(), 1U);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(20, 0, 0, 0), 16, 2}), 0U);
  EXPECT_EQ(world.trie.rootIs(), std::nullopt);
}

TEST(Ipv4Trie, NodesReturnAfterAGracePeriod) {
  TrieWorld world(6);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 0, 0, 1), 32, 1}), 0U);
  EXPECT_EQ(world.trie.available(), 1U);
  EXPECT_EQ(world.trie.routeDel(world.root, ip(10, 0, 0, 1), 32), 1U);
  EXPECT_EQ(world.trie.available(), 1U) << "a packet may still read them";
  world.clock.waitNow();
  EXPECT_EQ(world.trie.available(), 4U);
}

TEST(Ipv4Trie, ADeletedTrieReturnsAllItsNodes) {
  TrieWorld world(8);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 0, 0, 1), 32, 1}), 0U);
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 9, 0, 0), 24, 1}), 0U);
  world.trie.rootDel(world.root);
  world.clock.waitNow();
  EXPECT_EQ(world.trie.available(), 7U);
  const std::uint32_t next = world.trie.rootIs().value();
  EXPECT_EQ(world.find(ip(10, 0, 0, 1), next).first, 0U);
}

TEST(Ipv4Trie, TriesDoNotShareRoutes) {
  TrieWorld world(10);
  const std::uint32_t other = world.trie.rootIs().value();
  EXPECT_EQ(world.trie.routeIs(world.root, {ip(10, 0, 0, 0), 9, 1}), 0U);
  EXPECT_EQ(world.find(ip(10, 0, 0, 0), other).first, 0U);
  EXPECT_EQ(world.trie.routeIs(other, {ip(10, 0, 0, 0), 9, 2}), 0U);
  EXPECT_EQ(world.find(ip(10, 0, 0, 0), world.root).first, 1U);
}

TEST(Ipv4Trie, AnotherWriterContinuesWithWhatIsInTheMemory) {
  TrieWorld world(20);
  // 10/8 is hidden by its two halves, and 10.1/16 by a node below.
  const std::vector<TrieRoute> routes{{0, 0, 1},
                                      {ip(10, 0, 0, 0), 8, 2},
                                      {ip(10, 0, 0, 0), 9, 3},
                                      {ip(10, 1, 0, 0), 16, 4},
                                      {ip(10, 1, 2, 0), 23, 5},
                                      {ip(10, 128, 0, 0), 9, 6}};
  for (const TrieRoute& route : routes)
    EXPECT_EQ(world.trie.routeIs(world.root, route), 0U);
  const std::uint32_t unclaimed = world.trie.rootIs().value();

  Ipv4Trie successor(world.memory, world.clock);
  const std::uint32_t roots[] = {world.root};
  successor.adopt(roots);
  EXPECT_EQ(successor.routes(world.root), routes);
  EXPECT_EQ(successor.available(), world.trie.available() + 1) << "and " << unclaimed << " is free";
  EXPECT_EQ(successor.routeDel(world.root, ip(10, 0, 0, 0), 9), 3U);
  EXPECT_EQ(world.hop(ip(10, 9, 9, 9)), 2U);
}

// Routes of few addresses, so that they cover and hide each other.
class RandomRoutes {
 public:
  explicit RandomRoutes(std::uint64_t seed) : random_(seed) {}

  [[nodiscard]] std::uint32_t address() {
    static constexpr std::array<std::uint32_t, 5> bytes{0, 1, 2, 128, 255};
    return ip(byte(bytes), byte(bytes), byte(bytes), byte(bytes));
  }
  [[nodiscard]] TrieRoute route() {
    const std::uint32_t length = below(33);
    const std::uint32_t kept = length == 0 ? 0 : address() >> (32 - length) << (32 - length);
    return {kept, length, below(1000) + 1};
  }
  [[nodiscard]] std::uint32_t below(std::uint32_t bound) {
    return static_cast<std::uint32_t>(random_() % bound);
  }

 private:
  [[nodiscard]] std::uint32_t byte(const std::array<std::uint32_t, 5>& bytes) {
    return bytes[below(5)];
  }

  std::mt19937_64 random_;
};

// The same routes, searched length by length.
class PlainRoutes {
 public:
  void routeIs(const TrieRoute& route) { routes_[{route.length, route.address}] = route.nextHop; }
  void routeDel(const TrieRoute& route) { routes_.erase({route.length, route.address}); }
  [[nodiscard]] std::pair<std::uint32_t, std::uint32_t> find(std::uint32_t address) const {
    for (std::uint32_t length = 33; length-- > 0;) {
      const std::uint32_t kept = length == 0 ? 0 : address >> (32 - length) << (32 - length);
      const auto found = routes_.find({length, kept});
      if (found != routes_.end()) return {found->second, length};
    }
    return {0, 0};
  }
  [[nodiscard]] std::vector<TrieRoute> routes() const {
    std::vector<TrieRoute> routes;
    for (const auto& [prefix, nextHop] : routes_)
      routes.push_back({prefix.second, prefix.first, nextHop});
    std::sort(routes.begin(), routes.end());
    return routes;
  }

 private:
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> routes_;
};

// At each store some addresses find the route before the change or the route after it, and another
// process that starts there finds the routes of before or after.
TEST(Ipv4Trie, EachStoreShowsPacketsTheOldRouteOrTheNew) {
  const RandomSeed seed;
  RandomRoutes random(seed.value());
  PlainRoutes before;
  PlainRoutes after;
  std::vector<std::uint32_t> addresses;
  const TrieWorld* world = nullptr;
  std::size_t stores = 0;
  const auto look = [&] {
    ++stores;
    for (const std::uint32_t address : addresses) {
      const auto found = world->find(address, world->root);
      if (found != before.find(address)) {
        ASSERT_EQ(found, after.find(address)) << address << '\n' << seed.replay();
      }
    }
  };
  TrieWorld changed(400, Stores(look));
  world = &changed;
  for (std::size_t round = 0; round < randomRounds(100); ++round) {
    const TrieRoute route = random.route();
    addresses = {route.address, route.address | (route.length == 32 ? 0 : ~0U >> route.length),
                 random.address(), random.address()};
    const bool isAdded = random.below(5) < 3;
    if (isAdded) {
      after.routeIs(route);
      ASSERT_TRUE(changed.trie.routeIs(changed.root, route).has_value());
    } else {
      after.routeDel(route);
      changed.trie.routeDel(changed.root, route.address, route.length);
    }
    before = after;
    look();
    if (HasFatalFailure()) return;
    changed.clock.waitNow();
  }
  EXPECT_GT(stores, 100U);
  EXPECT_EQ(changed.trie.routes(changed.root), after.routes());
}

TEST(Ipv4Trie, AWriterThatEndsAtAnyStoreLeavesRoutesThatASuccessorRepairs) {
  const RandomSeed seed;
  RandomRoutes random(seed.value());
  PlainRoutes before;
  PlainRoutes after;
  const TrieWorld* world = nullptr;
  const auto endHere = [&] {
    if (random.below(20) != 0) return;
    std::vector<ZelTrieNode> left = world->memory;
    GraceClock clock([] {});
    Ipv4Trie successor(left, clock);
    const std::uint32_t roots[] = {world->root};
    successor.adopt(roots);
    const std::vector<TrieRoute> routes = successor.routes(world->root);
    ASSERT_TRUE(routes == before.routes() || routes == after.routes()) << seed.replay();
    PlainRoutes reference;
    for (const TrieRoute& route : routes)
      reference.routeIs(route);
    for (int i = 0; i < 20; ++i) {
      const std::uint32_t address = random.address();
      const std::uint64_t leaf = zelTrieFind({nodeAt, left.data()}, world->root, address);
      ASSERT_EQ(zelTrieTarget(leaf), reference.find(address).first) << seed.replay();
    }
  };
  TrieWorld changed(200, Stores(endHere));
  world = &changed;
  for (std::size_t round = 0; round < randomRounds(50); ++round) {
    const TrieRoute route = random.route();
    if (random.below(5) < 3) {
      after.routeIs(route);
      ASSERT_TRUE(changed.trie.routeIs(changed.root, route).has_value());
    } else {
      after.routeDel(route);
      changed.trie.routeDel(changed.root, route.address, route.length);
    }
    if (HasFatalFailure()) return;
    before = after;
    changed.clock.waitNow();
  }
}

// The memory that a process without a leak needs: after all routes are deleted only the root is
// left.
TEST(Ipv4Trie, NoNodeIsLost) {
  const RandomSeed seed;
  RandomRoutes random(seed.value());
  TrieWorld world(600);
  std::vector<TrieRoute> routes;
  for (int i = 0; i < 200; ++i) {
    routes.push_back(random.route());
    ASSERT_TRUE(world.trie.routeIs(world.root, routes.back()).has_value());
  }
  for (const TrieRoute& route : routes)
    world.trie.routeDel(world.root, route.address, route.length);
  world.clock.waitNow();
  EXPECT_EQ(world.trie.available(), 598U) << seed.replay();
  EXPECT_TRUE(world.trie.routes(world.root).empty());
}

}  // namespace
}  // namespace ChipTables
