// The action of a rule as one word. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

#include "chips/tables/layout/Loads.h"

enum ZelActionKind {
  zelActionNone = 1,  // the packet is looked up in its own VRF
  zelActionDiscard,
  zelActionResource,
};

/// The resource and the counter are below 1 << 28.
ZEL_INLINE __u64 zelAction(__u32 kind, __u32 resource, __u32 counter) {
  return (__u64)kind << 56 | (__u64)counter << 28 | resource;
}
ZEL_INLINE __u32 zelActionKindOf(__u64 action) {
  return (__u32)(action >> 56);
}
ZEL_INLINE __u32 zelActionResourceOf(__u64 action) {
  return (__u32)action & 0xfffffff;
}
ZEL_INLINE __u32 zelActionCounterOf(__u64 action) {
  return (__u32)(action >> 28) & 0xfffffff;
}
