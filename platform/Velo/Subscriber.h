#pragma once

namespace Velo {

class Publisher;

/// One who wants to be told of a publisher's changes.
///
/// Its only state is its dispatch function; an empty one means that it is not subscribed. It does
/// not know its publisher: whoever subscribed it removes it before it is destroyed.
struct Subscriber {
  /// `key` names the changed entry, `value` its new value or null when it is gone; both are valid
  /// during the call only.
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
