#pragma once

#include <algorithm>
#include <vector>

namespace Velo {

/// One who keeps something of its own for each entry of a collection, and so needs memory when the
/// collection grows.
///
/// A subscriber is told after the fact, when it is too late to refuse. A follower is asked before
/// the fact: it gets all the memory that following the change will take, and throws when there is
/// none. Then the change does not happen, and nobody has been told of any. It must change nothing
/// that can be seen, since another follower may still refuse; nor who the followers are.
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
  void followerIs(Follower& follower) {
    if (std::ranges::find(followers_, &follower) == followers_.end())
      followers_.push_back(&follower);
  }
  void followerDel(Follower& follower) noexcept { std::erase(followers_, &follower); }
  /// Sees to it that adding one follower needs no memory.
  void makeRoom() {
    if (followers_.size() == followers_.capacity()) followers_.reserve(2 * followers_.size() + 1);
  }

  void makeRoomFor(short attributeId, const void* key, const void* value) const {
    for (Follower* follower : followers_)
      follower->makeRoom(follower, attributeId, key, value);
  }

 private:
  std::vector<Follower*> followers_;
};

}  // namespace Velo
