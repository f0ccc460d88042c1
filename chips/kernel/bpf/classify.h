// The search for the first rule that a packet matches, in the maps.
#pragma once

#include "chips/kernel/bpf/maps.h"
#include "chips/tables/layout/Classify.h"

static __always_inline __u32 setIn(void* elements, const void* key) {
  const __u32* const set = bpf_map_lookup_elem(elements, key);
  return set ? *set : zelNoRules;
}

static __always_inline __u32 setOfAddress(const __u8* address, __u32 isV6, __u32 classifier,
                                          __u32 field) {
  if (isV6) {
    struct ZelV6Element key = {zelElementBits + 128, classifier, field, {}};
    __builtin_memcpy(key.address, address, 16);
    return setIn(&v6Elements, &key);
  }
  struct ZelV4Element key = {zelElementBits + 32, classifier, field, {}};
  __builtin_memcpy(key.address, address, 4);
  return setIn(&v4Elements, &key);
}

static __u32 longestElement(const void* classifier, const struct ZelPacketFields* packet,
                            __u32 field) {
  const __u32 index = *(const __u32*)classifier;
  if (field == zelSourceField) return setOfAddress(packet->source, packet->family, index, field);
  if (field == zelDestinationField)
    return setOfAddress(packet->destination, packet->family, index, field);
  const __u16 number = zelNumberOf(packet, field);
  const __u8 address[4] = {(__u8)(number >> 8), (__u8)number};
  return setOfAddress(address, 0, index, field);
}

/// The set of the packet's value. Its own function, so that the verifier follows each field once.
__noinline __u32 setOfField(const struct ZelPacketFields* packet, __u32 classifier, __u32 field) {
  const struct ZelClassifier* const fields = bpf_map_lookup_elem(&classifiers, &classifier);
  if (!packet || !fields) return zelNoRules;
  const struct ZelElementMemory memory = {longestElement, &classifier};
  return zelSetOf(fields, packet, field, memory);
}

struct Search {
  struct ZelScan scan;
  __u32 classifier;
};

static const struct ZelRule* ruleOf(const void* classifier, __u32 number) {
  const __u32 at = *(const __u32*)classifier * zelRules + number;
  return bpf_map_lookup_elem(&rules, &at);
}

static long nextStep(__u32 index, struct Search* search) {
  const struct ZelRuleMemory memory = {ruleOf, &search->classifier};
  return zelScanStep(&search->scan, memory) != 0;
}

/// The action of the first rule of the classifier that matches, 0 without one.
__noinline __u64 actionFor(const struct ZelPacketFields* packet, __u32 classifier) {
  struct Search search = {};
  search.classifier = classifier;
  search.scan.classifier = bpf_map_lookup_elem(&classifiers, &classifier);
  if (!packet || !search.scan.classifier) return 0;
  search.scan.epoch = zelLoadFirst(&search.scan.classifier->epoch);
#pragma unroll
  for (__u32 field = 0; field < zelFields; ++field) {
    const __u32 number = setOfField(packet, classifier, field);
    search.scan.sets[field] = bpf_map_lookup_elem(&ruleSets, &number);
    if (!search.scan.sets[field]) return 0;
  }
  zelScanBegins(&search.scan);
  bpf_loop(zelScanSteps, nextStep, &search, 0);
  return search.scan.action;
}
