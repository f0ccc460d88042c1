// A packet on its way through the program.
#pragma once

#include "chips/kernel/bpf/maps.h"
#include "chips/tables/layout/PacketFields.h"

/// The header that is looked up: the first one, and after decapsulation the inner one.
struct Header {
  struct ZelPacketFields fields;
  __u32 at;            // in the frame
  __u32 headerLength;  // up to the upper layer: with options and extension headers
  __u32 ecn;
};

struct Way {
  struct Header header;
  __u32 end;           // of the frame
  __u32 arrivedBytes;  // of the packet, for counters
  __u32 ethernetType;
  struct ZelPortKey port;
  __u32 nextHop;   // what the last lookup found, 0 for nothing
  __u32 length;    // of its prefix
  __u32 vrf;       // where it was found
  __u32 isInner;   // whether the packet has been decapsulated
  __u32 hopLimit;  // for the packet that leaves, before it is lowered
};

/// One for each CPU, since it is larger than the stack of a program should be.
struct {
  __uint(type, BPF_MAP_TYPE_PERCPU_ARRAY);
  __type(key, __u32);
  __type(value, struct Way);
  __uint(max_entries, 1);
} ways SEC(".maps");
