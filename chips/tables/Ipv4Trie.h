#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "chips/tables/GraceClock.h"
#include "chips/tables/Slots.h"
#include "chips/tables/Stores.h"
#include "chips/tables/layout/TrieNode.h"

namespace ChipTables {

/// An IPv4 route of a trie. The address is in host order, and its bits after the length are zero.
struct TrieRoute {
  std::uint32_t address = 0;
  std::uint32_t length = 0;
  std::uint32_t nextHop = 0;

  auto operator<=>(const TrieRoute&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

/// Writes the IPv4 routes of many VRFs, one trie for each, into memory that packets read.
///
/// All is in the memory, and the longest-prefix match is found by at most four loads. At each store
/// a packet finds for its destination the route before the change or the route after it. New nodes
/// are filled before one store links them. Unlinked nodes are not reused before a grace period has
/// ended.
///
/// A trie costs one node of 3 KiB, and more where its routes have more than eight bits.
class Ipv4Trie final {
 public:
  /// Node 0 is never used. The memory and the clock must outlive the trie. The memory is zero, or
  /// has been written by another object of this class: then `adopt` comes first.
  Ipv4Trie(std::span<ZelTrieNode> nodes, const GraceClock& clock, Stores stores = Stores());

  /// The root of a new trie without routes. Nothing if the memory is full.
  [[nodiscard]] std::optional<std::uint32_t> rootIs();
  /// Precondition: no packet begins at the root any more, except those already on their way.
  void rootDel(std::uint32_t root);

  /// Adds a route, or replaces that of the same prefix, and returns the previous next hop, 0 for
  /// none. Returns nothing if the memory is full; then nothing has changed.
  ///
  /// Precondition: the next hop is not 0.
  [[nodiscard]] std::optional<std::uint32_t> routeIs(std::uint32_t root, const TrieRoute& route);
  /// Deletes the route of the prefix and returns its next hop, 0 if there was none.
  std::uint32_t routeDel(std::uint32_t root, std::uint32_t address, std::uint32_t length);

  /// In the order of addresses and lengths.
  [[nodiscard]] std::vector<TrieRoute> routes(std::uint32_t root) const;

  /// Continues with the routes in the memory. Everything but the tries of these roots is free. A
  /// change that another process did not finish is finished.
  void adopt(std::span<const std::uint32_t> roots);

  /// How many nodes are free now.
  [[nodiscard]] std::size_t available() const { return slots_.available(); }

 private:
  struct Place;  // of a route in a node
  struct Path;   // the nodes from the root on

  [[nodiscard]] Path pathTo(std::uint32_t root, std::uint32_t address, std::uint32_t lowest) const;
  [[nodiscard]] std::uint32_t nextHopAt(const ZelTrieNode& node, const Place& place) const;
  std::uint32_t nextHopIs(ZelTrieNode& node, const Place& place, std::uint32_t nextHop,
                          std::uint64_t leaf);
  void paint(std::span<__u64> words, std::uint32_t length, std::uint64_t leaf);
  [[nodiscard]] std::uint32_t grown(std::uint64_t above, std::uint32_t level,
                                    const TrieRoute& route);
  void prune(const Path& path, std::uint32_t address);
  void free(std::uint32_t node);
  void collect(std::uint32_t number, std::uint32_t level, std::uint32_t address,
               std::vector<TrieRoute>& routes) const;
  void adoptNode(std::uint32_t number, std::uint32_t level, std::uint64_t above,
                 std::vector<bool>& taken);
  [[nodiscard]] ZelTrieNode& child(std::uint64_t word) const noexcept {
    return nodes_[zelTrieTarget(word)];
  }

  std::span<ZelTrieNode> nodes_;
  Slots slots_;
  Stores stores_;
};

}  // namespace ChipTables
