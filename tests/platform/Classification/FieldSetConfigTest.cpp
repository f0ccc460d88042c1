#include "Classification/FieldSetConfig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Velo/Subscriber.h"

namespace Classification {
namespace {

using ::testing::ElementsAre;

Ip::Address v4(std::uint8_t a, std::uint8_t b = 0, std::uint8_t c = 0, std::uint8_t d = 0) {
  return {Ip::Family::v4, {a, b, c, d}};
}

/// Writes down the name in each notification, and whether the set has prefixes.
class SetNotices {
 public:
  explicit SetNotices(Velo::Publisher& publisher) : publisher_(publisher) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attributeId,
                              const void* key, const void* value) {
      EXPECT_EQ(attributeId, FieldSetConfig::prefixSetAttribute);
      const auto* const set = static_cast<const SharedPrefixSet*>(value);
      std::string line = static_cast<const PrefixSetName*>(key)->name.str();
      line += set == nullptr ? " gone" : (*set)->prefixes.empty() ? " empty" : " set";
      Velo::MemberSubscriber<SetNotices>::ownerOf(subscriber).lines.push_back(line);
    };
    publisher_.subscriberIs(subscriber_);
  }
  SetNotices(const SetNotices&) = delete;
  SetNotices& operator=(const SetNotices&) = delete;
  ~SetNotices() { publisher_.subscriberDel(subscriber_); }

  std::vector<std::string> lines;

 private:
  Velo::Publisher& publisher_;
  Velo::MemberSubscriber<SetNotices> subscriber_{*this};
};

TEST(PrefixSet, HasTheAddressesOfItsPrefixesWithoutTheExcludedOnes) {
  const PrefixSet set{{{v4(10), 8}, {v4(10, 1, 2, 3), 32}}, {{v4(10, 1), 16}}};
  EXPECT_TRUE(set.contains(v4(10, 2)));
  EXPECT_FALSE(set.contains(v4(10, 1, 2, 4)));
  EXPECT_FALSE(set.contains(v4(10, 1, 2, 3))) << "an exclusion holds for longer prefixes, too";
  EXPECT_FALSE(set.contains(v4(11)));
  EXPECT_FALSE(PrefixSet().contains(v4(10)));
}

TEST(FieldSetConfig, NotifiesOfEachRealChange) {
  const auto config = FieldSetConfig::FieldSetConfigIs("sets");
  const SetNotices notices(config->publisher());
  const PrefixSetName name{Ip::Family::v4, "a"};
  config->prefixSetIs(name, PrefixSet{{{v4(10), 8}}, {}});
  config->prefixSetIs(name, PrefixSet{{{v4(10), 8}}, {}});
  config->prefixSetIs(name, PrefixSet{});
  ASSERT_NE(config->prefixSet(name), nullptr);
  EXPECT_EQ(**config->prefixSet(name), PrefixSet());
  EXPECT_EQ(config->prefixSet().count(), 1U);
  EXPECT_TRUE(config->prefixSetDel(name));
  EXPECT_FALSE(config->prefixSetDel(name));
  EXPECT_EQ(config->prefixSet(name), nullptr);
  EXPECT_THAT(notices.lines, ElementsAre("a set", "a empty", "a gone"));
}

TEST(FieldSetConfig, SetsOfTheTwoFamiliesHaveTheirOwnNames) {
  const auto config = FieldSetConfig::FieldSetConfigIs("sets");
  config->prefixSetIs({Ip::Family::v4, "a"}, PrefixSet{{{v4(10), 8}}, {}});
  EXPECT_EQ(config->prefixSet({Ip::Family::v6, "a"}), nullptr);
  config->prefixSetIs({Ip::Family::v6, "a"}, PrefixSet{});
  EXPECT_EQ((*config->prefixSet({Ip::Family::v4, "a"}))->prefixes.size(), 1U);
}

}  // namespace
}  // namespace Classification
