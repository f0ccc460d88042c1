// Loads of memory that a writer changes at the same time. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

#define ZEL_INLINE static inline __attribute__((always_inline))

/// One load, never repeated and never torn.
ZEL_INLINE __u64 zelLoad64(const __u64* word) {
  return *(const volatile __u64*)word;
}

/// The same for 32 bits.
ZEL_INLINE __u32 zelLoad32(const __u32* word) {
  return *(const volatile __u32*)word;
}

/// One load that comes before all loads after it. The kernel's programs have no such load; there
/// the order is that of the machine, and x86-64 keeps loads in order.
ZEL_INLINE __u64 zelLoadFirst(const __u64* word) {
#ifdef __bpf__
  const __u64 loaded = zelLoad64(word);
  __asm__ volatile("" ::: "memory");
  return loaded;
#else
  return __atomic_load_n(word, __ATOMIC_ACQUIRE);
#endif
}
