#pragma once

#include "Velo/NotifieeList.h"
#include "Velo/Subscriber.h"

namespace Velo {

/// Tells subscribers, synchronously and after the fact, which entry of an object changed.
///
/// Subscribers are called in the order in which they were added. Whatever a subscriber does to the
/// list, or to the publisher itself, the promises of `NotifieeList` hold.
///
///     publisher.subscriberIs(subscriber);        // subscriber.dispatch is set
///     publisher.publish(130, &key, &value);      // calls subscriber.dispatch(...)
///     publisher.subscriberDel(subscriber);
class Publisher {
 public:
  /// Adds `subscriber`, whose dispatch function must be set; nothing if it is there already.
  void subscriberIs(Subscriber& subscriber) { subscribers_.add(subscriber); }
  /// Removes `subscriber`; nothing if it is not there.
  void subscriberDel(Subscriber& subscriber) noexcept { subscribers_.remove(subscriber); }
  /// Adds `subscriber` with that dispatch function or removes it, unless that is done already.
  void subscriptionIs(Subscriber& subscriber, Subscriber::Dispatch dispatch, bool subscribed) {
    if ((subscriber.dispatch != nullptr) == subscribed) return;
    subscriber.dispatch = subscribed ? dispatch : nullptr;
    if (subscribed) {
      subscriberIs(subscriber);
    } else {
      subscriberDel(subscriber);
    }
  }
  [[nodiscard]] bool hasSubscribers() const noexcept { return !subscribers_.empty(); }

  /// Calls every subscriber. The publisher may be gone when this returns.
  void publish(short attributeId, const void* key, const void* value) {
    subscribers_.visit([&](Subscriber& subscriber) {
      subscriber.dispatch(this, &subscriber, attributeId, key, value);
    });
  }

  /// The descriptor of this publisher's subscribers, on behalf of the `entity` that owns it.
  [[nodiscard]] NotifieeListDescriptor notifieeList(const void* entity) noexcept {
    return describe(NotifieeListDescriptor::Kind::publisher, entity, subscribers_);
  }

 private:
  NotifieeList<Subscriber> subscribers_;
};

}  // namespace Velo
