#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Ip/Prefix.h"
#include "chips/soft/routes/AddressBits.h"

namespace Chips {

/// Finds the longest of very many prefixes that cover an address.
///
/// A walk over the lengths of a map costs one search for each length. This costs one step for six
/// bits, fewer where prefixes are sparse, and reads memory that is close together.
///
/// A node stands for the first `6 * level` bits of an address. It holds the prefixes that are one
/// to six bits longer. Longer prefixes are behind entries, one for each value of the next six bits.
/// An entry is a single prefix, or leads to a node that holds at least two prefixes or entries.
/// That node may be several levels lower, so the entry is compared with the address before it is
/// followed.
///
/// All prefixes and addresses of one trie are of one family. Values are small and cheap to copy.
template <class Value>
class PrefixTrie final {
 public:
  struct Match {
    Value value;
    unsigned length;
  };

  void valueIs(const Ip::Prefix& prefix, Value value) {
    if (prefix.length == 0) {
      everywhere_ = value;
    } else {
      valueIs(root_, 0, {bitsOf(prefix.address), prefix.length, value, nullptr});
    }
  }

  /// Returns whether there was one.
  bool valueDel(const Ip::Prefix& prefix) {
    if (prefix.length == 0) return std::exchange(everywhere_, std::nullopt).has_value();
    return valueDel(root_, 0, bitsOf(prefix.address), prefix.length);
  }

  [[nodiscard]] std::optional<Match> longestMatch(const Ip::Address& address) const {
    const AddressBits bits = bitsOf(address);
    const Node* best = nullptr;
    unsigned bestLevel = 0;
    const Node* node = &root_;
    for (unsigned level = 0; node != nullptr;) {
      const unsigned chunk = chunkOf(bits, level);
      if (node->covers(chunk)) {
        best = node;
        bestLevel = level;
      }
      const Entry* const entry = node->entryFor(chunk);
      if (entry == nullptr || entry->path.common(bits) < entry->length) break;
      if (!entry->node) return Match{entry->value, entry->length};
      node = entry->node.get();
      level = entry->level();
    }
    if (best != nullptr) return best->longest(bestLevel, chunkOf(bits, bestLevel));
    if (everywhere_) return Match{*everywhere_, 0};
    return std::nullopt;
  }

 private:
  static constexpr unsigned stride = 6;

  static constexpr std::uint64_t bitOf(unsigned number) noexcept {
    return std::uint64_t{1} << number;
  }
  static bool has(std::uint64_t set, unsigned bit) noexcept { return (set & bitOf(bit)) != 0; }
  static std::ptrdiff_t rank(std::uint64_t set, unsigned bit) noexcept {
    return std::popcount(set & (bitOf(bit) - 1));
  }
  static unsigned chunkOf(const AddressBits& bits, unsigned level) noexcept {
    return bits.from(level * stride, stride);
  }
  // The level of the node that prefixes of the length belong in.
  static unsigned levelOf(unsigned length) noexcept { return (length - 1) / stride; }

  // The place of a prefix within its node: that of `length` bits `bits` has the number
  // `1 << length | bits`, so that longer ones come later. Those from 64 on are whole strides.
  using Slot = unsigned;

  static Slot slotOf(const AddressBits& bits, unsigned length) noexcept {
    const unsigned start = levelOf(length) * stride;
    return 1U << (length - start) | bits.from(start, length - start);
  }
  static unsigned lengthOf(Slot slot) noexcept {
    return static_cast<unsigned>(std::bit_width(slot)) - 1;
  }

  // For each six bits, the slots below 64 of the prefixes that cover them.
  static constexpr std::array<std::uint64_t, 64> coveringShort = [] {
    std::array<std::uint64_t, 64> table{};
    for (unsigned chunk = 0; chunk < 64; ++chunk) {
      for (unsigned length = 1; length < stride; ++length)
        table[chunk] |= bitOf(1U << length | chunk >> (stride - length));
    }
    return table;
  }();

  struct Node;

  struct Entry {
    AddressBits path;            // only the first `length` bits are looked at
    unsigned length;             // of the single prefix, or of the node's common first bits
    Value value;                 // of the single prefix
    std::unique_ptr<Node> node;  // null for a single prefix

    [[nodiscard]] unsigned level() const noexcept { return length / stride; }
  };

  struct Node {
    std::uint64_t shorts = 0;      // slots below 64 that have values
    std::uint64_t wholes = 0;      // slots from 64 on
    std::uint64_t branches = 0;    // the six bits that entries begin with
    std::vector<Entry> entries{};  // in the order of these
    std::vector<Value> values{};   // in the order of their slots

    [[nodiscard]] bool covers(unsigned chunk) const noexcept {
      return has(wholes, chunk) || (shorts & coveringShort[chunk]) != 0;
    }
    // Precondition: there is one that covers the chunk.
    [[nodiscard]] Match longest(unsigned level, unsigned chunk) const {
      const Slot slot = has(wholes, chunk) ? 64 + chunk : longestShort(chunk);
      return {*(values.begin() + rankOf(slot)), level * stride + lengthOf(slot)};
    }
    [[nodiscard]] Slot longestShort(unsigned chunk) const noexcept {
      return static_cast<unsigned>(std::bit_width(shorts & coveringShort[chunk])) - 1;
    }
    [[nodiscard]] const Entry* entryFor(unsigned chunk) const noexcept {
      return has(branches, chunk) ? &*(entries.begin() + rank(branches, chunk)) : nullptr;
    }

    [[nodiscard]] bool hasSlot(Slot slot) const noexcept {
      return slot < 64 ? has(shorts, slot) : has(wholes, slot - 64);
    }
    [[nodiscard]] std::ptrdiff_t rankOf(Slot slot) const noexcept {
      return slot < 64 ? rank(shorts, slot) : std::popcount(shorts) + rank(wholes, slot - 64);
    }
    void toggle(Slot slot) noexcept { (slot < 64 ? shorts : wholes) ^= bitOf(slot % 64); }
    void valueIs(Slot slot, Value value) {
      const auto at = values.begin() + rankOf(slot);
      if (hasSlot(slot)) {
        *at = value;
      } else {
        values.insert(at, value);
        toggle(slot);
      }
    }
    bool valueDel(Slot slot) {
      if (!hasSlot(slot)) return false;
      values.erase(values.begin() + rankOf(slot));
      toggle(slot);
      return true;
    }
    // The one prefix of a node with one value and no entries.
    [[nodiscard]] Slot onlySlot() const noexcept {
      return static_cast<unsigned>(shorts != 0 ? std::countr_zero(shorts)
                                               : 64 + std::countr_zero(wholes));
    }
  };

  // `added` is a single prefix, and begins as `node` does.
  static void valueIs(Node& node, unsigned level, Entry added) {
    if (levelOf(added.length) == level) {
      node.valueIs(slotOf(added.path, added.length), added.value);
      return;
    }
    const unsigned chunk = chunkOf(added.path, level);
    const auto at = node.entries.begin() + rank(node.branches, chunk);
    if (!has(node.branches, chunk)) {
      node.entries.insert(at, std::move(added));
      node.branches |= bitOf(chunk);
    } else if (!at->node && at->length == added.length && at->path == added.path) {
      at->value = added.value;
    } else {
      openUpTo(*at, added);
      valueIs(*at->node, at->level(), std::move(added));
    }
  }

  // Makes the entry lead to a node that can hold `added`.
  static void openUpTo(Entry& entry, const Entry& added) {
    const unsigned present = entry.node ? entry.level() : levelOf(entry.length);
    const unsigned fork =
        std::min({levelOf(added.length), present, entry.path.common(added.path) / stride});
    if (entry.node && fork == present) return;
    Entry above{entry.path, fork * stride, Value(), std::make_unique<Node>()};
    if (entry.node) {
      above.node->branches = bitOf(chunkOf(entry.path, fork));
      above.node->entries.push_back(std::move(entry));
    } else {
      valueIs(*above.node, fork, std::move(entry));
    }
    entry = std::move(above);
  }

  static bool valueDel(Node& node, unsigned level, const AddressBits& path, unsigned length) {
    if (levelOf(length) == level) return node.valueDel(slotOf(path, length));
    const unsigned chunk = chunkOf(path, level);
    if (!has(node.branches, chunk)) return false;
    const auto at = node.entries.begin() + rank(node.branches, chunk);
    if (at->path.common(path) < at->length) return false;
    if (!at->node) {
      if (at->length != length) return false;
      node.entries.erase(at);
      node.branches ^= bitOf(chunk);
      return true;
    }
    if (levelOf(length) < at->level()) return false;
    if (!valueDel(*at->node, at->level(), path, length)) return false;
    closeUp(*at);
    return true;
  }

  // Removes the node of the entry if it holds only one prefix or one entry.
  static void closeUp(Entry& entry) {
    Node& node = *entry.node;
    if (node.values.size() + node.entries.size() != 1) return;
    if (node.values.empty()) {
      Entry only = std::move(node.entries.front());
      entry = std::move(only);
    } else {
      const Slot slot = node.onlySlot();
      const unsigned start = entry.length;
      entry.path = entry.path.withAt(start, slot, lengthOf(slot));
      entry.length = start + lengthOf(slot);
      entry.value = node.values.front();
      entry.node.reset();
    }
  }

  Node root_;
  std::optional<Value> everywhere_;  // of the prefix of no bits
};

}  // namespace Chips
