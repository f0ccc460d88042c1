#pragma once

#include <utility>

#include "Mox/HashMap2018.h"
#include "Mox/PtrInterface.h"
#include "Velo/Publisher.h"

namespace Mox {

/// A keyed collection that is an attribute of an entity. After each real change it notifies the
/// entity's subscribers of the changed key and its new value, which is null after a deletion.
///
/// During the call a subscriber may change the collection again, and may release the entity.
///
///     PublishedMap<Velo::String, Lamp, 0x1b2c3d4e> lamps{publisher, 130};
///     lamps.is("hall", Lamp::on);      // published
///     lamps.is("hall", Lamp::on);      // nothing changed, nothing published
///     lamps.del("hall");               // published with a null value
template <class Key, class Value, unsigned Salt>
class PublishedMap {
 public:
  using Map = HashMap2018<Key, Value, Salt>;

  /// Publishes through `publisher`, which must outlive this, as the attribute of that number.
  PublishedMap(Velo::Publisher& publisher, AttributeId attribute) noexcept
      : publisher_(publisher), attribute_(attribute) {}

  [[nodiscard]] const Map& map() const noexcept { return map_; }

  /// Sets the value of `key`, inserting it if absent.
  void is(const Key& key, Value value) {
    const typename Map::Position present = map_.position(key);
    if (present == Map::none) {
      publish(map_.insert(key, std::move(value)).first);
    } else if (!(map_.value(present) == value)) {
      map_.value(present) = std::move(value);
      publish(present);
    }
  }

  /// Removes `key`. Returns whether it was present.
  bool del(const Key& key) {
    const auto erased = map_.erase(key);
    if (!erased) return false;
    publisher_.publish(attribute_, &erased->first, nullptr);
    return true;
  }

 private:
  // Publishes copies, since a subscriber may delete the entry.
  void publish(typename Map::Position at) {
    if (!publisher_.hasSubscribers()) return;
    const Key key = map_.key(at);
    const Value value = map_.value(at);
    publisher_.publish(attribute_, &key, &value);
  }

  Velo::Publisher& publisher_;
  AttributeId attribute_;
  Map map_;
};

}  // namespace Mox
