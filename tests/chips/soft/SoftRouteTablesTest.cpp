#include "chips/soft/SoftRouteTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "testing/RandomSeed.h"
#include "tests/chips/packet/TestPacket.h"

namespace Chips {
namespace {

using ZelVrfSelectionPolicy::Testing::RandomSeed;
using Lengths = std::vector<unsigned char>;

constexpr std::uint32_t red = 1;
constexpr std::uint32_t blue = 2;

Route by(const std::string& intf) {
  return {Route::Kind::egress, intf};
}

class RouteTablesTest : public ::testing::Test {
 protected:
  void routeIs(const char* text, const std::string& intf) {
    tables_.routeIs(red, prefix(text), by(intf));
  }
  // The interface by which the address leaves, marked when it is by exact match.
  [[nodiscard]] std::string egress(const char* text, const Lengths& lengths = {},
                                   std::uint32_t vrf = red) const {
    const auto hit = tables_.lookUp(vrf, address(text), lengths);
    if (!hit) return "none";
    EXPECT_TRUE(hit->prefix.contains(address(text)));
    return hit->route->intf + (hit->exactMatch ? "!" : "");
  }

  SoftRouteTables tables_;
};

TEST_F(RouteTablesTest, KnowsNothingAtFirst) {
  EXPECT_EQ(egress("10.0.0.1"), "none");
  EXPECT_EQ(egress("10.0.0.1", {}, 0), "none");
  EXPECT_EQ(tables_.routes(), 0U);
}

TEST_F(RouteTablesTest, TheLongestPrefixDecides) {
  routeIs("10.0.0.0/8", "eight");
  routeIs("10.1.0.0/16", "sixteen");
  routeIs("10.1.2.3/32", "host");
  EXPECT_EQ(egress("10.1.2.3"), "host");
  EXPECT_EQ(egress("10.1.2.4"), "sixteen");
  EXPECT_EQ(egress("10.2.0.0"), "eight");
  EXPECT_EQ(egress("11.0.0.0"), "none");
  routeIs("0.0.0.0/0", "default");
  EXPECT_EQ(egress("11.0.0.0"), "default");
  const auto hit = tables_.lookUp(red, address("10.1.9.9"), {});
  ASSERT_TRUE(hit.has_value());
  EXPECT_EQ(hit->prefix, prefix("10.1.0.0/16"));
}

TEST_F(RouteTablesTest, FamiliesAndVrfsAreApart) {
  routeIs("0.0.0.0/0", "four");
  EXPECT_EQ(egress("::1"), "none");
  routeIs("::/0", "six");
  EXPECT_EQ(egress("::1"), "six");
  EXPECT_EQ(egress("0.0.0.1"), "four");
  EXPECT_EQ(egress("::1", {}, blue), "none");
  tables_.routeIs(blue, prefix("::/0"), by("blue"));
  EXPECT_EQ(egress("::1", {}, blue), "blue");
  EXPECT_EQ(tables_.routes(), 3U);
}

TEST_F(RouteTablesTest, FindsHostsOfBothFamilies) {
  routeIs("2001:db8::1/128", "one");
  routeIs("2001:db8::2/127", "pair");
  routeIs("255.255.255.255/32", "last");
  EXPECT_EQ(egress("2001:db8::1"), "one");
  EXPECT_EQ(egress("2001:db8::2"), "pair");
  EXPECT_EQ(egress("2001:db8::3"), "pair");
  EXPECT_EQ(egress("2001:db8::4"), "none");
  EXPECT_EQ(egress("255.255.255.255"), "last");
  EXPECT_EQ(egress("255.255.255.254"), "none");
}

TEST_F(RouteTablesTest, ARouteIsReplaced) {
  routeIs("10.0.0.0/8", "old");
  routeIs("10.0.0.0/8", "new");
  EXPECT_EQ(egress("10.0.0.1"), "new");
  EXPECT_EQ(tables_.routes(), 1U);
}

TEST_F(RouteTablesTest, ADeletedRouteUncoversTheShorterOne) {
  routeIs("10.0.0.0/8", "eight");
  routeIs("10.1.0.0/16", "sixteen");
  EXPECT_TRUE(tables_.routeDel(red, prefix("10.1.0.0/16")));
  EXPECT_EQ(egress("10.1.0.1"), "eight");
  EXPECT_FALSE(tables_.routeDel(red, prefix("10.1.0.0/16")));
  EXPECT_FALSE(tables_.routeDel(blue, prefix("10.0.0.0/8")));
  EXPECT_FALSE(tables_.routeDel(red, prefix("::/8")));
  EXPECT_EQ(tables_.routes(), 1U);
}

TEST_F(RouteTablesTest, AVrfIsDeletedWithItsRoutesAndLengths) {
  routeIs("10.0.0.0/8", "eight");
  routeIs("::/8", "eight");
  tables_.routeIs(blue, prefix("10.0.0.0/8"), by("blue"));
  tables_.exactMatchLensIs(red, Ip::Family::v4, {8});
  tables_.vrfDel(red);
  tables_.vrfDel(7);
  EXPECT_EQ(tables_.routes(), 1U);
  EXPECT_EQ(egress("10.0.0.1", {8}), "none");
  EXPECT_EQ(egress("10.0.0.1", {}, blue), "blue");
  routeIs("10.0.0.0/8", "again");
  EXPECT_EQ(egress("10.0.0.1"), "again");
}

TEST_F(RouteTablesTest, RoutesInExactMatchAreFoundByThoseWhoLookThere) {
  routeIs("10.0.0.0/8", "eight");
  routeIs("10.1.2.0/24", "twentyFour");
  tables_.exactMatchLensIs(red, Ip::Family::v4, {24});
  EXPECT_EQ(egress("10.1.2.3", {24}), "twentyFour!");
  EXPECT_EQ(egress("10.1.2.3", {32, 24, 16}), "twentyFour!");
  EXPECT_EQ(egress("10.1.2.3", {}), "eight");
  EXPECT_EQ(egress("10.1.2.3", {16, 32}), "eight");
}

TEST_F(RouteTablesTest, TheLongerOfBothHitsDecides) {
  tables_.exactMatchLensIs(red, Ip::Family::v4, {16});
  routeIs("10.1.0.0/16", "exact");
  routeIs("10.1.2.0/24", "longer");
  routeIs("10.0.0.0/8", "shorter");
  EXPECT_EQ(egress("10.1.2.3", {16}), "longer");
  EXPECT_EQ(egress("10.1.3.3", {16}), "exact!");
  EXPECT_EQ(egress("10.2.3.3", {16}), "shorter");
}

TEST_F(RouteTablesTest, RoutesThatLeaveExactMatchAreFoundByAll) {
  tables_.exactMatchLensIs(red, Ip::Family::v4, {24});
  routeIs("10.1.2.0/24", "twentyFour");
  EXPECT_EQ(egress("10.1.2.3", {}), "none");
  tables_.exactMatchLensIs(red, Ip::Family::v4, {32});
  EXPECT_EQ(egress("10.1.2.3", {}), "twentyFour");
  EXPECT_EQ(egress("10.1.2.3", {24}), "twentyFour");
}

TEST_F(RouteTablesTest, RoutesInExactMatchAreReplacedAndDeleted) {
  tables_.exactMatchLensIs(red, Ip::Family::v6, {64});
  routeIs("2001:db8::/64", "old");
  routeIs("2001:db8::/64", "new");
  EXPECT_EQ(egress("2001:db8::1", {64}), "new!");
  EXPECT_TRUE(tables_.routeDel(red, prefix("2001:db8::/64")));
  EXPECT_EQ(egress("2001:db8::1", {64}), "none");
}

TEST_F(RouteTablesTest, LengthsThatTheFamilyDoesNotHaveAreLeftOut) {
  routeIs("10.0.0.1/32", "host");
  tables_.exactMatchLensIs(red, Ip::Family::v4, {33, 128, 255});
  EXPECT_EQ(egress("10.0.0.1", {33, 128, 255}), "host");
}

TEST_F(RouteTablesTest, KindsAreKept) {
  tables_.routeIs(red, prefix("10.0.0.0/8"), {Route::Kind::decap, {}});
  EXPECT_EQ(*tables_.lookUp(red, address("10.0.0.1"), {})->route, (Route{Route::Kind::decap, {}}));
}

// Keeps the routes of one VRF and family beside the tables, and finds by looking at each.
class BruteForce final {
 public:
  BruteForce(Ip::Family family, std::uint32_t seed) : family_(family), random_(seed) {}

  void change() {
    const Ip::Prefix prefix = anyPrefix();
    switch (below(8)) {
      case 0:
        exact_ = someLengths();
        tables_.exactMatchLensIs(red, family_, exact_);
        break;
      case 1:
      case 2:
      case 3:
        ASSERT_EQ(tables_.routeDel(red, prefix), routes_.erase(prefix) == 1);
        break;
      default:
        routes_[prefix] = by(std::to_string(below(1000)));
        tables_.routeIs(red, prefix, routes_[prefix]);
    }
    ASSERT_EQ(tables_.routes(), routes_.size());
  }

  void compare() {
    const Ip::Address address = anyAddress();
    const Lengths lengths = below(2) == 0 ? exact_ : someLengths();
    const auto hit = tables_.lookUp(red, address, lengths);
    const auto wanted = longest(address, lengths);
    ASSERT_EQ(hit.has_value(), wanted != routes_.end());
    if (!hit) return;
    EXPECT_EQ(hit->prefix, wanted->first);
    EXPECT_EQ(*hit->route, wanted->second);
    EXPECT_EQ(hit->exactMatch, has(exact_, wanted->first.length));
  }

 private:
  using Routes = std::map<Ip::Prefix, Route>;

  unsigned below(unsigned end) {
    return std::uniform_int_distribution<unsigned>(0, end - 1)(random_);
  }
  static bool has(const Lengths& lengths, unsigned char length) {
    return std::find(lengths.begin(), lengths.end(), length) != lengths.end();
  }
  // Few bits are set, so that addresses share much and prefixes cover one another.
  Ip::Address anyAddress() {
    Ip::Address address;
    address.family = family_;
    for (unsigned i = below(4); i > 0; --i) {
      const unsigned bit = below(Ip::addressBits(family_));
      address.bytes[bit / 8] = static_cast<std::uint8_t>(address.bytes[bit / 8] | 1U << bit % 8);
    }
    return address;
  }
  Ip::Prefix anyPrefix() {
    const unsigned length = below(Ip::addressBits(family_) + 1);
    return {Ip::firstBits(anyAddress(), length), static_cast<std::uint8_t>(length)};
  }
  Lengths someLengths() {
    Lengths lengths;
    for (unsigned length = 0; length <= 128; ++length) {
      if (below(4) == 0) lengths.push_back(static_cast<unsigned char>(length));
    }
    return lengths;
  }
  Routes::const_iterator longest(const Ip::Address& address, const Lengths& lengths) const {
    auto best = routes_.end();
    for (auto route = routes_.begin(); route != routes_.end(); ++route) {
      const unsigned char length = route->first.length;
      if (!route->first.contains(address) || (has(exact_, length) && !has(lengths, length)))
        continue;
      if (best == routes_.end() || length > best->first.length) best = route;
    }
    return best;
  }

  Ip::Family family_;
  std::mt19937 random_;
  SoftRouteTables tables_;
  Routes routes_;
  Lengths exact_;
};

class RoutesLikeBruteForce : public ::testing::TestWithParam<Ip::Family> {};

TEST_P(RoutesLikeBruteForce, AfterEachOfManyChanges) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  BruteForce world(GetParam(), seed.value());
  for (int change = 0; change < 2000; ++change) {
    world.change();
    for (int packet = 0; packet < 5; ++packet)
      world.compare();
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Families, RoutesLikeBruteForce,
                         ::testing::Values(Ip::Family::v4, Ip::Family::v6));

}  // namespace
}  // namespace Chips
