// The maps that the programs read and count in. Sizes are set before they are loaded.
#pragma once

#include <linux/bpf.h>

#include <bpf/bpf_helpers.h>

#include "chips/kernel/layout/Counters.h"
#include "chips/kernel/layout/Element.h"
#include "chips/kernel/layout/NextHop.h"
#include "chips/kernel/layout/Port.h"
#include "chips/kernel/layout/Program.h"
#include "chips/tables/layout/Classifier.h"
#include "chips/tables/layout/TrieNode.h"

// Arrays that a process writes by stores into mapped memory.
#define ZEL_MAPPED(name, valueType)    \
  struct {                             \
    __uint(type, BPF_MAP_TYPE_ARRAY);  \
    __uint(map_flags, BPF_F_MMAPABLE); \
    __type(key, __u32);                \
    __type(value, valueType);          \
    __uint(max_entries, 2);            \
  } name SEC(".maps")

// Tables that a process writes by calls.
#define ZEL_TABLE(name, mapType, keyType, valueType, flags) \
  struct {                                                  \
    __uint(type, mapType);                                  \
    __uint(map_flags, flags);                               \
    __type(key, keyType);                                   \
    __type(value, valueType);                               \
    __uint(max_entries, 1024);                              \
  } name SEC(".maps")

#define ZEL_COUNTERS(name)                   \
  struct {                                   \
    __uint(type, BPF_MAP_TYPE_PERCPU_ARRAY); \
    __type(key, __u32);                      \
    __type(value, struct ZelCounter);        \
    __uint(max_entries, 1024);               \
  } name SEC(".maps")

ZEL_TABLE(ports, BPF_MAP_TYPE_HASH, struct ZelPortKey, struct ZelPort, 0);
ZEL_MAPPED(classifiers, struct ZelClassifier);
ZEL_MAPPED(rules, struct ZelRule);  // those of classifier n from zelRules * n on
ZEL_MAPPED(ruleSets, struct ZelRuleSet);
ZEL_TABLE(v4Elements, BPF_MAP_TYPE_LPM_TRIE, struct ZelV4Element, __u32, BPF_F_NO_PREALLOC);
ZEL_TABLE(v6Elements, BPF_MAP_TYPE_LPM_TRIE, struct ZelV6Element, __u32, BPF_F_NO_PREALLOC);
ZEL_MAPPED(resources, __u64);  // the slot of the program of each resource, 0 without one
ZEL_MAPPED(programs, struct ZelProgram);
ZEL_MAPPED(v4Roots, __u64);  // of the trie of each VRF, 0 without one
ZEL_MAPPED(trieNodes, struct ZelTrieNode);
ZEL_TABLE(v6Routes, BPF_MAP_TYPE_LPM_TRIE, struct ZelV6RouteKey, struct ZelV6Route,
          BPF_F_NO_PREALLOC);
ZEL_TABLE(exactRoutes, BPF_MAP_TYPE_HASH, struct ZelExactRouteKey, __u32, 0);
ZEL_MAPPED(nextHops, struct ZelNextHop);
ZEL_COUNTERS(ruleCounters);
ZEL_COUNTERS(vrfCounters);
ZEL_COUNTERS(portCounters);
ZEL_COUNTERS(reasonCounters);

static __always_inline void count(void* counters, __u32 index, __u32 bytes) {
  struct ZelCounter* const counter = bpf_map_lookup_elem(counters, &index);
  if (!counter) return;
  ++counter->packets;
  counter->bytes += bytes;
}
