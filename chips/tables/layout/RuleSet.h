// A set of rule numbers in flat memory. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

#include "chips/tables/layout/Loads.h"

enum {
  zelRuleWords = 64,    // of 64 rules each
  zelRules = 64 * 64,   // numbers from 0
  zelNoRules = 0,       // the set without members
  zelAllRules = 1,      // the set of all numbers
  zelFirstRuleSet = 2,  // the first set that can change
};

/// A set of numbers below `zelRules`. Number n is bit n % 64 of word n / 64. Bit w of the summary
/// is set if word w is not 0, so that a search visits few words.
struct ZelRuleSet {
  __u64 summary;
  __u64 words[zelRuleWords];
};

/// The number of the lowest bit that is set. Precondition: the word is not 0.
///
/// It counts the bits below that one. The kernel's machine has no instruction for either, and clang
/// 14 fails on its built-in function there.
ZEL_INLINE __u32 zelLowestBit(__u64 word) {
  const __u64 below = (word & -word) - 1;
  const __u64 pairs = below - (below >> 1 & 0x5555555555555555ULL);
  const __u64 fours = (pairs & 0x3333333333333333ULL) + (pairs >> 2 & 0x3333333333333333ULL);
  const __u64 bytes = (fours + (fours >> 4)) & 0x0f0f0f0f0f0f0f0fULL;
  return (__u32)(bytes * 0x0101010101010101ULL >> 56);
}
