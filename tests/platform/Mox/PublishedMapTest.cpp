#include "Mox/PublishedMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Velo/String.h"
#include "Velo/Subscriber.h"

namespace PlatformTests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Mox::AttributeId lampAttribute = 130;

/// An object with a published collection.
struct House {
  using Lamps = Mox::PublishedMap<Velo::String, std::string, 0x1b2c3d4e>;

  Velo::Publisher publisher;
  Lamps lamps{publisher, lampAttribute};
};

/// Writes down what it is told of a house, and may act on it.
class Watcher {
 public:
  explicit Watcher(House& house) : house_(house) {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attributeId,
                              const void* key, const void* value) {
      Velo::MemberSubscriber<Watcher>::ownerOf(subscriber).told(attributeId, key, value);
    };
    house_.publisher.subscriberIs(subscriber_);
  }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;
  ~Watcher() {
    if (!isHouseGone) house_.publisher.subscriberDel(subscriber_);
  }
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(lines_, {}); }

  std::function<void()> onCall;
  bool isHouseGone = false;

 private:
  void told(short attributeId, const void* key, const void* value) {
    if (const auto act = std::exchange(onCall, nullptr)) act();
    // Both are valid as long as the call, whatever has become of the entry.
    const auto* text = static_cast<const std::string*>(value);
    lines_.push_back(std::to_string(attributeId) + " " +
                     static_cast<const Velo::String*>(key)->str() +
                     (text == nullptr ? " gone" : " = " + *text));
  }

  House& house_;
  std::vector<std::string> lines_;
  Velo::MemberSubscriber<Watcher> subscriber_{*this};
};

class PublishedMap : public ::testing::Test {
 protected:
  std::unique_ptr<House> house_ = std::make_unique<House>();
  House::Lamps& lamps_ = house_->lamps;
  Watcher watcher_{*house_};
};

TEST_F(PublishedMap, BeginsEmpty) {
  EXPECT_EQ(lamps_.map().count(), 0U);
  EXPECT_EQ(lamps_.map().find("hall"), nullptr);
}

TEST_F(PublishedMap, PublishesWhatIsInserted) {
  lamps_.is("hall", "on");
  ASSERT_NE(lamps_.map().find("hall"), nullptr);
  EXPECT_EQ(*lamps_.map().find("hall"), "on");
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall = on"));
}

TEST_F(PublishedMap, PublishesAChangedValueOnce) {
  lamps_.is("hall", "on");
  lamps_.is("hall", "off");
  lamps_.is("hall", "off");
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall = on", "130 hall = off"));
  EXPECT_EQ(lamps_.map().count(), 1U);
}

TEST_F(PublishedMap, PublishesARemovalWithoutAValue) {
  lamps_.is("hall", "on");
  EXPECT_TRUE(lamps_.del("hall"));
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall = on", "130 hall gone"));
  EXPECT_EQ(lamps_.map().count(), 0U);
}

TEST_F(PublishedMap, TellsThatThereWasNothingToRemove) {
  EXPECT_FALSE(lamps_.del("hall"));
  EXPECT_THAT(watcher_.take(), IsEmpty());
}

TEST_F(PublishedMap, HasChangedBeforeAnybodyIsTold) {
  std::optional<std::string> seen;
  watcher_.onCall = [&] { seen = *lamps_.map().find("hall"); };
  lamps_.is("hall", "on");
  EXPECT_EQ(seen, "on");
  watcher_.onCall = [&] { seen = lamps_.map().has("hall") ? "there" : "gone"; };
  lamps_.del("hall");
  EXPECT_EQ(seen, "gone");
}

TEST_F(PublishedMap, ChangesAlsoWhenNobodyIsThereToBeTold) {
  House empty;
  empty.lamps.is("hall", "on");
  EXPECT_TRUE(empty.lamps.map().has("hall"));
  EXPECT_TRUE(empty.lamps.del("hall"));
}

TEST_F(PublishedMap, MayBeChangedAgainFromInsideACall) {
  watcher_.onCall = [this] { lamps_.is("hall", "off"); };
  lamps_.is("hall", "on");
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall = off", "130 hall = on"));
  EXPECT_EQ(*lamps_.map().find("hall"), "off");
}

TEST_F(PublishedMap, MayLoseTheEntryFromInsideACall) {
  watcher_.onCall = [this] { lamps_.del("hall"); };
  lamps_.is("hall", "on");
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall gone", "130 hall = on"));
  EXPECT_FALSE(lamps_.map().has("hall"));
}

TEST_F(PublishedMap, MayGetTheEntryBackFromInsideACall) {
  lamps_.is("hall", "on");
  watcher_.onCall = [this] { lamps_.is("hall", "dim"); };
  lamps_.del("hall");
  EXPECT_EQ(*lamps_.map().find("hall"), "dim");
}

TEST_F(PublishedMap, MayBeReleasedFromInsideACall) {
  watcher_.onCall = [this] {
    watcher_.isHouseGone = true;
    house_ = nullptr;
  };
  lamps_.is("hall", "on");
  EXPECT_EQ(house_, nullptr);
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall = on"));
}

TEST_F(PublishedMap, MayBeReleasedFromInsideTheCallOfARemoval) {
  lamps_.is("hall", "on");
  static_cast<void>(watcher_.take());
  watcher_.onCall = [this] {
    watcher_.isHouseGone = true;
    house_ = nullptr;
  };
  EXPECT_TRUE(lamps_.del("hall"));
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall gone"));
}

TEST_F(PublishedMap, TakesAKeyOfItsOwnForItsOperations) {
  lamps_.is("hall", "on");
  static_cast<void>(watcher_.take());
  lamps_.is(lamps_.map().key(lamps_.map().position("hall")), "off");
  EXPECT_TRUE(lamps_.del(lamps_.map().key(lamps_.map().position("hall"))));
  EXPECT_THAT(watcher_.take(), ElementsAre("130 hall = off", "130 hall gone"));
}

}  // namespace
}  // namespace PlatformTests
