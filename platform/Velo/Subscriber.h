#pragma once

namespace Velo {

class Publisher;

/// A receiver of a publisher's notifications.
///
/// Its only state is its dispatch function, which is null while it is not subscribed. It has no
/// reference to its publisher. The code that subscribed it must remove it before it is destroyed.
///
/// A dispatch function must not throw. It may change the publishing object again. The subscribers
/// after it are then notified of the later change first. So use only the key of a notification, and
/// read the present value from the object.
///
///     subscriber.dispatch = [](Publisher*, Subscriber*, short, const void* key, const void*) {
///       show(users->vrfRefCount(*static_cast<const VrfAction*>(key)));
///     };
struct Subscriber {
  /// `key` is the key of the changed entry. `value` is its new value, null if the entry was
  /// removed. Both are valid during the call only.
  using Dispatch = void (*)(Publisher* publisher, Subscriber* subscriber, short attributeId,
                            const void* key, const void* value);

  Dispatch dispatch = nullptr;
};

/// A subscriber that is a member of the object that it notifies, and has a reference to it.
template <class Owner>
struct MemberSubscriber final : Subscriber {
  explicit MemberSubscriber(Owner& of) noexcept : owner(of) {}
  Owner& owner;

  /// The object that has `subscriber` as a member.
  static Owner& ownerOf(Subscriber* subscriber) noexcept {
    return static_cast<MemberSubscriber*>(subscriber)->owner;
  }
};

}  // namespace Velo
