#pragma once

#include "Velo/NotifieeList.h"

namespace Velo {

/// One who keeps something of its own for each entry of a collection, and so needs memory when the
/// collection grows.
///
/// A subscriber is told after the fact, when it is too late to refuse. A follower is asked before
/// the fact: it gets all the memory that following the change will take, and throws when there is
/// none. Then the change does not happen, and nobody has been told of any. It must change nothing
/// that can be seen, since another follower may still refuse.
struct Follower {
  /// `key` names the entry that is to change and `value` is what it is to become.
  using MakeRoom = void (*)(Follower* follower, short attributeId, const void* key,
                            const void* value);

  MakeRoom makeRoom = nullptr;
};

/// A follower that is a member of the object that it calls, and finds that object again.
template <class Owner>
struct MemberFollower final : Follower {
  MemberFollower(Owner& of, MakeRoom function) noexcept : Follower{function}, owner(of) {}
  Owner& owner;

  /// The object whose member `follower` is.
  static Owner& ownerOf(Follower* follower) noexcept {
    return static_cast<MemberFollower*>(follower)->owner;
  }
};

/// The followers of the collections of one object, who asks them before it changes.
///
///     followers.makeRoomFor(130, &key, &value);     // throws, or what follows needs no memory
///     ...                                           // the change
///     publisher.publish(130, &key, &value);
class FollowerList {
 public:
  /// Adds `follower`; nothing if it is there already. Whoever adds it removes it before it goes.
  void followerIs(Follower& follower) { followers_.add(follower); }
  void followerDel(Follower& follower) noexcept { followers_.remove(follower); }
  /// Sees to it that adding one follower needs no memory.
  void makeRoom() { followers_.makeRoom(); }

  void makeRoomFor(short attributeId, const void* key, const void* value) {
    if (followers_.empty()) return;
    followers_.visit(
        [&](Follower& follower) { follower.makeRoom(&follower, attributeId, key, value); });
  }

 private:
  NotifieeList<Follower> followers_;
};

}  // namespace Velo
