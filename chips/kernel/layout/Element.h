// Keys of the elements of prefix fields, in maps of the kernel. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

enum { zelElementBits = 64 };  // of a key in front of the address

/// The prefix length counts all bits behind it. A number of 16 bits is the first two bytes of an
/// IPv4 address.
struct ZelV4Element {
  __u32 prefixLength;
  __u32 classifier;
  __u32 field;
  __u8 address[4];
};
struct ZelV6Element {
  __u32 prefixLength;
  __u32 classifier;
  __u32 field;
  __u8 address[16];
};
