// What a resource does with a packet, in maps of the kernel. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

enum {
  zelLongestWalk = 8,
  zelDecapEnabled = 1,          // packets are decapsulated by decapsulating routes
  zelDecapFallbackEnabled = 2,  // while they are not, such routes are misses
  zelInnerNamed = 4,            // a VRF is named for decapsulated packets
};

/// A lookup in one VRF. Bit n of the lengths is set if routes of length n are searched in exact
/// match.
struct ZelWalkStep {
  __u32 vrf;
  __u32 unused;
  __u64 v4Lengths;
  __u64 v6Lengths[3];
};

/// The walk of a resource: VRFs that have an id, none twice, those of the fallback behind the
/// others. `inner` is the walk of decapsulated packets. If no VRF is named for them, it is that of
/// the port.
struct ZelProgram {
  __u32 flags;
  __u32 steps;
  __u32 innerSteps;
  __u32 unused;
  struct ZelWalkStep lookUp[zelLongestWalk];
  struct ZelWalkStep inner[zelLongestWalk];
};
