// Lookups of a destination in the routes of VRFs.
#pragma once

#include <bpf/bpf_endian.h>

#include "chips/kernel/bpf/way.h"

static const struct ZelTrieNode* nodeAt(const void* unused, __u32 node) {
  return bpf_map_lookup_elem(&trieNodes, &node);
}

static __always_inline void findLongest(struct Way* way, __u32 vrf) {
  const struct ZelPacketFields* const fields = &way->header.fields;
  if (fields->family) {
    struct ZelV6RouteKey key = {32 + 128, vrf, {}};
    __builtin_memcpy(key.address, fields->destination, 16);
    const struct ZelV6Route* const route = bpf_map_lookup_elem(&v6Routes, &key);
    if (!route) return;
    way->nextHop = route->nextHop;
    way->length = route->length;
    return;
  }
  const __u64* const root = bpf_map_lookup_elem(&v4Roots, &vrf);
  if (!root) return;
  __u32 address;
  __builtin_memcpy(&address, fields->destination, 4);
  const struct ZelTrieMemory memory = {nodeAt, 0};
  const __u64 leaf = zelTrieFind(memory, (__u32)zelLoad64(root), bpf_ntohl(address));
  way->nextHop = zelTrieTarget(leaf);
  way->length = zelTrieLength(leaf);
}

struct ExactSearch {
  struct Way* way;
  struct ZelExactRouteKey key;
  __u64 lengths[3];
  __u32 longest;  // length of the family
  __u32 covered;  // no shorter route is of use
};

static __always_inline __u32 maskOf(__u32 bits) {
  return bits >= 32 ? ~0U : bpf_htonl(~(~0U >> bits));
}

static long nextLength(__u32 index, struct ExactSearch* search) {
  const __u32 length = search->longest - index;
  if (search->way->nextHop && length <= search->covered) return 1;
  if (!(search->lengths[length >> 6 > 2 ? 2 : length >> 6] >> (length & 63) & 1)) return 0;
  search->key.length = (__u16)length;
#pragma unroll
  for (__u32 i = 0; i < 4; ++i)
    search->key.address[i] &= length <= 32 * i ? 0 : maskOf(length - 32 * i);
  const __u32* const nextHop = bpf_map_lookup_elem(&exactRoutes, &search->key);
  if (!nextHop) return 0;
  search->way->nextHop = *nextHop;
  search->way->length = length;
  return 1;
}

static __always_inline void findExact(struct Way* way, const struct ZelWalkStep* step) {
  const struct ZelPacketFields* const fields = &way->header.fields;
  struct ExactSearch search = {};
  search.way = way;
  search.key.vrf = step->vrf;
  search.key.isV6 = fields->family;
  search.longest = fields->family ? 128 : 32;
  search.covered = way->length;
  __builtin_memcpy(search.key.address, fields->destination, 16);
  search.lengths[0] = fields->family ? step->v6Lengths[0] : step->v4Lengths;
  search.lengths[1] = fields->family ? step->v6Lengths[1] : 0;
  search.lengths[2] = fields->family ? step->v6Lengths[2] : 0;
  if (!(search.lengths[0] | search.lengths[1] | search.lengths[2])) return;
  bpf_loop(129, nextLength, &search, 0);
}

/// Looks the destination up by one step of a walk: the longest route in the longest-prefix tables,
/// and of exact match in the lengths of the step.
__noinline int lookUp(struct Way* way, const struct ZelWalkStep* step) {
  if (!way || !step) return 0;
  way->nextHop = 0;
  way->length = 0;
  way->vrf = step->vrf;
  findLongest(way, step->vrf);
  findExact(way, step);
  return 0;
}
