// The search for the first rule that a packet matches. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

#include "chips/tables/layout/Classifier.h"
#include "chips/tables/layout/Loads.h"
#include "chips/tables/layout/PacketFields.h"

enum {
  /// A search ends after so many steps: one for each word, and one for each rule that it passes
  /// over.
  zelScanSteps = zelRuleWords + zelRules,
};

/// Whether the value of the packet in the field has a set: it has the field, and a rule may name
/// it.
ZEL_INLINE int zelHasValue(const struct ZelPacketFields* packet, __u32 field) {
  switch (field) {
    case zelSourcePortField:
    case zelDestinationPortField:
      return packet->hasPorts;
    case zelTcpFlagsField:
      return packet->hasTcpFlags;
    case zelLengthField:
      return packet->length <= 0xffff;
    default:
      return field < zelLookedUpFields;
  }
}

/// The packet's value of a value field.
ZEL_INLINE __u8 zelValueOf(const struct ZelPacketFields* packet, __u32 field) {
  switch (field) {
    case zelFamilyField:
      return packet->family;
    case zelProtocolField:
      return packet->protocol;
    case zelDscpField:
      return packet->dscp;
    case zelHopLimitField:
      return packet->hopLimit;
    case zelTcpFlagsField:
      return packet->tcpFlags;
    default:
      return packet->isFragment;
  }
}

/// The packet's value of a prefix field of 16 bits.
ZEL_INLINE __u16 zelNumberOf(const struct ZelPacketFields* packet, __u32 field) {
  switch (field) {
    case zelLengthField:
      return (__u16)packet->length;
    case zelFragmentOffsetField:
      return packet->fragmentOffset;
    case zelSourcePortField:
      return packet->sourcePort;
    default:
      return packet->destinationPort;
  }
}

/// Whether every rule matches the packet in the field, since the rules compare another field
/// instead.
ZEL_INLINE int zelMatchesAll(const struct ZelPacketFields* packet, __u32 field) {
  switch (field) {
    case zelSourcePortField:
    case zelDestinationPortField:
    case zelTcpFlagsField:
      return packet->fragmentOffset != 0;
    case zelLaterFragmentField:
      return packet->fragmentOffset == 0;
    default:
      return 0;
  }
}

/// How a reader searches the prefix fields. `longest` returns the set of the longest element of the
/// field that covers the packet's value, `zelNoRules` without one.
struct ZelElementMemory {
  __u32 (*longest)(const void* elements, const struct ZelPacketFields* packet, __u32 field);
  const void* elements;
};

/// The set of rules that match the packet's value in the field, besides those that match any.
ZEL_INLINE __u32 zelSetOf(const struct ZelClassifier* classifier,
                          const struct ZelPacketFields* packet, __u32 field,
                          struct ZelElementMemory memory) {
  if (zelMatchesAll(packet, field)) return zelAllRules;
  if (!zelHasValue(packet, field)) return zelNoRules;
  if (field < zelValueFields)
    return zelLoad32(&classifier->values[field][zelValueOf(packet, field)]);
  if (!(zelLoad32(&classifier->compared) >> field & 1)) return zelNoRules;
  return memory.longest(memory.elements, packet, field);
}

/// A search on its way.
///
/// Rules that are not in force at the packet's epoch can be in sets: new ones before the epoch of
/// their change, and replaced ones until a grace period later, for packets on their way. The search
/// passes over them one by one.
///
///     scan.epoch = zelLoadFirst(&classifier->epoch);
///     for (field = 0; field < zelFields; ++field)
///       scan.sets[field] = ...;                        // by zelSetOf
///     zelScanBegins(&scan);
///     while (!zelScanStep(&scan, rules)) continue;     // at most zelScanSteps times
struct ZelScan {
  const struct ZelClassifier* classifier;
  const struct ZelRuleSet* sets[zelFields];
  __u64 epoch;
  __u64 wordsLeft;  // of the summary
  __u64 bitsLeft;   // of the current word
  __u32 word;
  __u32 unused;
  __u64 action;  // of the rule that was found
};

/// Begins the search. The classifier, the epoch and the sets are there.
ZEL_INLINE void zelScanBegins(struct ZelScan* scan) {
  __u64 words = ~0ULL;
  for (__u32 field = 0; field < zelFields; ++field)
    words &=
        zelLoad64(&scan->classifier->any[field].summary) | zelLoad64(&scan->sets[field]->summary);
  scan->wordsLeft = words;
  scan->bitsLeft = 0;
  scan->word = 0;
  scan->action = 0;
}

/// The rules of the word that the packet matches.
ZEL_INLINE __u64 zelScanWord(const struct ZelScan* scan, __u32 word) {
  __u64 bits = ~0ULL;
  for (__u32 field = 0; field < zelFields; ++field) {
    bits &= zelLoad64(&scan->classifier->any[field].words[word & (zelRuleWords - 1)]) |
            zelLoad64(&scan->sets[field]->words[word & (zelRuleWords - 1)]);
  }
  return bits;
}

/// How a reader reaches the rules of a classifier. `ruleAt` returns null for a number without one.
struct ZelRuleMemory {
  const struct ZelRule* (*ruleAt)(const void* rules, __u32 number);
  const void* rules;
};

/// Takes one step. Returns whether the search is at its end. Then `action` is that of the first
/// rule, 0 if there is none.
ZEL_INLINE int zelScanStep(struct ZelScan* scan, struct ZelRuleMemory memory) {
  if (scan->bitsLeft == 0) {
    if (scan->wordsLeft == 0) return 1;
    scan->word = zelLowestBit(scan->wordsLeft);
    scan->wordsLeft &= scan->wordsLeft - 1;
    scan->bitsLeft = zelScanWord(scan, scan->word);
    return 0;
  }
  const __u32 bit = zelLowestBit(scan->bitsLeft);
  scan->bitsLeft &= scan->bitsLeft - 1;
  const struct ZelRule* const rule = memory.ruleAt(memory.rules, scan->word * 64 + bit);
  if (!rule || zelLoad64(&rule->from) > scan->epoch || zelLoad64(&rule->until) <= scan->epoch)
    return 0;
  scan->action = zelLoad64(&rule->action);
  return 1;
}
