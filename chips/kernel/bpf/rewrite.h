// Changes of a packet that leaves. A packet that is dropped or handed to the kernel is not changed.
#pragma once

#include <linux/if_ether.h>

#include <bpf/bpf_endian.h>

#include "chips/kernel/bpf/parse.h"

enum { vlanBytes = 4 };

/// What an IPv4 checksum becomes when one word that it covers changes.
static __always_inline __u16 checksumAfter(__u16 checksum, __u16 before, __u16 after) {
  return (__u16)~folded((__u32)(__u16)~checksum + (__u16)~before + after);
}

static __always_inline void word16Is(__u8* bytes, __u16 word) {
  bytes[0] = (__u8)(word >> 8);
  bytes[1] = (__u8)word;
}

/// Writes the hop limit and the congestion marks of the header. Returns 0 if done.
__noinline int headerIs(struct xdp_md* ctx, const struct Header* header, __u32 hopLimit) {
  __u8 bytes[12];
  if (!header || bpf_xdp_load_bytes(ctx, header->at, bytes, sizeof bytes)) return 1;
  if (header->fields.family) {
    bytes[1] = (__u8)((bytes[1] & 0xcf) | header->ecn << 4);
    bytes[7] = (__u8)hopLimit;
  } else {
    const __u16 traffic = word16(bytes);
    const __u16 live = word16(bytes + 8);
    bytes[1] = (__u8)((bytes[1] & 0xfc) | header->ecn);
    bytes[8] = (__u8)hopLimit;
    const __u16 checksum = checksumAfter(word16(bytes + 10), traffic, word16(bytes));
    word16Is(bytes + 10, checksumAfter(checksum, live, word16(bytes + 8)));
  }
  return bpf_xdp_store_bytes(ctx, header->at, bytes, sizeof bytes) != 0;
}

/// Puts the frame's header for the next hop in front of the packet, and removes all in front of it
/// and behind the packet. Returns 0 if done.
__noinline int frameIs(struct xdp_md* ctx, const struct Way* way, const struct ZelNextHop* hop) {
  if (!way || !hop) return 1;
  const struct Header* const header = &way->header;
  const __u16 type = bpf_htons(header->fields.family ? ETH_P_IPV6 : ETH_P_IP);
  const __u32 frameHeader = hop->vlan ? ETH_HLEN + vlanBytes : ETH_HLEN;
  __u8 bytes[ETH_HLEN + vlanBytes];
  __builtin_memcpy(bytes, hop->destination, 6);
  __builtin_memcpy(bytes + 6, hop->source, 6);
  const int padding = (int)(way->end - header->at - header->fields.length);
  if (padding > 0 && bpf_xdp_adjust_tail(ctx, -padding)) return 1;
  const int cut = (int)header->at - (int)frameHeader;
  if (cut != 0 && bpf_xdp_adjust_head(ctx, cut)) return 1;
  if (!hop->vlan) {
    __builtin_memcpy(bytes + 12, &type, 2);
    return bpf_xdp_store_bytes(ctx, 0, bytes, ETH_HLEN) != 0;
  }
  word16Is(bytes + 12, ETH_P_8021Q);
  word16Is(bytes + 14, hop->vlan);
  __builtin_memcpy(bytes + 16, &type, 2);
  return bpf_xdp_store_bytes(ctx, 0, bytes, sizeof bytes) != 0;
}
