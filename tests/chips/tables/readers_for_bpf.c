// The readers as a program of the kernel uses them.
#include "chips/tables/layout/TrieNode.h"

static const struct ZelTrieNode *nodeAt(const void *nodes, __u32 node) {
  return (const struct ZelTrieNode *)nodes + node;
}

__u32 findRoute(const void *nodes, __u32 root, __u32 address) {
  const struct ZelTrieMemory memory = {nodeAt, nodes};
  return zelTrieTarget(zelTrieFind(memory, root, address));
}
