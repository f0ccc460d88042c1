// What the programs count. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

/// One for each CPU. Both wrap.
struct ZelCounter {
  __u64 packets;
  __u64 bytes;
};

/// Why a packet did not leave by a port. The first ones are the reasons for which packets are
/// dropped, as in the software chip. By the ones from `zelTtlExpired` on the kernel gets the packet
/// as it came in, and answers it.
enum ZelReason {
  zelMalformed,
  zelBadChecksum,
  zelDiscardedByRule,
  zelIntfClosed,
  zelNoVrfResource,
  zelNoVrfId,
  zelNoRoute,
  zelDropRoute,
  zelDecapDisabled,
  zelNotATunnel,
  zelFragmentedTunnel,
  zelInnerMalformed,
  zelCongestion,
  zelNestedDecap,
  zelTtlExpired,
  zelTooLong,     // longer than the MTU of the next hop
  zelUnresolved,  // the MAC address of the next hop is not known
  zelLocal,       // for this machine, for its link, or for a group
  zelNotIp,       // neither IPv4 nor IPv6
  zelReasons,
};
