// The fields of a packet that rules compare. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

/// All numbers are in host order, addresses in network order. The bytes of an IPv4 address are
/// followed by zeros.
struct ZelPacketFields {
  __u8 source[16];
  __u8 destination[16];
  __u32 length;  // with the IP header
  __u16 fragmentOffset;
  __u16 sourcePort;       // 0 without ports
  __u16 destinationPort;  // 0 without ports
  __u8 family;            // 0 for IPv4, 1 for IPv6
  __u8 protocol;
  __u8 dscp;
  __u8 hopLimit;
  __u8 tcpFlags;  // 0 without flags
  __u8 isFragment;
  __u8 hasPorts;
  __u8 hasTcpFlags;
  __u8 unused[2];
};
