#include "chips/tables/Ipv4Trie.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace ChipTables {
namespace {

constexpr std::uint32_t firstWhole =
    zelTrieWords;  // the place of the first route of all eight bits

bool isRouteOf(std::uint64_t word, std::uint32_t length) noexcept {
  return word != 0 && !zelTrieIsChild(word) && zelTrieLength(word) == length;
}

std::uint32_t bitsOf(std::uint32_t at) noexcept {
  return static_cast<std::uint32_t>(std::bit_width(at)) - 1;
}

// The longest route of the node that covers the place, or the place's own. Otherwise `above`.
std::uint64_t leafFrom(const ZelTrieNode& node, std::uint32_t level, std::uint32_t at,
                       std::uint64_t above) noexcept {
  for (; at != 0; at /= 2) {
    if (node.routes[at] != 0) return zelTrieLeaf(node.routes[at], level * zelTrieBits + bitsOf(at));
  }
  return above;
}

// Whether the word above can say what all words of the node say.
bool isBare(const ZelTrieNode& node, std::uint32_t level) noexcept {
  const std::uint64_t word = node.words[0];
  return !zelTrieIsChild(word) && zelTrieLength(word) <= level * zelTrieBits &&
         std::all_of(std::begin(node.words), std::end(node.words),
                     [word](std::uint64_t other) { return other == word; }) &&
         std::all_of(std::begin(node.routes) + 2, std::end(node.routes),
                     [](std::uint32_t nextHop) { return nextHop == 0; });
}

}  // namespace

struct Ipv4Trie::Place {
  std::uint32_t level;   // of the node
  std::uint32_t at;      // as in `routes` of the node; from `firstWhole` on one of its words
  std::uint32_t length;  // of the route

  Place(std::uint32_t address, std::uint32_t routeLength)
      : level(routeLength == 0 ? 0 : (routeLength - 1) / zelTrieBits), length(routeLength) {
    const std::uint32_t bits = length - level * zelTrieBits;
    at = 1U << bits | zelTrieChunk(address, level) >> (zelTrieBits - bits);
  }

  [[nodiscard]] bool isWhole() const noexcept { return at >= firstWhole; }
  [[nodiscard]] std::uint32_t firstWord() const noexcept {
    return (at << (zelTrieBits - bitsOf(at))) - firstWhole;
  }
  [[nodiscard]] std::uint32_t words() const noexcept { return firstWhole >> bitsOf(at); }
};

struct Ipv4Trie::Path {
  std::array<std::uint32_t, zelTrieLevels> nodes{};
  std::uint32_t levels = 0;

  [[nodiscard]] bool reaches(std::uint32_t level) const noexcept { return level < levels; }
};

Ipv4Trie::Ipv4Trie(std::span<ZelTrieNode> nodes, const GraceClock& clock, Stores stores)
    : nodes_(nodes),
      slots_(static_cast<std::uint32_t>(nodes.size()) - 1, clock),
      stores_(std::move(stores)) {}

std::optional<std::uint32_t> Ipv4Trie::rootIs() {
  const auto root = slots_.take();
  if (root) nodes_[*root] = {};
  return root;
}

void Ipv4Trie::rootDel(std::uint32_t root) {
  free(root);
}

void Ipv4Trie::free(std::uint32_t node) {
  for (const std::uint64_t word : nodes_[node].words) {
    if (zelTrieIsChild(word)) free(zelTrieTarget(word));
  }
  slots_.giveBack(node);
}

std::optional<std::uint32_t> Ipv4Trie::routeIs(std::uint32_t root, const TrieRoute& route) {
  const Place place(route.address, route.length);
  const Path path = pathTo(root, route.address, place.level);
  if (path.reaches(place.level)) {
    return nextHopIs(nodes_[path.nodes[place.level]], place, route.nextHop,
                     zelTrieLeaf(route.nextHop, route.length));
  }
  if (slots_.available() + path.levels <= place.level) return std::nullopt;
  const std::uint32_t lowest = path.levels - 1;
  __u64& word = nodes_[path.nodes[lowest]].words[zelTrieChunk(route.address, lowest)];
  stores_.store(word, zelTrieChild(grown(word, path.levels, route)));
  return 0;
}

std::uint32_t Ipv4Trie::routeDel(std::uint32_t root, std::uint32_t address, std::uint32_t length) {
  const Place place(address, length);
  const Path path = pathTo(root, address, place.level);
  if (!path.reaches(place.level)) return 0;
  ZelTrieNode& node = nodes_[path.nodes[place.level]];
  const std::uint32_t nextHop = nextHopAt(node, place);
  if (nextHop == 0) return 0;
  std::uint64_t above = 0;
  for (std::uint32_t level = 0; level < place.level; ++level) {
    const std::uint32_t whole = firstWhole + zelTrieChunk(address, level);
    above = leafFrom(nodes_[path.nodes[level]], level, whole / 2, above);
  }
  nextHopIs(node, place, 0, leafFrom(node, place.level, place.at / 2, above));
  prune(path, address);
  return nextHop;
}

Ipv4Trie::Path Ipv4Trie::pathTo(std::uint32_t root, std::uint32_t address,
                                std::uint32_t lowest) const {
  Path path;
  for (std::uint64_t word = zelTrieChild(root); zelTrieIsChild(word);) {
    path.nodes[path.levels] = zelTrieTarget(word);
    word = child(word).words[zelTrieChunk(address, path.levels)];
    if (path.levels++ == lowest) break;
  }
  return path;
}

std::uint32_t Ipv4Trie::nextHopAt(const ZelTrieNode& node, const Place& place) const {
  if (!place.isWhole()) return node.routes[place.at];
  const std::uint64_t word = node.words[place.firstWord()];
  if (zelTrieIsChild(word)) return child(word).routes[1];
  return isRouteOf(word, place.length) ? zelTrieTarget(word) : 0;
}

// Sets the next hop of the place, and the leaf of all words that no longer route covers. A process
// that ends in between leaves the route set, so that its successor can set the words.
std::uint32_t Ipv4Trie::nextHopIs(ZelTrieNode& node, const Place& place, std::uint32_t nextHop,
                                  std::uint64_t leaf) {
  const std::uint32_t previous = nextHopAt(node, place);
  if (!place.isWhole()) {
    stores_.store(node.routes[place.at], nextHop);
  } else if (const std::uint64_t word = node.words[place.firstWord()]; zelTrieIsChild(word)) {
    stores_.store(child(word).routes[1], nextHop);
  }
  paint({node.words + place.firstWord(), place.words()}, place.length, leaf);
  return previous;
}

void Ipv4Trie::paint(std::span<__u64> words, std::uint32_t length, std::uint64_t leaf) {
  for (__u64& word : words) {
    if (zelTrieIsChild(word)) {
      paint(child(word).words, length, leaf);
    } else if (zelTrieLength(word) <= length) {
      stores_.storeChange(word, leaf);
    }
  }
}

// A node that no word links yet, in place of the word above. It has the route.
std::uint32_t Ipv4Trie::grown(std::uint64_t above, std::uint32_t level, const TrieRoute& route) {
  const std::uint32_t number = slots_.take().value();
  ZelTrieNode& node = nodes_[number];
  std::fill(std::begin(node.words), std::end(node.words), above);
  std::fill(std::begin(node.routes), std::end(node.routes), 0);
  if (isRouteOf(above, level * zelTrieBits)) node.routes[1] = zelTrieTarget(above);
  const Place place(route.address, route.length);
  if (place.level == level) {
    nextHopIs(node, place, route.nextHop, zelTrieLeaf(route.nextHop, route.length));
  } else {
    node.words[zelTrieChunk(route.address, level)] = zelTrieChild(grown(above, level + 1, route));
  }
  return number;
}

void Ipv4Trie::prune(const Path& path, std::uint32_t address) {
  for (std::uint32_t level = path.levels - 1; level > 0; --level) {
    const ZelTrieNode& node = nodes_[path.nodes[level]];
    if (!isBare(node, level)) return;
    ZelTrieNode& parent = nodes_[path.nodes[level - 1]];
    stores_.store(parent.words[zelTrieChunk(address, level - 1)], node.words[0]);
    slots_.giveBack(path.nodes[level]);
  }
}

std::vector<TrieRoute> Ipv4Trie::routes(std::uint32_t root) const {
  std::vector<TrieRoute> routes;
  collect(root, 0, 0, routes);
  std::sort(routes.begin(), routes.end());
  return routes;
}

void Ipv4Trie::collect(std::uint32_t number, std::uint32_t level, std::uint32_t address,
                       std::vector<TrieRoute>& routes) const {
  const ZelTrieNode& node = nodes_[number];
  const std::uint32_t shift = 24 - level * zelTrieBits;
  for (std::uint32_t at = 1; at < firstWhole; ++at) {
    if (node.routes[at] == 0) continue;
    const std::uint32_t first = (at << (zelTrieBits - bitsOf(at))) - firstWhole;
    routes.push_back({address | first << shift, level * zelTrieBits + bitsOf(at), node.routes[at]});
  }
  for (std::uint32_t chunk = 0; chunk < zelTrieWords; ++chunk) {
    const std::uint64_t word = node.words[chunk];
    const std::uint32_t whole = (level + 1) * zelTrieBits;
    if (zelTrieIsChild(word)) {
      collect(zelTrieTarget(word), level + 1, address | chunk << shift, routes);
    } else if (isRouteOf(word, whole)) {
      routes.push_back({address | chunk << shift, whole, zelTrieTarget(word)});
    }
  }
}

void Ipv4Trie::adopt(std::span<const std::uint32_t> roots) {
  std::vector<bool> taken(nodes_.size());
  for (const std::uint32_t root : roots)
    adoptNode(root, 0, 0, taken);
  slots_.takenIs(taken);
}

// `above` is the leaf of the route that covers the node.
void Ipv4Trie::adoptNode(std::uint32_t number, std::uint32_t level, std::uint64_t above,
                         std::vector<bool>& taken) {
  taken[number] = true;
  ZelTrieNode& node = nodes_[number];
  for (std::uint32_t chunk = 0; chunk < zelTrieWords; ++chunk) {
    __u64& word = node.words[chunk];
    const std::uint64_t leaf = leafFrom(node, level, (firstWhole + chunk) / 2, above);
    if (zelTrieIsChild(word)) {
      adoptNode(zelTrieTarget(word), level + 1, leaf, taken);
    } else if (!isRouteOf(word, (level + 1) * zelTrieBits)) {
      stores_.storeChange(word, leaf);
    }
  }
}

}  // namespace ChipTables
