// Reads headers as the software chip does: the same checks in the same order.
#pragma once

#include <linux/in.h>
#include <linux/in6.h>

#include "chips/kernel/bpf/way.h"

enum {
  fixedV4 = 20,
  longestV4 = 60,
  fixedV6 = 40,
  moreFragments = 0x2000,
  offsetMask = 0x1fff,
  mostExtensions = 32,  // of an IPv6 packet; one with more is malformed
};

enum Fault { faultNone, faultMalformed, faultChecksum };

static __always_inline __u16 word16(const __u8* bytes) {
  return (__u16)(bytes[0] << 8 | bytes[1]);
}

static __always_inline __u16 folded(__u32 sum) {
  sum = (sum & 0xffff) + (sum >> 16);
  return (__u16)((sum & 0xffff) + (sum >> 16));
}

/// The ports and flags of the upper layer, as far as the packet has them.
__noinline int readUpperLayer(struct xdp_md* ctx, struct Header* header) {
  if (!header) return 0;
  struct ZelPacketFields* const fields = &header->fields;
  const int isTcp = fields->protocol == IPPROTO_TCP;
  if ((!isTcp && fields->protocol != IPPROTO_UDP) || fields->fragmentOffset != 0) return 0;
  const __u32 at = header->at + header->headerLength;
  const __u32 bytes = fields->length - header->headerLength;
  __u8 upper[14];
  if (bytes < 4 || bpf_xdp_load_bytes(ctx, at, upper, 4)) return 0;
  fields->hasPorts = 1;
  fields->sourcePort = word16(upper);
  fields->destinationPort = word16(upper + 2);
  if (!isTcp || bytes < 14 || bpf_xdp_load_bytes(ctx, at, upper, 14)) return 0;
  fields->hasTcpFlags = 1;
  fields->tcpFlags = upper[13];
  return 0;
}

/// Whether the checksum of the IPv4 header of so many bytes is right.
__noinline int isChecksumRight(struct xdp_md* ctx, __u32 at, __u32 length) {
  __u8 bytes[longestV4] = {};
  if (bpf_xdp_load_bytes(ctx, at, bytes, fixedV4)) return 0;
  __u32 options = length - fixedV4;
  if (options > 0 && options <= longestV4 - fixedV4 &&
      bpf_xdp_load_bytes(ctx, at + fixedV4, bytes + fixedV4, options))
    return 0;
  __u32 sum = 0;
#pragma unroll
  for (int i = 0; i < longestV4; i += 2)
    sum += word16(bytes + i);
  return folded(sum) == 0xffff;
}

/// Reads the IPv4 header at `header->at`. The packet has `have` bytes from there on.
__noinline int parseV4(struct xdp_md* ctx, struct Header* header, __u32 have) {
  __u8 bytes[fixedV4];
  if (!header || have < fixedV4 || bpf_xdp_load_bytes(ctx, header->at, bytes, fixedV4))
    return faultMalformed;
  struct ZelPacketFields* const fields = &header->fields;
  header->headerLength = (bytes[0] & 0xf) * 4;
  fields->length = word16(bytes + 2);
  if (bytes[0] >> 4 != 4 || header->headerLength < fixedV4 || header->headerLength > have ||
      fields->length < header->headerLength || fields->length > have)
    return faultMalformed;
  if (!isChecksumRight(ctx, header->at, header->headerLength)) return faultChecksum;
  const __u16 fragment = word16(bytes + 6);
  fields->family = 0;
  fields->dscp = bytes[1] >> 2;
  header->ecn = bytes[1] & 3;
  fields->fragmentOffset = fragment & offsetMask;
  fields->isFragment = (fragment & (offsetMask | moreFragments)) != 0;
  fields->hopLimit = bytes[8];
  fields->protocol = bytes[9];
  __builtin_memcpy(fields->source, bytes + 12, 4);
  __builtin_memcpy(fields->destination, bytes + 16, 4);
  readUpperLayer(ctx, header);
  return faultNone;
}

static __always_inline int isExtension(__u8 protocol) {
  return protocol == IPPROTO_HOPOPTS || protocol == IPPROTO_ROUTING ||
         protocol == IPPROTO_DSTOPTS || protocol == IPPROTO_FRAGMENT;
}

/// Takes the next extension header. Returns 0 if it is complete.
__noinline int takeExtension(struct xdp_md* ctx, struct Header* header) {
  __u8 bytes[8];
  if (!header) return 1;
  struct ZelPacketFields* const fields = &header->fields;
  const __u32 rest = fields->length - header->headerLength;
  if (rest < 8 || bpf_xdp_load_bytes(ctx, header->at + header->headerLength, bytes, 8)) return 1;
  __u32 length = 8;
  if (fields->protocol == IPPROTO_FRAGMENT) {
    fields->fragmentOffset = word16(bytes + 2) >> 3;
    fields->isFragment = fields->fragmentOffset != 0 || (bytes[3] & 1);
  } else {
    length = (bytes[1] + 1) * 8;
  }
  if (length > rest) return 1;
  header->headerLength += length;
  fields->protocol = bytes[0];
  return 0;
}

struct Extensions {
  struct xdp_md* ctx;
  struct Header* header;
  int fault;
  int hasFragmentHeader;  // a second one is not read
};

static long nextExtension(__u32 index, struct Extensions* extensions) {
  struct ZelPacketFields* const fields = &extensions->header->fields;
  extensions->fault = faultNone;
  if (!isExtension(fields->protocol) || fields->fragmentOffset != 0) return 1;
  if (fields->protocol == IPPROTO_FRAGMENT) {
    if (extensions->hasFragmentHeader) return 1;
    extensions->hasFragmentHeader = 1;
  }
  extensions->fault = faultMalformed;
  return takeExtension(extensions->ctx, extensions->header) != 0;
}

/// Reads the IPv6 header at `header->at`. The packet has `have` bytes from there on.
__noinline int parseV6(struct xdp_md* ctx, struct Header* header, __u32 have) {
  __u8 bytes[fixedV6];
  if (!header || have < fixedV6 || bpf_xdp_load_bytes(ctx, header->at, bytes, fixedV6))
    return faultMalformed;
  struct ZelPacketFields* const fields = &header->fields;
  header->headerLength = fixedV6;
  fields->length = fixedV6 + word16(bytes + 4);
  if (bytes[0] >> 4 != 6 || fields->length > have) return faultMalformed;
  const __u8 trafficClass = (__u8)(word16(bytes) >> 4);
  fields->family = 1;
  fields->dscp = trafficClass >> 2;
  header->ecn = trafficClass & 3;
  fields->protocol = bytes[6];
  fields->hopLimit = bytes[7];
  __builtin_memcpy(fields->source, bytes + 8, 16);
  __builtin_memcpy(fields->destination, bytes + 24, 16);
  struct Extensions extensions = {ctx, header, faultNone, 0};
  bpf_loop(mostExtensions + 1, nextExtension, &extensions, 0);
  if (extensions.fault != faultNone) return extensions.fault;
  readUpperLayer(ctx, header);
  return faultNone;
}
