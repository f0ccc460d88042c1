#include "PolicyMap/RuleStatusTable.h"

#include <algorithm>
#include <utility>

#include "Mox/Hash.h"

namespace PolicyMap {
namespace {

// The first slot whose sequence is not lower.
template <class Slots>
auto slotFrom(Slots& slots, std::uint32_t sequence) {
  return std::lower_bound(
      slots.begin(), slots.end(), sequence,
      [](const auto& slot, std::uint32_t wanted) { return slot.sequence < wanted; });
}

template <class RulesOfIntf>
auto rulesIn(RulesOfIntf& present, const Velo::String& policyMap) {
  return std::find_if(present.begin(), present.end(),
                      [&](const auto& rules) { return rules.policyMap == policyMap; });
}

}  // namespace

unsigned RuleKey::hash(unsigned seed) const noexcept {
  Mox::Hash running(seed, sequence);
  running.hashMix(intf.hash(seed));
  running.hashMix(policyMap.hash(seed));
  return running.result();
}

const RuleStatus* RuleStatusTable::find(const RuleKey& rule) const noexcept {
  const Rules* const rules = rulesOf(rule.intf, rule.policyMap);
  if (rules == nullptr) return nullptr;
  const auto slot = slotFrom(rules->slots, rule.sequence);
  const bool isPresent =
      slot != rules->slots.end() && slot->sequence == rule.sequence && slot->isUsed;
  return isPresent ? &slot->status : nullptr;
}

std::size_t RuleStatusTable::programmed(const Velo::String& intf,
                                        const Velo::String& policyMap) const noexcept {
  const Rules* const rules = rulesOf(intf, policyMap);
  return rules == nullptr ? 0 : rules->programmed;
}

std::vector<Velo::String> RuleStatusTable::intfs() const {
  std::vector<Velo::String> names;
  for (auto intf = intfs_.iterator(); intf; ++intf)
    names.push_back(intf.key());
  return names;
}

std::vector<RuleKey> RuleStatusTable::others(const Velo::String& intf,
                                             const Velo::String& policyMap,
                                             const std::vector<std::uint32_t>& sequences) const {
  std::vector<RuleKey> found;
  const RulesOfIntf* const present = intfs_.find(intf);
  if (present == nullptr) return found;
  for (const Rules& rules : *present) {
    auto wanted = rules.policyMap == policyMap ? sequences.begin() : sequences.end();
    for (const Slot& slot : rules.slots) {
      if (!slot.isUsed) continue;
      while (wanted != sequences.end() && *wanted < slot.sequence)
        ++wanted;
      if (wanted != sequences.end() && *wanted == slot.sequence) continue;
      found.push_back({intf, rules.policyMap, slot.sequence});
    }
  }
  return found;
}

void RuleStatusTable::is(const RuleKey& rule, const RuleStatus& status) {
  Rules& rules = rulesIs(rule);
  Slot& slot = slotIs(rules, rule.sequence);
  if (slot.isUsed && slot.status == status) return;
  if (!slot.isUsed) {
    ++rules.used;
    ++count_;
  }
  if (slot.isUsed && slot.status.programmed) --rules.programmed;
  if (status.programmed) ++rules.programmed;
  slot.isUsed = true;
  slot.status = status;
  if (!publisher_.hasSubscribers()) return;
  const RuleKey key = rule;  // copies, since a subscriber may delete both
  const RuleStatus value = status;
  publisher_.publish(attribute_, &key, &value);
}

bool RuleStatusTable::del(const RuleKey& rule) {
  const RuleKey key = rule;
  RulesOfIntf* const present = intfs_.find(key.intf);
  if (present == nullptr || find(key) == nullptr) return false;
  Rules& rules = *rulesIn(*present, key.policyMap);
  Slot& slot = *slotFrom(rules.slots, key.sequence);
  if (slot.status.programmed) --rules.programmed;
  slot.isUsed = false;
  slot.status = {};
  --rules.used;
  --count_;
  discardUnused(key.intf, *present, rules);
  publisher_.publish(attribute_, &key, nullptr);
  return true;
}

const RuleStatusTable::Rules* RuleStatusTable::rulesOf(
    const Velo::String& intf, const Velo::String& policyMap) const noexcept {
  const RulesOfIntf* const present = intfs_.find(intf);
  if (present == nullptr) return nullptr;
  const auto rules = rulesIn(*present, policyMap);
  return rules == present->end() ? nullptr : &*rules;
}

RuleStatusTable::Rules& RuleStatusTable::rulesIs(const RuleKey& rule) {
  RulesOfIntf* present = intfs_.find(rule.intf);
  if (present == nullptr) present = &intfs_.value(intfs_.insert(rule.intf).first);
  const auto rules = rulesIn(*present, rule.policyMap);
  if (rules != present->end()) return *rules;
  present->push_back({rule.policyMap, {}, 0, 0});
  return present->back();
}

RuleStatusTable::Slot& RuleStatusTable::slotIs(Rules& rules, std::uint32_t sequence) {
  std::vector<Slot>& slots = rules.slots;
  if (slots.empty() || slots.back().sequence < sequence) {
    slots.push_back({sequence, false, {}});
    return slots.back();
  }
  const auto slot = slotFrom(slots, sequence);
  if (slot->sequence == sequence) return *slot;
  return *slots.insert(slot, {sequence, false, {}});
}

void RuleStatusTable::discardUnused(const Velo::String& intf, RulesOfIntf& present, Rules& rules) {
  if (rules.used == 0) {
    present.erase(rulesIn(present, rules.policyMap));
    if (present.empty()) intfs_.erase(intf);
  } else if (rules.used < rules.slots.size() / 2) {
    std::erase_if(rules.slots, [](const Slot& slot) { return !slot.isUsed; });
  }
}

RuleStatusTable::Iterator::Iterator(const RuleStatusTable& table)
    : table_(&table), intfs_(table.intfs()) {
  std::sort(intfs_.rbegin(), intfs_.rend());
  settle();
}

RuleStatusTable::Iterator& RuleStatusTable::Iterator::operator++() {
  settle();
  return *this;
}

// Stands on the next status that is present.
void RuleStatusTable::Iterator::settle() {
  key_.reset();
  while (!rules_.empty() || !intfs_.empty()) {
    if (rules_.empty()) {
      rules_ = table_->others(intfs_.back(), {}, {});
      std::reverse(rules_.begin(), rules_.end());
      intfs_.pop_back();
      continue;
    }
    RuleKey next = std::move(rules_.back());
    rules_.pop_back();
    if (table_->find(next) == nullptr) continue;
    key_ = std::move(next);
    return;
  }
}

}  // namespace PolicyMap
