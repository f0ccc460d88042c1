// Where a route leads, in maps of the kernel. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

enum ZelNextHopKind {
  zelHopDrop = 1,
  zelHopDecap,
  zelHopLocal,  // an address of this machine
  zelHopEgress,
};

/// The fields after `kind` are for `zelHopEgress` only.
struct ZelNextHop {
  __u32 kind;
  __u32 ifindex;
  __u32 mtu;         // the longest packet with its IP header
  __u16 vlan;        // of the frame that leaves, 0 without a tag
  __u16 isResolved;  // whether the MAC addresses are known
  __u8 destination[6];
  __u8 source[6];
  __u32 unused;
};

/// A route of the IPv6 table. Keys have the prefix length in bits, with those of the VRF.
struct ZelV6RouteKey {
  __u32 prefixLength;
  __u32 vrf;
  __u8 address[16];
};
struct ZelV6Route {
  __u32 nextHop;
  __u32 length;
};

/// A route in exact match. The value is the next hop.
struct ZelExactRouteKey {
  __u32 vrf;
  __u16 length;
  __u16 isV6;
  __u32 address[4];  // in network order, zeros behind the length and behind an IPv4 address
};
