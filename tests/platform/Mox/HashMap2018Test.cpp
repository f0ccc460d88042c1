#include "Mox/HashMap2018.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "L3/VrfName.h"
#include "Velo/String.h"
#include "testing/RandomSeed.h"
#include "tests/platform/Allocations.h"

namespace Mox {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using ZelVrfSelectionPolicy::Testing::RandomSeed;

/// A key whose hash is good.
struct Number {
  unsigned number;
  [[nodiscard]] unsigned hash(unsigned seed) const noexcept {
    Hash running(seed, 0);
    running.hashMix(number);
    return running.result();
  }
  friend auto operator<=>(const Number&, const Number&) = default;
};

/// A key whose hash has three values, two of them at the upper end of every index.
struct Clashing {
  unsigned number;
  [[nodiscard]] unsigned hash(unsigned /*seed*/) const noexcept { return 0u - number % 3; }
  friend auto operator<=>(const Clashing&, const Clashing&) = default;
};

Number keyOf(unsigned number, const Number* /*kind*/) {
  return {number};
}
Clashing keyOf(unsigned number, const Clashing* /*kind*/) {
  return {number};
}
L3::VrfName keyOf(unsigned number, const L3::VrfName* /*kind*/) {
  return "vrf" + std::to_string(number);
}
Velo::String keyOf(unsigned number, const Velo::String* /*kind*/) {
  return "a name too long for a small buffer " + std::to_string(number);
}

using Map = HashMap2018<Number, std::string, 0x1234>;
using Set = HashSet2018<Number, 0x4321>;

template <class Collection>
std::vector<unsigned> keysOf(const Collection& collection) {
  std::vector<unsigned> keys;
  for (auto entry = collection.iterator(); entry; ++entry)
    keys.push_back(entry.key().number);
  return keys;
}

void fill(Map& map, unsigned entries) {
  for (unsigned number = 0; number < entries; ++number)
    map.insert({number}, std::to_string(number));
}

TEST(HashMap2018, IsEmptyAtFirst) {
  const Map map;
  EXPECT_EQ(map.count(), 0u);
  EXPECT_FALSE(map.has({1}));
  EXPECT_EQ(map.find({1}), nullptr);
  EXPECT_EQ(map.position({1}), Map::none);
  EXPECT_FALSE(map.iterator());
  EXPECT_FALSE(map.iterator({1}));
}

TEST(HashMap2018, InsertsAndFinds) {
  Map map;
  const auto [at, inserted] = map.insert({1}, "one");
  EXPECT_TRUE(inserted);
  EXPECT_EQ(map.count(), 1u);
  EXPECT_TRUE(map.has({1}));
  EXPECT_EQ(map.position({1}), at);
  EXPECT_EQ(map.key(at), Number{1});
  EXPECT_EQ(map.value(at), "one");
  ASSERT_NE(map.find({1}), nullptr);
  EXPECT_EQ(*map.find({1}), "one");
  EXPECT_FALSE(map.has({2}));
}

TEST(HashMap2018, DoesNotReplaceAPresentEntry) {
  Map map;
  const auto [at, inserted] = map.insert({1}, "one");
  const auto [again, insertedAgain] = map.insert({1}, "uno");
  EXPECT_TRUE(inserted);
  EXPECT_FALSE(insertedAgain);
  EXPECT_EQ(again, at);
  EXPECT_EQ(map.value(at), "one");
  EXPECT_EQ(map.count(), 1u);
}

TEST(HashMap2018, ValuesCanBeChangedInPlace) {
  Map map;
  const auto [at, inserted] = map.insert({1}, "one");
  ASSERT_TRUE(inserted);
  map.value(at) = "uno";
  EXPECT_EQ(*map.find({1}), "uno");
  *map.find({1}) = "eins";
  EXPECT_EQ(map.value(at), "eins");
}

TEST(HashMap2018, ErasesAndGivesTheEntry) {
  Map map;
  fill(map, 3);
  const auto erased = map.erase({1});
  ASSERT_TRUE(erased);
  EXPECT_EQ(erased->first, Number{1});
  EXPECT_EQ(erased->second, "1");
  EXPECT_FALSE(map.has({1}));
  EXPECT_EQ(map.count(), 2u);
  EXPECT_FALSE(map.erase({1}));
  EXPECT_FALSE(map.erase({7}));
  EXPECT_EQ(map.count(), 2u);
}

TEST(HashMap2018, ErasesByAReferenceToTheKeyInTheEntry) {
  HashMap2018<Velo::String, int, 1> map;
  map.insert("a key that is longer than any small buffer", 5);
  const auto erased = map.erase(map.iterator().key());
  ASSERT_TRUE(erased);
  EXPECT_EQ(erased->first.bytes(), "a key that is longer than any small buffer");
  EXPECT_EQ(erased->second, 5);
}

TEST(HashMap2018, ClearsAndCanBeFilledAgain) {
  Map map;
  fill(map, 100);
  map.clear();
  EXPECT_EQ(map.count(), 0u);
  EXPECT_EQ(map.capacity(), 0u);
  EXPECT_FALSE(map.has({1}));
  EXPECT_FALSE(map.iterator());
  fill(map, 50);
  EXPECT_EQ(map.count(), 50u);
  EXPECT_EQ(*map.find({49}), "49");
}

TEST(HashMap2018, ClearingGivesTheMemoryBack) {
  Map map;
  const std::size_t before = PlatformTests::liveAllocations();
  fill(map, 1000);
  EXPECT_GT(PlatformTests::liveAllocations(), before);
  map.clear();
  EXPECT_EQ(PlatformTests::liveAllocations(), before);
}

TEST(HashMap2018, DestroysEveryEntryOnce) {
  auto counted = std::make_shared<int>(0);
  {
    HashMap2018<Number, std::shared_ptr<int>, 1> map;
    for (unsigned number = 0; number < 70; ++number)
      map.insert({number}, counted);
    for (unsigned number = 0; number < 70; number += 2)
      map.erase({number});
    EXPECT_EQ(counted.use_count(), 36);
    map.clear();
    EXPECT_EQ(counted.use_count(), 1);
    map.insert({1}, counted);
  }
  EXPECT_EQ(counted.use_count(), 1);
}

TEST(HashMap2018, CapacityIsWhatItHoldsBeforeItGrows) {
  Map map;
  EXPECT_EQ(map.capacity(), 0u);
  map.insert({0}, "");
  const unsigned first = map.capacity();
  EXPECT_GE(first, map.count());
  for (unsigned number = 1; number < first; ++number) {
    map.insert({number}, "");
    EXPECT_EQ(map.capacity(), first);
  }
  map.insert({first}, "");
  EXPECT_GT(map.capacity(), first);
}

TEST(HashMap2018, InsertingWithinCapacityAndFreedSlotsDoesNotAllocate) {
  HashMap2018<Number, unsigned, 1> map;
  for (unsigned number = 0; number < 40; ++number)
    map.insert({number}, number);
  map.erase({7});
  const std::size_t before = PlatformTests::allocations();
  map.insert({100}, 100);
  EXPECT_EQ(PlatformTests::allocations(), before);
}

TEST(HashMap2018, PositionsAndAddressesStayWhileTheCollectionGrowsAndShrinks) {
  Map map;
  fill(map, 10);
  std::vector<std::pair<Map::Position, const std::string*>> places;
  for (unsigned number = 0; number < 10; ++number)
    places.emplace_back(map.position({number}), map.find({number}));
  for (unsigned number = 10; number < 5000; ++number)
    map.insert({number}, "");
  for (unsigned number = 10; number < 5000; number += 3)
    map.erase({number});
  for (unsigned number = 0; number < 10; ++number) {
    EXPECT_EQ(map.position({number}), places[number].first);
    EXPECT_EQ(map.find({number}), places[number].second);
    EXPECT_EQ(*map.find({number}), std::to_string(number));
  }
}

TEST(HashMap2018, PositionsOfDeletedEntriesAreUsedAgainTheLatestFirst) {
  Map map;
  fill(map, 5);
  const Map::Position one = map.position({1});
  const Map::Position three = map.position({3});
  map.erase({1});
  map.erase({3});
  EXPECT_EQ(map.insert({10}, "").first, three);
  EXPECT_EQ(map.insert({11}, "").first, one);
}

TEST(HashMap2018, IteratesOverKeysAndValuesInTheOrderOfTheSlots) {
  Map map;
  fill(map, 70);
  unsigned expected = 0;
  for (auto entry = map.iterator(); entry; ++entry, ++expected) {
    EXPECT_EQ(entry.key().number, expected);
    EXPECT_EQ(entry.value(), std::to_string(expected));
  }
  EXPECT_EQ(expected, 70u);
}

TEST(HashMap2018, TheSameHistoryGivesTheSameOrderWhateverTheSalt) {
  HashMap2018<Number, int, 1> first;
  HashMap2018<Number, int, 0xfedcba98> second;
  const auto live = [](auto& map) {
    for (unsigned number = 0; number < 100; ++number)
      map.insert({number * 977}, 0);
    for (unsigned number = 0; number < 100; number += 3)
      map.erase({number * 977});
    for (unsigned number = 200; number < 220; ++number)
      map.insert({number}, 0);
  };
  live(first);
  live(second);
  EXPECT_EQ(keysOf(first), keysOf(second));
  EXPECT_EQ(keysOf(first).size(), first.count());
}

TEST(HashMap2018, IteratesFromAKeyToTheEnd) {
  Map map;
  fill(map, 5);
  std::vector<unsigned> seen;
  for (auto entry = map.iterator({2}); entry; ++entry)
    seen.push_back(entry.key().number);
  EXPECT_THAT(seen, ElementsAre(2, 3, 4));
  EXPECT_FALSE(map.iterator({9}));
}

TEST(HashMap2018, IterationSurvivesDeletionOfTheEntryItStandsOn) {
  Map map;
  fill(map, 100);
  std::vector<unsigned> seen;
  for (auto entry = map.iterator(); entry; ++entry) {
    seen.push_back(entry.key().number);
    map.erase(entry.key());
    EXPECT_TRUE(entry);
  }
  EXPECT_EQ(seen.size(), 100u);
  EXPECT_EQ(map.count(), 0u);
}

TEST(HashMap2018, IterationPassesOverEntriesDeletedAhead) {
  Map map;
  fill(map, 5);
  std::vector<unsigned> seen;
  for (auto entry = map.iterator(); entry; ++entry) {
    seen.push_back(entry.key().number);
    map.erase({entry.key().number + 1});
  }
  EXPECT_THAT(seen, ElementsAre(0, 2, 4));
}

TEST(HashMap2018, IterationSurvivesDeletionOfEntriesBehindIt) {
  Map map;
  fill(map, 4);
  std::vector<unsigned> seen;
  for (auto entry = map.iterator(); entry; ++entry) {
    seen.push_back(entry.key().number);
    if (entry.key().number > 0) map.erase({entry.key().number - 1});
  }
  EXPECT_THAT(seen, ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(keysOf(map), ElementsAre(3));
}

TEST(HashMap2018, IterationEndsWhenTheCollectionIsCleared) {
  Map map;
  fill(map, 100);
  std::vector<unsigned> seen;
  for (auto entry = map.iterator(); entry; ++entry) {
    seen.push_back(entry.key().number);
    map.clear();
  }
  EXPECT_THAT(seen, ElementsAre(0));
}

TEST(HashMap2018, IterationEndsThoughTheCollectionKeepsGrowing) {
  Map map;
  fill(map, 10);
  std::multiset<unsigned> seen;
  unsigned next = 10;
  for (auto entry = map.iterator(); entry; ++entry) {
    seen.insert(entry.key().number);
    for (int added = 0; added < 20; ++added)
      map.insert({next++}, "");
  }
  for (unsigned number = 0; number < 10; ++number)
    EXPECT_EQ(seen.count(number), 1u) << number;
  EXPECT_EQ(map.count(), next);
}

TEST(HashMap2018, IteratorsDoNotDisturbOneAnother) {
  Map map;
  fill(map, 3);
  std::vector<unsigned> outerSeen;
  for (auto outer = map.iterator(); outer; ++outer) {
    outerSeen.push_back(outer.key().number);
    for (auto inner = map.iterator(); inner; ++inner) {
      if (inner.key().number == 1) map.erase({1});
    }
  }
  EXPECT_THAT(outerSeen, ElementsAre(0, 2));
}

TEST(HashMap2018, RandomChangesDuringIterationLoseNoEntryAndRepeatNone) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  for (int round = 0; round < 200; ++round) {
    Map map;
    const unsigned entries = static_cast<unsigned>(random() % 150);
    fill(map, entries);
    for (unsigned hole = 0; hole < entries / 4; ++hole)
      map.erase({static_cast<unsigned>(random() % entries)});
    std::set<unsigned> mustBeSeen;
    for (const unsigned key : keysOf(map))
      mustBeSeen.insert(key);
    std::multiset<unsigned> seen;
    unsigned fresh = 1000;
    for (auto entry = map.iterator(); entry; ++entry) {
      const unsigned current = entry.key().number;
      seen.insert(current);
      if (random() % 3 == 0) map.erase({current});
      if (random() % 2 == 0) {
        const unsigned other = static_cast<unsigned>(random() % 150);
        if (map.erase({other}) && seen.count(other) == 0) mustBeSeen.erase(other);
      }
      if (random() % 2 == 0) map.insert({fresh++}, "");
    }
    for (const unsigned key : mustBeSeen)
      ASSERT_EQ(seen.count(key), 1u) << "key " << key << " in round " << round;
    for (const unsigned key : seen)
      ASSERT_EQ(seen.count(key), 1u) << "key " << key << " in round " << round;
  }
}

TEST(HashSet2018, HoldsKeysAlone) {
  Set set;
  EXPECT_TRUE(set.insert({1}).second);
  EXPECT_TRUE(set.insert({2}).second);
  EXPECT_FALSE(set.insert({1}).second);
  EXPECT_EQ(set.count(), 2u);
  EXPECT_TRUE(set.has({2}));
  EXPECT_THAT(keysOf(set), UnorderedElementsAre(1, 2));
  EXPECT_TRUE(set.erase({1}));
  EXPECT_FALSE(set.erase({1}));
  EXPECT_THAT(keysOf(set), ElementsAre(2));
  set.clear();
  EXPECT_THAT(keysOf(set), IsEmpty());
}

/// Random operations on the collection and on `std::map`, compared after every one.
template <class Key>
class HashMap2018AsAMap : public ::testing::Test {
 protected:
  using Subject = HashMap2018<Key, std::string, 0x9e3779b9>;

  static Key key(unsigned number) { return keyOf(number, static_cast<const Key*>(nullptr)); }

  void operate(std::mt19937& random) {
    const Key chosen = key(static_cast<unsigned>(random() % 200));
    const unsigned operation = static_cast<unsigned>(random() % 100);
    if (operation < growth_) {
      insert(chosen, std::to_string(random()));
    } else if (operation < 97) {
      remove(chosen);
    } else if (operation == 97) {
      pinIs(!pin_);
    } else if (operation == 98) {
      growth_ = static_cast<unsigned>(20 + random() % 60);
    } else if (random() % 8 == 0) {
      clear();
    }
    compareOne(chosen);
  }

  void compareAll() const {
    ASSERT_EQ(subject_.count(), model_.size());
    ASSERT_GE(subject_.capacity(), subject_.count());
    std::map<Key, std::string> walked;
    for (auto entry = subject_.iterator(); entry; ++entry) {
      ASSERT_TRUE(walked.emplace(entry.key(), entry.value()).second);
    }
    ASSERT_EQ(walked, model_);
    for (const auto& [present, address] : addresses_)
      ASSERT_EQ(subject_.find(present), address);
    for (const auto& [at, entry] : withdrawn_) {
      ASSERT_EQ(subject_.key(at), entry.first);
      ASSERT_EQ(subject_.value(at), entry.second);
    }
  }

 private:
  void insert(const Key& chosen, const std::string& value) {
    const auto [at, inserted] = subject_.insert(chosen, value);
    ASSERT_EQ(inserted, model_.emplace(chosen, value).second);
    ASSERT_FALSE(withdrawn_.contains(at));
    ASSERT_EQ(subject_.key(at), chosen);
    if (inserted) addresses_[chosen] = &subject_.value(at);
  }
  void remove(const Key& chosen) {
    if (pin_) {
      withdraw(chosen);
    } else {
      erase(chosen);
    }
  }
  void erase(const Key& chosen) {
    const auto erased = subject_.erase(chosen);
    const auto modelled = model_.find(chosen);
    ASSERT_EQ(erased.has_value(), modelled != model_.end());
    if (!erased) return;
    ASSERT_EQ(erased->first, chosen);
    ASSERT_EQ(erased->second, modelled->second);
    model_.erase(modelled);
    addresses_.erase(chosen);
  }
  void withdraw(const Key& chosen) {
    const auto at = subject_.withdraw(chosen);
    const auto modelled = model_.find(chosen);
    ASSERT_EQ(at != Subject::none, modelled != model_.end());
    if (at == Subject::none) return;
    ASSERT_TRUE(withdrawn_.emplace(at, *modelled).second);
    model_.erase(modelled);
    addresses_.erase(chosen);
  }
  void pinIs(bool pinned) {
    if (pinned) {
      pin_.emplace(subject_);
    } else {
      pin_.reset();
      withdrawn_.clear();
    }
  }
  void clear() {
    if (pin_) {
      for (const auto& [present, value] : model_)
        withdrawn_.emplace(subject_.position(present), std::pair(present, value));
    }
    subject_.clear();
    model_.clear();
    addresses_.clear();
  }
  void compareOne(const Key& chosen) const {
    const auto modelled = model_.find(chosen);
    const std::string* found = subject_.find(chosen);
    ASSERT_EQ(subject_.count(), model_.size());
    ASSERT_EQ(subject_.has(chosen), modelled != model_.end());
    ASSERT_EQ(found != nullptr, modelled != model_.end());
    if (found != nullptr) {
      ASSERT_EQ(*found, modelled->second);
    }
  }

  Subject subject_;
  std::map<Key, std::string> model_;
  std::map<Key, const std::string*> addresses_;
  std::optional<typename Subject::Pin> pin_;
  std::map<typename Subject::Position, std::pair<Key, std::string>> withdrawn_;  // and pinned
  unsigned growth_ = 60;
};

using KeyTypes = ::testing::Types<Number, Clashing, L3::VrfName, Velo::String>;
TYPED_TEST_SUITE(HashMap2018AsAMap, KeyTypes);

TYPED_TEST(HashMap2018AsAMap, BehavesLikeOneUnderRandomOperations) {
  const RandomSeed seed;
  SCOPED_TRACE(seed.replay());
  std::mt19937 random(seed.value());
  for (int step = 0; step < 10000; ++step) {
    ASSERT_NO_FATAL_FAILURE(this->operate(random)) << "step " << step;
    if (step % 100 == 0) {
      ASSERT_NO_FATAL_FAILURE(this->compareAll()) << "step " << step;
    }
  }
  this->compareAll();
}

// The whole message of the assertion on a bad iterator.
constexpr const char* iteratorAssertion =
    "^iterator does not stand on an entry\n"
    ".*Mox/HashMap2018\\.h:0: HashMap2018::Iterator: Assertion `\"iter_\" == nullptr' failed\\.\n";

TEST(HashMap2018DeathTest, ReadingTheKeyOfADeletedEntryIsFatal) {
  Map map;
  fill(map, 2);
  const auto entry = map.iterator();
  map.erase({0});
  EXPECT_DEATH(static_cast<void>(entry.key()), iteratorAssertion);
}

TEST(HashMap2018DeathTest, ReadingTheValueOfADeletedEntryIsFatal) {
  Map map;
  fill(map, 2);
  const auto entry = map.iterator();
  map.erase({0});
  EXPECT_DEATH(static_cast<void>(entry.value()), iteratorAssertion);
}

TEST(HashMap2018DeathTest, ReadingAfterClearingIsFatal) {
  Map map;
  fill(map, 2);
  const auto entry = map.iterator();
  map.clear();
  EXPECT_DEATH(static_cast<void>(entry.key()), iteratorAssertion);
}

TEST(HashMap2018DeathTest, ReadingPastTheEndIsFatal) {
  Map map;
  fill(map, 1);
  auto entry = map.iterator();
  ++entry;
  ASSERT_FALSE(entry);
  EXPECT_DEATH(static_cast<void>(entry.key()), iteratorAssertion);
  EXPECT_DEATH(static_cast<void>(entry.value()), iteratorAssertion);
}

TEST(HashMap2018DeathTest, GoingOnPastTheEndIsFatal) {
  const Map map;
  auto entry = map.iterator();
  EXPECT_DEATH(++entry, iteratorAssertion);
}

/// A map with the entries 0 to 4, of which a pin holds what is withdrawn.
class PinnedHashMap2018 : public ::testing::Test {
 protected:
  PinnedHashMap2018() { fill(map, 5); }

  Map map;
  std::optional<Map::Pin> pin{std::in_place, map};
};

TEST_F(PinnedHashMap2018, AWithdrawnEntryIsGoneFromTheCollection) {
  EXPECT_EQ(map.withdraw({1}), 1u);
  EXPECT_EQ(map.count(), 4u);
  EXPECT_FALSE(map.has({1}));
  EXPECT_EQ(map.find({1}), nullptr);
  EXPECT_EQ(map.position({1}), Map::none);
  EXPECT_THAT(keysOf(map), ElementsAre(0, 2, 3, 4));
  EXPECT_EQ(map.withdraw({1}), Map::none);
  EXPECT_EQ(map.withdraw({7}), Map::none);
  EXPECT_EQ(map.count(), 4u);
}

TEST_F(PinnedHashMap2018, AWithdrawnEntryIsReadWhereItWas) {
  const std::string* const value = map.find({1});
  const Map::Position at = map.withdraw({1});
  EXPECT_EQ(map.key(at), Number{1});
  EXPECT_EQ(&map.value(at), value);
  EXPECT_EQ(map.value(at), "1");
}

TEST_F(PinnedHashMap2018, AWithdrawnEntryIsReadThoughTheCollectionGrows) {
  const Map::Position at = map.withdraw({1});
  const std::string* const value = &map.value(at);
  for (unsigned number = 100; number < 1100; ++number)
    map.insert({number}, "");
  EXPECT_EQ(map.key(at), Number{1});
  EXPECT_EQ(&map.value(at), value);
  EXPECT_EQ(map.value(at), "1");
}

TEST_F(PinnedHashMap2018, AKeyIsWithdrawnByTheReferenceInItsEntry) {
  const Map::Position at = map.withdraw(map.key(3));
  EXPECT_EQ(at, 3u);
  EXPECT_FALSE(map.has({3}));
  EXPECT_EQ(map.key(at), Number{3});
}

TEST_F(PinnedHashMap2018, AKeyThatIsInsertedAgainHasAnEntryOfItsOwnBesideTheOldOne) {
  const Map::Position old = map.withdraw({1});
  const auto [at, inserted] = map.insert({1}, "new");
  EXPECT_TRUE(inserted);
  EXPECT_NE(at, old);
  EXPECT_EQ(*map.find({1}), "new");
  EXPECT_EQ(map.value(old), "1");
  EXPECT_EQ(map.withdraw({1}), at);
  EXPECT_EQ(map.value(at), "new");
  EXPECT_EQ(map.value(old), "1");
}

TEST_F(PinnedHashMap2018, PositionsAreUsedAgainWhenTheLastPinIsGone) {
  map.withdraw({1});
  map.withdraw({3});
  EXPECT_EQ(map.insert({10}, "").first, 5u);
  {
    const Map::Pin inner(map);
    map.withdraw({4});
  }
  EXPECT_EQ(map.insert({11}, "").first, 6u);
  pin.reset();
  EXPECT_EQ(map.insert({12}, "").first, 4u);
  EXPECT_EQ(map.insert({13}, "").first, 3u);
  EXPECT_EQ(map.insert({14}, "").first, 1u);
  EXPECT_EQ(map.insert({15}, "").first, 7u);
}

TEST_F(PinnedHashMap2018, PositionsThatWereFreeBeforeAreUsedMeanwhile) {
  pin.reset();
  map.erase({2});
  const Map::Pin later(map);
  map.withdraw({1});
  EXPECT_EQ(map.insert({10}, "").first, 2u);
  EXPECT_EQ(map.insert({11}, "").first, 5u);
}

TEST_F(PinnedHashMap2018, AnInnerPinLeavesItsEntriesToTheOuterOne) {
  Map::Position at = Map::none;
  {
    const Map::Pin inner(map);
    at = map.withdraw({2});
  }
  EXPECT_EQ(map.key(at), Number{2});
  EXPECT_EQ(map.value(at), "2");
}

TEST_F(PinnedHashMap2018, ClearingWithdrawsEveryEntry) {
  const Map::Position before = map.withdraw({1});
  map.clear();
  EXPECT_EQ(map.count(), 0u);
  EXPECT_FALSE(map.iterator());
  EXPECT_EQ(map.position({2}), Map::none);
  EXPECT_EQ(map.value(before), "1");
  for (unsigned number = 0; number < 5; ++number) {
    EXPECT_EQ(map.key(number), Number{number});
    EXPECT_EQ(map.value(number), std::to_string(number));
  }
}

TEST_F(PinnedHashMap2018, WhatWasClearedMayBeFilledAgainAtOnce) {
  map.clear();
  for (unsigned number = 0; number < 50; ++number)
    EXPECT_EQ(map.insert({number}, "new").first, 5 + number);
  EXPECT_EQ(map.count(), 50u);
  EXPECT_EQ(*map.find({4}), "new");
  EXPECT_EQ(map.value(4), "4");
  pin.reset();
  EXPECT_EQ(map.count(), 50u);
  EXPECT_EQ(*map.find({4}), "new");
  EXPECT_EQ(map.insert({50}, "").first, 4u);
}

TEST_F(PinnedHashMap2018, AWalkEndsWhenTheCollectionIsCleared) {
  std::vector<unsigned> seen;
  for (auto entry = map.iterator(); entry; ++entry) {
    seen.push_back(entry.key().number);
    map.clear();
    map.insert({9}, "");
  }
  EXPECT_THAT(seen, ElementsAre(0));
}

TEST_F(PinnedHashMap2018, AWalkSurvivesTheWithdrawalOfTheEntryItStandsOnAndOfOthers) {
  std::vector<unsigned> seen;
  for (auto entry = map.iterator(); entry; ++entry) {
    seen.push_back(entry.key().number);
    map.withdraw({entry.key().number + 1});
    map.withdraw(entry.key());
    EXPECT_TRUE(entry);
  }
  EXPECT_THAT(seen, ElementsAre(0, 2, 4));
}

TEST_F(PinnedHashMap2018, AWalkDoesNotReadTheEntryThatWasWithdrawnUnderIt) {
  const auto entry = map.iterator();
  map.withdraw({0});
  EXPECT_DEATH(static_cast<void>(entry.key()), iteratorAssertion);
}

TEST(HashMap2018, DestroysEveryPinnedEntryOnceAndWhenTheLastPinGoes) {
  auto counted = std::make_shared<int>(0);
  HashMap2018<Number, std::shared_ptr<int>, 1> map;
  for (unsigned number = 0; number < 70; ++number)
    map.insert({number}, counted);
  {
    const decltype(map)::Pin pin(map);
    for (unsigned number = 0; number < 70; number += 2)
      map.withdraw({number});
    EXPECT_EQ(counted.use_count(), 71);
    map.clear();
    EXPECT_EQ(counted.use_count(), 71);
  }
  EXPECT_EQ(counted.use_count(), 1);
}

}  // namespace
}  // namespace Mox
