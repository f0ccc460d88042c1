#pragma once

#include "Velo/NotifieeList.h"
#include "Velo/Subscriber.h"

namespace Velo {

/// Notifies subscribers, synchronously and after the change, which entry of an object changed.
///
/// Subscribers are called in the order in which they were added. A subscriber may change the list,
/// or destroy the publisher: the invariants of `NotifieeList` hold.
///
///     publisher.subscriberIs(subscriber);        // subscriber.dispatch is set
///     publisher.publish(130, &key, &value);      // calls subscriber.dispatch(...)
///     publisher.subscriberDel(subscriber);
class Publisher {
 public:
  /// Adds `subscriber`, whose dispatch function must be set, unless it is present.
  void subscriberIs(Subscriber& subscriber) { subscribers_.add(subscriber); }
  /// Removes `subscriber` if it is present.
  void subscriberDel(Subscriber& subscriber) noexcept { subscribers_.remove(subscriber); }
  /// Adds `subscriber` with that dispatch function, or removes it. Does nothing if that is already
  /// the case.
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

  /// Calls every subscriber. A subscriber may destroy the publisher.
  void publish(short attributeId, const void* key, const void* value) {
    subscribers_.visit([&](Subscriber& subscriber) {
      subscriber.dispatch(this, &subscriber, attributeId, key, value);
    });
  }

  /// The descriptor of this publisher's subscribers. `entity` owns the publisher.
  [[nodiscard]] NotifieeListDescriptor notifieeList(const void* entity) noexcept {
    return describe(NotifieeListDescriptor::Kind::publisher, entity, subscribers_);
  }

 private:
  NotifieeList<Subscriber> subscribers_;
};

}  // namespace Velo
