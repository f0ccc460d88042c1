#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "PolicyMap/PolicyMapAclHelper.h"

namespace TrafficPolicy {

/// Classification hardware for tests that look at packets after every call. Each rule has a number
/// that stands for its counter: a moved rule keeps it, any other new rule gets a new one.
class PacketHardware final : public PolicyMap::PolicyMapAclHelper {
 public:
  using AclResult = PolicyMap::AclResult;
  using AclRule = PolicyMap::AclRule;

  PacketHardware() : PolicyMapAclHelper("packets") {}

  AclResult addRule(const Velo::String& intf, std::size_t place, const AclRule& rule) override {
    List& list = lists_[intf];
    if (held_ >= capacity || refuses()) {
      ++refused;
      return {false, "refused"};
    }
    list.rules.insert(at(list.rules, place), rule);
    list.counters.insert(at(list.counters, place), ++numbers_);
    ++held_;
    changed(intf);
    return {};
  }
  void removeRule(const Velo::String& intf, std::size_t place) override {
    List& list = lists_[intf];
    list.rules.erase(at(list.rules, place));
    list.counters.erase(at(list.counters, place));
    --held_;
    changed(intf);
  }
  void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) override {
    List& list = lists_[intf];
    move(list.rules, from, to);
    move(list.counters, from, to);
    changed(intf);
  }
  // An action that the place had before is never refused.
  AclResult replaceRule(const Velo::String& intf, std::size_t place, const AclRule& rule) override {
    List& list = lists_[intf];
    std::vector<AclRule>& known = replaced_[intf];
    const bool isKnown = std::find(known.begin(), known.end(), rule) != known.end();
    known.push_back(list.rules[place]);
    if (!isKnown && refuses()) {
      ++refused;
      return {false, "refused"};
    }
    ++replacements;
    list.rules[place] = rule;
    list.counters[place] = ++numbers_;
    changed(intf);
    return {};
  }
  void intfClosedIs(const Velo::String& intf, bool closed) override {
    lists_[intf].isClosed = closed;
    changed(intf);
  }
  bool intfClosed(const Velo::String& intf) const override { return list(intf).isClosed; }
  const Rules& rules(const Velo::String& intf) const override { return list(intf).rules; }
  std::vector<Velo::String> intfs() const override {
    std::vector<Velo::String> names;
    for (const auto& [intf, list] : lists_)
      if (!list.rules.empty() || list.isClosed) names.push_back(intf);
    return names;
  }

  [[nodiscard]] const std::vector<unsigned>& counters(const Velo::String& intf) const {
    return list(intf).counters;
  }
  /// Forgets which actions a rule had before.
  void replacedReset() { replaced_.clear(); }
  [[nodiscard]] std::size_t held() const noexcept { return held_; }

  std::size_t capacity = 1000;
  std::function<bool()> refuses = [] { return false; };
  /// Called after each change, with the interface.
  std::function<void(const Velo::String& intf)> changed = [](const Velo::String&) {};
  unsigned refused = 0;
  unsigned replacements = 0;

 private:
  struct List {
    Rules rules;
    std::vector<unsigned> counters;
    bool isClosed = false;
  };
  template <class Element>
  static typename std::vector<Element>::iterator at(std::vector<Element>& list, std::size_t place) {
    return list.begin() + static_cast<std::ptrdiff_t>(place);
  }
  template <class Element>
  static void move(std::vector<Element>& list, std::size_t from, std::size_t to) {
    Element moved = list[from];
    list.erase(at(list, from));
    list.insert(at(list, to), std::move(moved));
  }
  const List& list(const Velo::String& intf) const {
    static const List none;
    const auto found = lists_.find(intf);
    return found == lists_.end() ? none : found->second;
  }

  std::map<Velo::String, List> lists_;
  std::map<Velo::String, std::vector<AclRule>> replaced_;  // rules that were replaced
  std::size_t held_ = 0;
  unsigned numbers_ = 0;
};

}  // namespace TrafficPolicy
