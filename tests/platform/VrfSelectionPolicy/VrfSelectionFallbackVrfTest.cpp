#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Velo/Subscriber.h"

namespace VrfSelectionPolicy {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class FallbackVrf : public ::testing::Test {
 protected:
  FallbackVrf() {
    subscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short attributeId,
                              const void* key, const void* value) {
      Subscriber::ownerOf(subscriber).told(attributeId, key, value);
    };
    config->publisher().subscriberIs(subscriber_);
  }
  ~FallbackVrf() override {
    if (config) config->publisher().subscriberDel(subscriber_);
  }
  void letGoOfConfig() {
    config->publisher().subscriberDel(subscriber_);
    config = nullptr;
  }
  [[nodiscard]] std::vector<std::string> take() { return std::exchange(calls_, {}); }

  Mox::Ptr<VrfSelectionFallbackVrf> config = VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  std::function<void()> onCall;

 private:
  using Subscriber = Velo::MemberSubscriber<FallbackVrf>;

  void told(short attributeId, const void* key, const void* value) {
    const L3::VrfName& vrf = *static_cast<const L3::VrfName*>(key);
    const auto* fallback = static_cast<const L3::VrfName*>(value);
    // The change has been made before anybody is told of it.
    EXPECT_EQ(config->fallbackVrfHas(vrf), fallback != nullptr);
    calls_.push_back(std::to_string(attributeId) + " " + vrf.str() +
                     (fallback == nullptr ? " gone" : " = " + fallback->str()));
    if (onCall) onCall();
  }

  Subscriber subscriber_{*this};
  std::vector<std::string> calls_;
};

TEST_F(FallbackVrf, BeginsEmpty) {
  EXPECT_EQ(config->fallbackVrf().count(), 0u);
  EXPECT_FALSE(config->fallbackVrfHas("red"));
  EXPECT_TRUE(config->fallbackVrf("red").empty());
  EXPECT_TRUE(config->hasNotificationActive());
  EXPECT_EQ(config->fwkType()->name, "VrfSelectionPolicy::VrfSelectionFallbackVrf");
}

TEST_F(FallbackVrf, PublishesAnEntryThatIsAddedByItsNumber) {
  EXPECT_EQ(VrfSelectionFallbackVrf::fallbackVrfAttribute, 258);
  config->fallbackVrfIs("red", "blue");
  EXPECT_EQ(config->fallbackVrf("red"), L3::VrfName("blue"));
  EXPECT_TRUE(config->fallbackVrfHas("red"));
  EXPECT_THAT(take(), ElementsAre("258 red = blue"));
}

TEST_F(FallbackVrf, PublishesAChangedFallbackAndNoneThatIsTheSame) {
  config->fallbackVrfIs("red", "blue");
  config->fallbackVrfIs("red", "blue");
  EXPECT_THAT(take(), ElementsAre("258 red = blue"));
  config->fallbackVrfIs("red", "default");
  EXPECT_EQ(config->fallbackVrf("red"), L3::VrfName("default"));
  EXPECT_EQ(config->fallbackVrf().count(), 1u);
  EXPECT_THAT(take(), ElementsAre("258 red = default"));
}

TEST_F(FallbackVrf, HoldsAnEmptyFallbackAsAnEntry) {
  config->fallbackVrfIs("red", "");
  EXPECT_TRUE(config->fallbackVrfHas("red"));
  EXPECT_TRUE(config->fallbackVrf("red").empty());
  EXPECT_THAT(take(), ElementsAre("258 red = "));
}

TEST_F(FallbackVrf, PublishesARemovalOnceAndGivesWhatWasHeld) {
  config->fallbackVrfIs("red", "blue");
  static_cast<void>(take());
  EXPECT_EQ(config->fallbackVrfDel("red"), L3::VrfName("blue"));
  EXPECT_FALSE(config->fallbackVrfHas("red"));
  EXPECT_TRUE(config->fallbackVrfDel("red").empty());
  EXPECT_THAT(take(), ElementsAre("258 red gone"));
}

TEST_F(FallbackVrf, PublishesEveryEntryThatIsRemovedTogether) {
  config->fallbackVrfIs("red", "blue");
  config->fallbackVrfIs("green", "blue");
  static_cast<void>(take());
  config->fallbackVrfDelAll();
  EXPECT_EQ(config->fallbackVrf().count(), 0u);
  EXPECT_THAT(take(), UnorderedElementsAre("258 red gone", "258 green gone"));
  config->fallbackVrfDelAll();
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(FallbackVrf, EmptiesThoughASubscriberRemovesEntriesOfItsOwn) {
  for (const char* vrf : {"a", "b", "c", "d"})
    config->fallbackVrfIs(vrf, "x");
  static_cast<void>(take());
  onCall = [this] { config->fallbackVrfDel("c"); };
  config->fallbackVrfDelAll();
  EXPECT_EQ(config->fallbackVrf().count(), 0u);
  EXPECT_THAT(take(), UnorderedElementsAre("258 a gone", "258 b gone", "258 c gone", "258 d gone"));
}

TEST_F(FallbackVrf, MayBeLetGoOfFromInsideAPublication) {
  config->fallbackVrfIs("red", "blue");
  static_cast<void>(take());
  onCall = [this] { letGoOfConfig(); };
  EXPECT_EQ(config->fallbackVrfDel("red"), L3::VrfName("blue"));
  EXPECT_FALSE(config);
  EXPECT_THAT(take(), ElementsAre("258 red gone"));
}

TEST_F(FallbackVrf, ADeletionByAReferenceIntoTheCollectionPublishesTheWholeKey) {
  config->fallbackVrfIs("red", "blue");
  static_cast<void>(take());
  config->fallbackVrfDel(config->fallbackVrf().iterator().key());
  EXPECT_THAT(take(), ElementsAre("258 red gone"));
}

TEST_F(FallbackVrf, DescribesItsSubscribersToTools) {
  const Velo::NotifieeListDescriptor descriptor = config->notifieeList();
  EXPECT_EQ(descriptor.kind, Velo::NotifieeListDescriptor::Kind::publisher);
  EXPECT_EQ(descriptor.entity, config.get());
  EXPECT_NE(descriptor.iterate, nullptr);
}

}  // namespace
}  // namespace VrfSelectionPolicy
