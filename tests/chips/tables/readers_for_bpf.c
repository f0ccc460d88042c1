// The readers as a program of the kernel uses them.
#include "chips/tables/layout/Classify.h"
#include "chips/tables/layout/TrieNode.h"

static const struct ZelTrieNode* nodeAt(const void* nodes, __u32 node) {
  return (const struct ZelTrieNode*)nodes + node;
}

static const struct ZelRule* ruleAt(const void* rules, __u32 number) {
  return (const struct ZelRule*)rules + number;
}

static __u32 longest(const void* elements, const struct ZelPacketFields* packet, __u32 field) {
  return ((const __u32*)elements)[zelNumberOf(packet, field)];
}

__u32 findRoute(const void* nodes, __u32 root, __u32 address) {
  const struct ZelTrieMemory memory = {nodeAt, nodes};
  return zelTrieTarget(zelTrieFind(memory, root, address));
}

__u32 findSet(const struct ZelClassifier* classifier, const struct ZelPacketFields* packet,
              __u32 field, const void* elements) {
  const struct ZelElementMemory memory = {longest, elements};
  return zelSetOf(classifier, packet, field, memory);
}

void beginScan(struct ZelScan* scan) {
  scan->epoch = zelLoadFirst(&scan->classifier->epoch);
  zelScanBegins(scan);
}

int stepScan(struct ZelScan* scan, const void* rules) {
  const struct ZelRuleMemory memory = {ruleAt, rules};
  return zelScanStep(scan, memory);
}
