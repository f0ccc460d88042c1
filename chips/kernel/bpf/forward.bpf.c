// Forwards packets by the rules, resources and routes in the maps, as the software chip does. See
// chips/interface/Forwarder.h for the steps.
//
// What the kernel must answer goes up to it as it came in: packets for this machine, for its link
// or for a group, an expired time to live, a packet that is too long for its next hop, a next hop
// without a MAC address.
#include "chips/kernel/bpf/classify.h"
#include "chips/kernel/bpf/parse.h"
#include "chips/kernel/bpf/rewrite.h"
#include "chips/kernel/bpf/routes.h"
#include "chips/kernel/layout/Action.h"

char zelLicense[] SEC("license") = "Apache-2.0";

enum { ecnNotEct, ecnEct1, ecnEct0, ecnCe };
enum { walkMiss = -1 };

static __always_inline int ends(const struct Way* way, enum ZelReason reason) {
  count(&reasonCounters, reason, way->arrivedBytes);
  return reason < zelTtlExpired ? XDP_DROP : XDP_PASS;
}

/// Finds the IP header and the port. Returns 0 if the frame has no IP header.
__noinline int readFrame(struct xdp_md* ctx, struct Way* way) {
  __u8 bytes[ETH_HLEN + vlanBytes];
  if (!way || bpf_xdp_load_bytes(ctx, 0, bytes, ETH_HLEN)) return 0;
  way->end = (__u32)bpf_xdp_get_buff_len(ctx);
  way->port.ifindex = ctx->ingress_ifindex;
  way->port.vlan = 0;
  way->header.at = ETH_HLEN;
  way->ethernetType = word16(bytes + 12);
  if (way->ethernetType == ETH_P_8021Q) {
    if (bpf_xdp_load_bytes(ctx, 0, bytes, sizeof bytes)) return 0;
    way->port.vlan = word16(bytes + 14) & 0xfff;
    way->header.at = sizeof bytes;
    way->ethernetType = word16(bytes + 16);
  }
  way->arrivedBytes = way->end - way->header.at;
  return way->ethernetType == ETH_P_IP || way->ethernetType == ETH_P_IPV6;
}

/// Reads the header at `at` of a packet of the family, which has `have` bytes. Returns a `Fault`.
__noinline int readHeader(struct xdp_md* ctx, struct Way* way, __u32 at, __u32 have, __u32 isV6) {
  if (!way) return faultMalformed;
  __builtin_memset(&way->header, 0, sizeof way->header);
  way->header.at = at;
  return isV6 ? parseV6(ctx, &way->header, have) : parseV4(ctx, &way->header, have);
}

/// Whether the destination is on the link only, or a group.
static __always_inline int isForLink(const struct ZelPacketFields* fields) {
  const __u8* const address = fields->destination;
  if (fields->family) return address[0] == 0xff || (address[0] == 0xfe && address[1] >> 6 == 2);
  return address[0] >= 224 || (address[0] == 169 && address[1] == 254);
}

/// Looks the destination up along a walk of the program. Returns the kind of the next hop, or
/// `walkMiss`.
__noinline int walk(struct Way* way, __u32 slot, __u32 isInner) {
  const struct ZelProgram* const program = bpf_map_lookup_elem(&programs, &slot);
  if (!way || !program) return walkMiss;
  const __u32 steps = isInner ? program->innerSteps : program->steps;
  const __u32 passOverDecap = !way->isInner && (program->flags & zelDecapFallbackEnabled) &&
                              !(program->flags & zelDecapEnabled);
  for (__u32 i = 0; i < zelLongestWalk; ++i) {
    if (i >= steps) break;
    lookUp(way, isInner ? &program->inner[i] : &program->lookUp[i]);
    const __u32 at = way->nextHop;
    if (!at) continue;
    const struct ZelNextHop* const hop = bpf_map_lookup_elem(&nextHops, &at);
    if (!hop || (hop->kind == zelHopDecap && passOverDecap)) continue;
    return (int)hop->kind;
  }
  return walkMiss;
}

/// Sends the packet to its next hop.
__noinline int leave(struct xdp_md* ctx, struct Way* way) {
  if (!way) return XDP_ABORTED;
  const __u32 at = way->nextHop;
  const struct ZelNextHop* const hop = bpf_map_lookup_elem(&nextHops, &at);
  if (!hop) return XDP_ABORTED;
  if (way->hopLimit <= 1) return ends(way, zelTtlExpired);
  if (way->header.fields.length > hop->mtu) return ends(way, zelTooLong);
  if (!hop->isResolved) return ends(way, zelUnresolved);
  if (headerIs(ctx, &way->header, way->hopLimit - 1)) return XDP_ABORTED;
  if (frameIs(ctx, way, hop)) return XDP_ABORTED;
  count(&vrfCounters, way->vrf, way->header.fields.length);
  return (int)bpf_redirect(hop->ifindex, 0);
}

/// The marks of the inner header by RFC 6040, or -1 if the packet is to be dropped.
static __always_inline int ecnAfterDecap(__u32 inner, __u32 outer) {
  if (inner == ecnNotEct) return outer == ecnCe ? -1 : ecnNotEct;
  if (inner == ecnCe || outer == ecnCe) return ecnCe;
  return outer == ecnEct1 ? ecnEct1 : (int)inner;
}

/// Takes the packet out of its tunnel. Returns the reason for which it cannot, or -1.
__noinline int decapsulate(struct xdp_md* ctx, struct Way* way) {
  if (!way) return zelNotATunnel;
  const struct Header* const outer = &way->header;
  const __u32 protocol = outer->fields.protocol;
  if (outer->fields.family || (protocol != IPPROTO_IPIP && protocol != IPPROTO_IPV6))
    return zelNotATunnel;
  if (outer->fields.isFragment) return zelFragmentedTunnel;
  const __u32 ecn = outer->ecn;
  const __u32 at = outer->at + outer->headerLength;
  const __u32 have = outer->fields.length - outer->headerLength;
  if (readHeader(ctx, way, at, have, protocol == IPPROTO_IPV6) != faultNone)
    return zelInnerMalformed;
  const int combined = ecnAfterDecap(way->header.ecn, ecn);
  if (combined < 0) return zelCongestion;
  way->header.ecn = (__u32)combined;
  way->isInner = 1;
  return -1;
}

static __always_inline int isWalkEmpty(__u32 slot, __u32 isInner) {
  const struct ZelProgram* const program = bpf_map_lookup_elem(&programs, &slot);
  return !program || (isInner ? program->innerSteps : program->steps) == 0;
}

/// Looks up the packet that came out of a tunnel.
__noinline int routeInner(struct xdp_md* ctx, struct Way* way, __u32 slot, __u32 isInner) {
  if (!way) return XDP_ABORTED;
  switch (walk(way, slot, isInner)) {
    case zelHopDrop:
      return ends(way, zelDropRoute);
    case zelHopDecap:
      return ends(way, zelNestedDecap);
    case zelHopLocal:
      return ends(way, zelLocal);
    case zelHopEgress:
      return leave(ctx, way);
    default:
      return ends(way, isWalkEmpty(slot, isInner) ? zelNoVrfId : zelNoRoute);
  }
}

/// Decapsulates the packet by the program, and routes what is inside.
__noinline int decapsulateBy(struct xdp_md* ctx, struct Way* way, __u32 slot, __u32 ownSlot) {
  const struct ZelProgram* const program = bpf_map_lookup_elem(&programs, &slot);
  if (!way || !program) return XDP_ABORTED;
  if (!(program->flags & zelDecapEnabled)) return ends(way, zelDecapDisabled);
  const __u32 isNamed = program->flags & zelInnerNamed;
  const int reason = decapsulate(ctx, way);
  if (reason >= 0) return ends(way, (enum ZelReason)reason);
  return isNamed ? routeInner(ctx, way, slot, 1) : routeInner(ctx, way, ownSlot, 0);
}

/// Routes the packet by the program.
__noinline int route(struct xdp_md* ctx, struct Way* way, __u32 slot, __u32 ownSlot) {
  if (!way) return XDP_ABORTED;
  switch (walk(way, slot, 0)) {
    case zelHopDrop:
      return ends(way, zelDropRoute);
    case zelHopDecap:
      return decapsulateBy(ctx, way, slot, ownSlot);
    case zelHopLocal:
      return ends(way, zelLocal);
    case zelHopEgress:
      return leave(ctx, way);
    default:
      return ends(way, isWalkEmpty(slot, 0) ? zelNoVrfId : zelNoRoute);
  }
}

/// Takes the action of the rule that matches.
static __always_inline int take(struct xdp_md* ctx, struct Way* way, const struct ZelPort* port,
                                __u64 action) {
  count(&ruleCounters, zelActionCounterOf(action), way->arrivedBytes);
  switch (zelActionKindOf(action)) {
    case zelActionResource: {
      const __u32 resource = zelActionResourceOf(action);
      const __u64* const entry = bpf_map_lookup_elem(&resources, &resource);
      const __u32 slot = entry ? (__u32)zelLoad64(entry) : 0;
      if (!slot) return ends(way, zelNoVrfResource);
      return route(ctx, way, slot, port->ownProgram);
    }
    case zelActionDiscard:
      return ends(way, zelDiscardedByRule);
    default:
      return route(ctx, way, port->ownProgram, port->ownProgram);
  }
}

SEC("xdp")
int zelForward(struct xdp_md* ctx) {
  const __u32 first = 0;
  struct Way* const way = bpf_map_lookup_elem(&ways, &first);
  if (!way) return XDP_ABORTED;
  way->isInner = 0;
  const int isIp = readFrame(ctx, way);
  const struct ZelPort* const port = bpf_map_lookup_elem(&ports, &way->port);
  if (!port) return XDP_PASS;
  count(&portCounters, port->counter, way->arrivedBytes);
  if (!isIp) return ends(way, zelNotIp);
  const int fault =
      readHeader(ctx, way, way->header.at, way->arrivedBytes, way->ethernetType == ETH_P_IPV6);
  if (fault == faultChecksum) return ends(way, zelBadChecksum);
  if (fault != faultNone) return ends(way, zelMalformed);
  way->arrivedBytes = way->header.fields.length;
  way->hopLimit = way->header.fields.hopLimit;
  if (isForLink(&way->header.fields)) return ends(way, zelLocal);
  const __u64 action = port->classifier ? actionFor(&way->header.fields, port->classifier) : 0;
  if (action) return take(ctx, way, port, action);
  if (port->isClosed) return ends(way, zelIntfClosed);
  return route(ctx, way, port->ownProgram, port->ownProgram);
}
