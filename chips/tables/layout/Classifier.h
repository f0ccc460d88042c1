// A list of rules in flat memory, as a packet searches it. Plain C for the kernel, and C++.
#pragma once

#include <linux/types.h>

#include "chips/tables/layout/RuleSet.h"

/// What rules compare. The value fields come first, then the prefix fields.
///
/// A value field has at most 256 values, each with a set of rules. A prefix field is searched for
/// the longest element that covers the packet's value: an address, or a number of 16 bits as the
/// first two bytes of an IPv4 address.
enum ZelField {
  zelFamilyField,  // 0 for IPv4, 1 for IPv6
  zelProtocolField,
  zelDscpField,
  zelHopLimitField,
  zelTcpFlagsField,
  zelFragmentField,  // 1 for a fragment, otherwise 0
  zelValueFields,
  zelSourceField = zelValueFields,
  zelDestinationField,
  zelLengthField,
  zelFragmentOffsetField,
  zelSourcePortField,
  zelDestinationPortField,
  zelLookedUpFields,
  /// In place of ports and TCP flags for fragments that are not the first. A rule compares it if it
  /// does not match such fragments, and it has no values.
  zelLaterFragmentField = zelLookedUpFields,
  zelFields,
};

/// A list of rules. A rule has a number, and rules are in the order of their numbers.
///
/// A packet matches a rule if the rule is, for each field, in the set `any` or in the set that the
/// packet's value has. `any` holds the rules that do not compare the field. The sets are numbers of
/// `ZelRuleSet`; `zelNoRules` stands for values that no rule names. A field whose bit is not in
/// `compared` needs no search.
///
/// The epoch counts the changes. A packet reads it first and obeys the rules of that moment only,
/// see `ZelRule`.
struct ZelClassifier {
  __u64 epoch;
  __u32 compared;
  __u32 unused;
  __u32 values[zelValueFields][256];
  struct ZelRuleSet any[zelFields];
};

/// The rule of a number, in the epochs from `from` on and before `until`. What the action means is
/// up to the chip.
struct ZelRule {
  __u64 action;
  __u64 from;
  __u64 until;
};
