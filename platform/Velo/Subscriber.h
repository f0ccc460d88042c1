#pragma once

namespace Velo {

class Publisher;

/// One who is notified of a publisher's changes.
///
/// Its only state is its dispatch function; an empty one means that it is not subscribed. It does
/// not know its publisher: whoever subscribed it removes it before it is destroyed.
///
/// A dispatch function must not throw. It may change the publishing object again. Subscribers
/// behind it are then notified of the later change first, and of the earlier one afterwards. So of
/// a publication only the key is reliable: read what it stands for from the object.
///
///     subscriber.dispatch = [](Publisher*, Subscriber*, short, const void* key, const void*) {
///       show(users->vrfRefCount(*static_cast<const VrfAction*>(key)));
///     };
struct Subscriber {
  /// `key` names the changed entry, `value` what it became at that moment, null when it was
  /// removed. Both are valid during the call only.
  using Dispatch = void (*)(Publisher* publisher, Subscriber* subscriber, short attributeId,
                            const void* key, const void* value);

  Dispatch dispatch = nullptr;
};

/// A subscriber that is a member of the object that it calls, and finds that object again.
template <class Owner>
struct MemberSubscriber final : Subscriber {
  explicit MemberSubscriber(Owner& of) noexcept : owner(of) {}
  Owner& owner;

  /// The object whose member `subscriber` is.
  static Owner& ownerOf(Subscriber* subscriber) noexcept {
    return static_cast<MemberSubscriber*>(subscriber)->owner;
  }
};

}  // namespace Velo
