#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "Mox/Hash.h"
#include "Mox/SassertHelper.h"

namespace Mox {

/// The value of a collection that has only keys.
struct NoValue {};

/// The platform's keyed collection.
///
/// Use it for every attribute that is a collection. `Key` has `hash(seed)` and `==`. The seed is
/// that of the process mixed with `Salt`, a constant that differs for each collection, so that keys
/// that collide in one collection do not collide in others. With `NoValue` it is a set.
///
/// Entries are in slots that never move. The `Position` of an entry, and the addresses of its key
/// and value, are valid until the entry is deleted. A separate index, open-addressed with linear
/// probing, holds (hash, position) pairs, so a search reads one entry and growing reads none.
/// Positions of deleted entries are reused, the latest first.
///
/// So an iterator is a position. It stays valid when the entry that it stands on, or any other, is
/// deleted, and when the collection is cleared. It visits every entry that is present at its start
/// and not deleted exactly once. It may visit entries that are inserted during the iteration. The
/// collection must outlive it. The order is that of the slots: the same history gives the same
/// order for every seed.
///
/// Search, insertion and deletion take constant time on average. Iteration takes time proportional
/// to the highest number of entries since the collection was last cleared; empty slots are skipped
/// 32 at a time.
template <class Key, class Value, unsigned Salt>
class HashMap2018 {
  struct Entry {
    Key key;
    [[no_unique_address]] Value value;
  };

 public:
  using Position = std::uint32_t;
  static constexpr Position none = 0xffffffff;

  HashMap2018() = default;
  HashMap2018(const HashMap2018&) = delete;
  HashMap2018& operator=(const HashMap2018&) = delete;
  ~HashMap2018() { destroyEntries(); }

  /// Number of entries.
  [[nodiscard]] unsigned count() const noexcept { return count_; }
  /// Number of entries that fit before the collection grows.
  [[nodiscard]] unsigned capacity() const noexcept { return indexLimit(index_.size()); }

  /// The position of `key`, or `none`.
  [[nodiscard]] Position position(const Key& key) const noexcept {
    const std::size_t place = presentPlace(key);
    return place == absent ? none : index_[place].position;
  }
  [[nodiscard]] bool has(const Key& key) const noexcept { return presentPlace(key) != absent; }
  /// The value of `key`, or null.
  [[nodiscard]] const Value* find(const Key& key) const noexcept {
    return has(key) ? &recent_->value : nullptr;
  }
  [[nodiscard]] Value* find(const Key& key) noexcept {
    return has(key) ? &recent_->value : nullptr;
  }

  /// Key and value at the position of a living entry.
  [[nodiscard]] const Key& key(Position at) const noexcept { return entry(at).key; }
  [[nodiscard]] const Value& value(Position at) const noexcept { return entry(at).value; }
  [[nodiscard]] Value& value(Position at) noexcept { return entry(at).value; }

  /// Inserts `key` with `value` unless `key` is present. Returns the position of the entry, and
  /// whether it was inserted.
  std::pair<Position, bool> insert(const Key& key, const Value& value = Value()) {
    return insertAs(key, value);
  }
  std::pair<Position, bool> insert(Key&& key, Value&& value = Value()) {
    return insertAs(std::move(key), std::move(value));
  }

  /// Deletes `key` and returns its entry; nothing if `key` was absent. Precondition: there is no
  /// `Pin`.
  std::optional<std::pair<Key, Value>> erase(const Key& key) {
    const std::size_t place = presentPlace(key);
    if (place == absent) return std::nullopt;
    const Position at = index_[place].position;
    Entry& gone = entry(at);
    std::optional<std::pair<Key, Value>> erased(std::in_place, std::move(gone.key),
                                                std::move(gone.value));
    takeOut(place);
    discard(at);
    return erased;
  }

  /// While a pin exists, deleted entries stay in their slots, so that their keys and values can
  /// still be used. The collection must outlive it.
  ///
  ///     const Map::Pin pin(map);
  ///     const Map::Position at = map.withdraw(key);
  ///     publish(map.key(at));                    // valid even if `key` is inserted again
  class Pin {
   public:
    explicit Pin(HashMap2018& map) noexcept : map_(map) { ++map.pins_; }
    Pin(const Pin&) = delete;
    Pin& operator=(const Pin&) = delete;
    ~Pin() {
      if (--map_.pins_ == 0 && !map_.withdrawn_.empty()) map_.discardWithdrawn();
    }

   private:
    HashMap2018& map_;
  };

  /// Deletes `key` and returns its position; `none` if `key` was absent. The entry can be read
  /// until the last pin is destroyed. Precondition: there is a `Pin`.
  Position withdraw(const Key& key) {
    const std::size_t place = presentPlace(key);
    if (place == absent) return none;
    const Position at = index_[place].position;
    takeOut(place);
    withdrawn_.push_back(at);
    return at;
  }

  /// Deletes every entry and, without a pin, frees the memory.
  void clear() {
    if (pins_ != 0) return withdrawAll();
    destroyEntries();
    std::vector<std::unique_ptr<Chunk>>().swap(chunks_);
    std::vector<IndexEntry>().swap(index_);
    recent_ = nullptr;
    firstFree_ = none;
    slots_ = 0;
    count_ = 0;
  }

  /// An iteration over the entries. See above for the changes that it allows.
  ///
  ///     for (auto entry = map.iterator(); entry; ++entry) use(entry.key(), entry.value());
  class Iterator {
   public:
    /// Whether it stands on an entry or on the slot of a deleted one; false at the end.
    explicit operator bool() const noexcept { return at_ != none; }
    /// Precondition: it stands on an entry that is not deleted.
    [[nodiscard]] const Key& key() const {
      requireLiving();
      return map_->entry(at_).key;
    }
    [[nodiscard]] const Value& value() const {
      requireLiving();
      return map_->entry(at_).value;
    }
    /// Advances to the next entry. Precondition: it is not at the end.
    Iterator& operator++() {
      requireIterator(at_ != none);
      at_ = map_->firstUsed(at_ + 1, end_);
      return *this;
    }

   private:
    friend class HashMap2018;
    Iterator(const HashMap2018& map, Position from) noexcept
        : map_(&map), end_(map.slots_), at_(map.firstUsed(from, end_)) {}

    static void requireIterator(bool valid) {
      if (!valid) [[unlikely]] {
        SassertHelper("iter_", "Mox/HashMap2018.h", 0, "HashMap2018::Iterator").stream()
            << "iterator does not stand on an entry";
      }
    }
    void requireLiving() const { requireIterator(at_ != none && map_->isUsed(at_)); }

    const HashMap2018* map_;
    Position end_;
    Position at_;
  };

  [[nodiscard]] Iterator iterator() const noexcept { return Iterator(*this, 0); }
  /// An iteration from `key` on; at the end if `key` is absent.
  [[nodiscard]] Iterator iterator(const Key& key) const noexcept {
    return Iterator(*this, position(key));
  }

 private:
  static constexpr Position chunkSlots = 32;
  static constexpr std::size_t smallestIndex = 8;
  static constexpr std::size_t maxKept = 16;  // capacity of `withdrawn_` between pins
  static constexpr std::size_t absent = static_cast<std::size_t>(-1);

  // `used` has a bit per slot; a slot without its bit holds the position of the next free one.
  struct Chunk {
    std::uint32_t used = 0;
    alignas(Entry) std::array<std::byte, sizeof(Entry) * chunkSlots> slots;
  };
  static_assert(sizeof(Entry) >= sizeof(Position));

  struct IndexEntry {
    std::uint32_t hash = 0;
    Position position = none;
  };

  static std::uint32_t hashOf(const Key& key) noexcept {
    return key.hash(HashHelper::hashSeed32() ^ Salt);
  }

  template <class K, class V>
  std::pair<Position, bool> insertAs(K&& key, V&& value) {
    if (isRecent(key)) return {index_[recentPlace_].position, false};
    const std::uint32_t hash = hashOf(key);
    if (index_.empty()) grow();
    std::size_t place = indexPlace(key, hash);
    if (const Position present = index_[place].position; present != none) return {present, false};
    if (count_ == capacity()) {
      grow();
      place = indexPlace(key, hash);
    }
    const Position at = newSlot();
    recent_ = new (slot(at)) Entry{std::forward<K>(key), std::forward<V>(value)};
    recentPlace_ = place;
    chunkOf(at).used |= bitOf(at);
    index_[place] = {hash, at};
    ++count_;
    return {at, true};
  }

  Chunk& chunkOf(Position at) const noexcept { return *chunks_[at / chunkSlots]; }
  static std::uint32_t bitOf(Position at) noexcept { return std::uint32_t{1} << at % chunkSlots; }
  std::byte* slot(Position at) const noexcept {
    return chunkOf(at).slots.data() + at % chunkSlots * sizeof(Entry);
  }
  Entry& entry(Position at) const noexcept {
    return *std::launder(reinterpret_cast<Entry*>(slot(at)));
  }
  bool isUsed(Position at) const noexcept {
    return at < slots_ && (chunkOf(at).used & bitOf(at)) != 0;
  }

  // The first used position in [from, end), `none` when there is none.
  Position firstUsed(Position from, Position end) const noexcept {
    if (end > slots_) end = slots_;
    while (from < end) {
      const std::uint32_t left = chunkOf(from).used >> from % chunkSlots;
      if (left != 0) {
        const Position found = from + static_cast<Position>(std::countr_zero(left));
        return found < end ? found : none;
      }
      from = (from / chunkSlots + 1) * chunkSlots;
    }
    return none;
  }

  Position newSlot() {
    if (firstFree_ != none) {
      const Position at = firstFree_;
      std::memcpy(&firstFree_, slot(at), sizeof(Position));
      return at;
    }
    if (slots_ == chunks_.size() * chunkSlots) [[unlikely]]
      addChunk();
    return slots_++;
  }
  [[gnu::noinline]] void addChunk() { chunks_.push_back(std::make_unique<Chunk>()); }
  // Destroys an entry that is no longer in the index.
  void discard(Position at) noexcept {
    entry(at).~Entry();
    std::memcpy(slot(at), &firstFree_, sizeof(Position));
    firstFree_ = at;
  }
  [[gnu::noinline]] void discardWithdrawn() noexcept {
    for (const Position at : withdrawn_)
      discard(at);
    if (withdrawn_.size() > maxKept) {
      std::vector<Position>().swap(withdrawn_);
    } else {
      withdrawn_.clear();
    }
  }
  void withdrawAll() {
    for (Position at = firstUsed(0, slots_); at != none; at = firstUsed(at + 1, slots_)) {
      withdrawn_.push_back(at);
      chunkOf(at).used &= ~bitOf(at);
    }
    index_.assign(index_.size(), {});
    recent_ = nullptr;
    count_ = 0;
  }
  void takeOut(std::size_t place) noexcept {
    const Position at = index_[place].position;
    chunkOf(at).used &= ~bitOf(at);
    closeIndexGap(place);
    recent_ = nullptr;
    --count_;
  }
  void destroyEntries() noexcept {
    for (Position at = firstUsed(0, slots_); at != none; at = firstUsed(at + 1, slots_)) {
      entry(at).~Entry();
    }
  }

  static unsigned indexLimit(std::size_t places) noexcept {
    return static_cast<unsigned>(places / 2);
  }
  bool isRecent(const Key& key) const noexcept { return recent_ != nullptr && recent_->key == key; }
  // The place of `key` in the index, or `absent`. Makes the entry the recent one.
  std::size_t presentPlace(const Key& key) const noexcept {
    if (isRecent(key)) return recentPlace_;
    if (count_ == 0) return absent;
    const std::size_t place = indexPlace(key, hashOf(key));
    const Position found = index_[place].position;
    if (found == none) return absent;
    recent_ = &entry(found);
    return recentPlace_ = place;
  }
  // The place of `key` in the index, or the free place where it would go.
  std::size_t indexPlace(const Key& key, std::uint32_t hash) const noexcept {
    const std::size_t mask = index_.size() - 1;
    std::size_t place = hash & mask;
    while (index_[place].position != none &&
           !(index_[place].hash == hash && entry(index_[place].position).key == key)) {
      place = (place + 1) & mask;
    }
    return place;
  }
  [[gnu::noinline]] void grow() {
    std::vector<IndexEntry> grown(index_.empty() ? smallestIndex : index_.size() * 2);
    const std::size_t mask = grown.size() - 1;
    for (const IndexEntry& old : index_) {
      if (old.position == none) continue;
      std::size_t place = old.hash & mask;
      while (grown[place].position != none)
        place = (place + 1) & mask;
      grown[place] = old;
    }
    index_.swap(grown);
    recent_ = nullptr;
  }
  // Moves later members of the probe sequence back, so that no search ends too early.
  void closeIndexGap(std::size_t gap) noexcept {
    const std::size_t mask = index_.size() - 1;
    for (std::size_t place = (gap + 1) & mask; index_[place].position != none;
         place = (place + 1) & mask) {
      const std::size_t home = index_[place].hash & mask;
      if (((place - home) & mask) < ((place - gap) & mask)) continue;
      index_[gap] = index_[place];
      gap = place;
    }
    index_[gap] = IndexEntry{};
  }

  std::vector<std::unique_ptr<Chunk>> chunks_;
  std::vector<IndexEntry> index_;
  // The entry that was found or inserted last, and its place in the index; null if it was deleted
  // or moved. A change and the subscribers that are notified of it search for the same key.
  mutable Entry* recent_ = nullptr;
  mutable std::size_t recentPlace_ = 0;
  Position slots_ = 0;  // positions below it have been used since the last clearing
  Position firstFree_ = none;
  unsigned count_ = 0;
  unsigned pins_ = 0;
  std::vector<Position> withdrawn_;  // entries that are deleted and pinned
};

/// A collection of keys alone.
template <class Key, unsigned Salt>
using HashSet2018 = HashMap2018<Key, NoValue, Salt>;

}  // namespace Mox
