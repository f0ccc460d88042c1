#include "chips/soft/SoftAclHelper.h"

#include <algorithm>
#include <string>

#include "chips/soft/classify/RuleClassifier.h"

namespace Chips {
namespace {

using PolicyMap::AclResult;
using PolicyMap::AclRule;

AclResult exhausted(std::uint32_t capacity) {
  return {false, "the rules do not fit into the " + std::to_string(capacity) +
                     " rule entries of the chip; remove rules or interfaces of a policy"};
}

template <class Element>
auto at(std::vector<Element>& list, std::size_t place) {
  return list.begin() + static_cast<std::ptrdiff_t>(place);
}

template <class Element>
void moveElement(std::vector<Element>& list, std::size_t from, std::size_t to) {
  if (from < to) {
    std::rotate(at(list, from), at(list, from + 1), at(list, to + 1));
  } else {
    std::rotate(at(list, to), at(list, from), at(list, from + 1));
  }
}

}  // namespace

SoftAclHelper::SoftAclHelper(const Velo::String& name, std::uint32_t capacity)
    : ChipAclHelper(name), capacity_(capacity) {}

SoftAclHelper::~SoftAclHelper() = default;

AclResult SoftAclHelper::addRule(const Velo::String& intf, std::size_t place, const AclRule& rule) {
  if (rulesInUse_ >= capacity_) return exhausted(capacity_);
  IntfRules& present = rulesIs(intf);
  present.rules.insert(at(present.rules, place), rule);
  present.counters.insert(at(present.counters, place), PacketCounter());
  present.classifier.reset();
  mostRulesInUse_ = std::max(mostRulesInUse_, ++rulesInUse_);
  return {};
}

void SoftAclHelper::removeRule(const Velo::String& intf, std::size_t place) {
  IntfRules& present = rulesIs(intf);
  present.rules.erase(at(present.rules, place));
  present.counters.erase(at(present.counters, place));
  present.classifier.reset();
  --rulesInUse_;
  eraseIfUnused(intf, present);
}

void SoftAclHelper::moveRule(const Velo::String& intf, std::size_t from, std::size_t to) {
  IntfRules& present = rulesIs(intf);
  moveElement(present.rules, from, to);
  moveElement(present.counters, from, to);
  present.classifier.reset();
}

AclResult SoftAclHelper::replaceRule(const Velo::String& intf, std::size_t place,
                                     const AclRule& rule) {
  IntfRules& present = rulesIs(intf);
  present.rules[place] = rule;
  present.counters[place] = PacketCounter();
  return {};
}

void SoftAclHelper::intfClosedIs(const Velo::String& intf, bool closed) {
  IntfRules& present = rulesIs(intf);
  present.isClosed = closed;
  eraseIfUnused(intf, present);
}

bool SoftAclHelper::intfClosed(const Velo::String& intf) const {
  return rulesOf(intf).isClosed;
}

const SoftAclHelper::Rules& SoftAclHelper::rules(const Velo::String& intf) const {
  return rulesOf(intf).rules;
}

std::vector<Velo::String> SoftAclHelper::intfs() const {
  std::vector<Velo::String> names;
  names.reserve(intfs_.size());
  for (const auto& [name, rules] : intfs_)
    names.push_back(name);
  std::sort(names.begin(), names.end());
  return names;
}

PacketCounter SoftAclHelper::counter(const Velo::String& intf, std::size_t place) const {
  return rulesOf(intf).counters[place];
}

std::optional<std::size_t> SoftAclHelper::classify(const Velo::String& intf,
                                                   const PacketHeader& header) const {
  const IntfRules& present = rulesOf(intf);
  if (present.rules.empty()) return std::nullopt;
  if (!present.classifier) present.classifier = std::make_unique<RuleClassifier>(present.rules);
  return present.classifier->firstMatch(header);
}

void SoftAclHelper::count(const Velo::String& intf, std::size_t place, std::size_t bytes) {
  rulesIs(intf).counters[place].add(bytes);
}

void SoftAclHelper::countersReset() {
  for (auto& [name, present] : intfs_)
    std::fill(present.counters.begin(), present.counters.end(), PacketCounter());
}

const SoftAclHelper::IntfRules& SoftAclHelper::rulesOf(const Velo::String& intf) const {
  static const IntfRules none;
  if (recentRules_ != nullptr && recentIntf_ == intf) return *recentRules_;
  const auto found = intfs_.find(intf);
  return found == intfs_.end() ? none : found->second;
}

SoftAclHelper::IntfRules& SoftAclHelper::rulesIs(const Velo::String& intf) {
  if (recentRules_ == nullptr || recentIntf_ != intf) {
    recentRules_ = &intfs_[intf];
    recentIntf_ = intf;
  }
  return *recentRules_;
}

void SoftAclHelper::eraseIfUnused(const Velo::String& intf, const IntfRules& rules) {
  if (!rules.rules.empty() || rules.isClosed) return;
  recentRules_ = nullptr;
  intfs_.erase(intf);
}

}  // namespace Chips
