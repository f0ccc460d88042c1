// Why: the longest of very many prefixes that cover an address is wanted for every packet. Walking
// the lengths of a map costs one search per length; this costs one step per six bits, fewer where
// few prefixes are.
// Always: a node stands for the first `6 * level` bits of an address. Below the root there is no
// node without a value that has fewer than two children: chains of such are left out, which is why
// a child may be several levels below its parent and is to be compared with the address before it
// is entered.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "Ip/Prefix.h"
#include "chips/soft/routes/AddressBits.h"

namespace SoftChip {

// All prefixes and addresses of one trie are of one family. Values are small and cheap to copy.
template <class Value>
class PrefixTrie final {
 public:
  struct Match {
    Value value;
    unsigned length;
  };

  void valueIs(const Ip::Prefix& prefix, Value value) {
    Node& node = nodeFor(bitsOf(prefix.address), levelOf(prefix));
    const unsigned bit = bitOf(prefix);
    const auto at = node.values.begin() + rank(node.held, bit);
    if (has(node.held, bit)) {
      *at = value;
    } else {
      node.values.insert(at, value);
      node.held |= one << bit;
    }
  }

  // True when there was one.
  bool valueDel(const Ip::Prefix& prefix) {
    return valueDel(root_, bitsOf(prefix.address), levelOf(prefix), bitOf(prefix));
  }

  [[nodiscard]] std::optional<Match> longestMatch(const Ip::Address& address) const {
    const AddressBits bits = bitsOf(address);
    const Node* best = nullptr;
    std::uint64_t bestHeld = 0;
    for (const Node* node = &root_; node != nullptr; node = childTowards(*node, bits)) {
      const std::uint64_t held = node->held & covering[chunkOf(bits, node->level)];
      if (held == 0) continue;
      best = node;
      bestHeld = held;
    }
    if (best == nullptr) return std::nullopt;
    const auto bit = static_cast<unsigned>(std::bit_width(bestHeld)) - 1;
    return Match{best->values[static_cast<std::size_t>(rank(best->held, bit))],
                 best->level * stride + static_cast<unsigned>(std::bit_width(bit)) - 1};
  }

 private:
  static constexpr unsigned stride = 6;
  static constexpr std::uint64_t one = 1;

  // The prefixes that end within the stride of a node are numbered: that of `length` bits `bits`
  // is `1 << length | bits`, so that longer ones come later.
  struct Node {
    AddressBits path;  // only the first `6 * level` bits are looked at
    unsigned level = 0;
    std::uint64_t held = 0;        // the prefixes that have values
    std::uint64_t branches = 0;    // the next six bits that children begin with
    std::vector<Value> values{};   // in the order of their bits
    std::vector<Node> children{};  // the same
  };

  // For each six bits, the prefixes that cover them.
  static constexpr std::array<std::uint64_t, 64> covering = [] {
    std::array<std::uint64_t, 64> table{};
    for (unsigned chunk = 0; chunk < 64; ++chunk) {
      for (unsigned length = 0; length < stride; ++length)
        table[chunk] |= one << (1U << length | chunk >> (stride - length));
    }
    return table;
  }();

  static bool has(std::uint64_t set, unsigned bit) noexcept { return (set >> bit & 1) != 0; }
  static std::ptrdiff_t rank(std::uint64_t set, unsigned bit) noexcept {
    return std::popcount(set & ((one << bit) - 1));
  }
  static unsigned levelOf(const Ip::Prefix& prefix) noexcept { return prefix.length / stride; }
  static unsigned bitOf(const Ip::Prefix& prefix) noexcept {
    const unsigned length = prefix.length % stride;
    if (length == 0) return 1;
    return 1U << length | bitsOf(prefix.address).from(levelOf(prefix) * stride, length);
  }
  static unsigned chunkOf(const AddressBits& bits, unsigned level) noexcept {
    return bits.from(level * stride, stride);
  }
  static bool covers(const Node& node, const AddressBits& bits) noexcept {
    return node.path.common(bits) >= node.level * stride;
  }

  static const Node* childTowards(const Node& node, const AddressBits& bits) noexcept {
    const unsigned chunk = chunkOf(bits, node.level);
    if (!has(node.branches, chunk)) return nullptr;
    const Node& child = node.children[static_cast<std::size_t>(rank(node.branches, chunk))];
    return covers(child, bits) ? &child : nullptr;
  }

  Node& nodeFor(const AddressBits& bits, unsigned level) {
    Node* node = &root_;
    while (node->level < level)
      node = &madeChild(*node, bits, level);
    return *node;
  }

  // The child of `node` in the direction of `bits`, made if need be; not below `level`.
  static Node& madeChild(Node& node, const AddressBits& bits, unsigned level) {
    const unsigned chunk = chunkOf(bits, node.level);
    const auto at = node.children.begin() + rank(node.branches, chunk);
    if (!has(node.branches, chunk)) {
      node.branches |= one << chunk;
      return *node.children.insert(at, Node{bits, level});
    }
    const unsigned fork = std::min({level, at->level, at->path.common(bits) / stride});
    if (fork < at->level) insertAbove(*at, fork);
    return *at;
  }

  static void insertAbove(Node& node, unsigned level) {
    Node above{node.path, level};
    above.branches = one << chunkOf(node.path, level);
    above.children.push_back(std::move(node));
    node = std::move(above);
  }

  static bool valueDel(Node& node, const AddressBits& bits, unsigned level, unsigned bit) {
    if (node.level == level) return valueDel(node, bit);
    const unsigned chunk = chunkOf(bits, node.level);
    if (!has(node.branches, chunk)) return false;
    const auto child = node.children.begin() + rank(node.branches, chunk);
    if (child->level > level || !covers(*child, bits)) return false;
    if (!valueDel(*child, bits, level, bit)) return false;
    if (child->held != 0) return true;
    if (child->branches == 0) {
      node.children.erase(child);
      node.branches &= ~(one << chunk);
    } else if (child->children.size() == 1) {
      Node only = std::move(child->children.front());
      *child = std::move(only);
    }
    return true;
  }

  static bool valueDel(Node& node, unsigned bit) {
    if (!has(node.held, bit)) return false;
    node.values.erase(node.values.begin() + rank(node.held, bit));
    node.held &= ~(one << bit);
    return true;
  }

  Node root_;
};

}  // namespace SoftChip
