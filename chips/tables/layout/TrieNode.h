// A trie of IPv4 routes in flat memory, and its reader. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

#include "chips/tables/layout/Loads.h"

enum {
  zelTrieBits = 8,     // of an address that a node consumes
  zelTrieWords = 256,  // of a node
  zelTrieLevels = 4,   // the root is at level 0
};

/// A node stands for the first `8 * level` bits of an address. Node 0 stands for no node.
///
/// A lookup reads `words` only, one word for the next eight bits. A word is nothing (0), a leaf
/// (the next hop and the length of the longest route), or the number of a child node. The words of
/// a child say what the word above said, except where a longer route is.
///
/// `routes` holds next hops of routes, 0 for no route, by which a writer finds the route that
/// covers a deleted one. The route that adds `n` bits `b` to the bits of the node has the place `1
/// << n | b`, so that the route that covers a place is at half of it. A route that adds all eight
/// bits is the leaf in its word, or, if the word is a child, the route at place 1 of the child.
struct ZelTrieNode {
  __u64 words[zelTrieWords];
  __u32 routes[zelTrieWords];
};

ZEL_INLINE __u64 zelTrieChild(__u32 node) {
  return 1ULL << 63 | node;
}
/// Precondition: the next hop is not 0.
ZEL_INLINE __u64 zelTrieLeaf(__u32 nextHop, __u32 length) {
  return (__u64)length << 32 | nextHop;
}
ZEL_INLINE int zelTrieIsChild(__u64 word) {
  return word >> 63 != 0;
}
/// The number of the child, or the next hop of the leaf. 0 of nothing.
ZEL_INLINE __u32 zelTrieTarget(__u64 word) {
  return (__u32)word;
}
/// Of a leaf. 0 of nothing.
ZEL_INLINE __u32 zelTrieLength(__u64 word) {
  return (__u32)(word >> 32);
}
/// The bits of the address, in host order, that choose the word of a node at the level.
ZEL_INLINE __u32 zelTrieChunk(__u32 address, __u32 level) {
  return address >> (24 - zelTrieBits * level) & (zelTrieWords - 1);
}

/// How a reader reaches the nodes. `nodeAt` may return null for numbers that are no node.
struct ZelTrieMemory {
  const struct ZelTrieNode* (*nodeAt)(const void* nodes, __u32 node);
  const void* nodes;
};

/// The leaf of the longest route in the trie of the root that covers the address, in host order. 0
/// if there is none.
ZEL_INLINE __u64 zelTrieFind(struct ZelTrieMemory memory, __u32 root, __u32 address) {
  __u64 word = zelTrieChild(root);
  for (__u32 level = 0; level < zelTrieLevels && zelTrieIsChild(word); ++level) {
    const struct ZelTrieNode* const node = memory.nodeAt(memory.nodes, zelTrieTarget(word));
    if (!node) return 0;
    word = zelLoad64(&node->words[zelTrieChunk(address, level)]);
  }
  return word;
}
