// Where packets come in, in maps of the kernel. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

/// An interface, or a subinterface for one VLAN tag. The tag of an interface is 0.
struct ZelPortKey {
  __u32 ifindex;
  __u32 vlan;
};

/// What the chip does with packets of a port. Packets of interfaces without a port are the
/// kernel's.
struct ZelPort {
  __u32 classifier;  // 0 without rules
  __u32 isClosed;    // whether packets without a matching rule are dropped
  __u32 ownProgram;  // the slot of the program for the own VRF
  __u32 counter;     // of packets that came in
};
