#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "chips/interface/ChipAclHelper.h"
#include "chips/packet/PacketHeader.h"

namespace Chips {

class RuleClassifier;

/// The rules of a chip in software. `classify` finds what a search of the rules one by one finds.
class SoftAclHelper final : public ChipAclHelper {
 public:
  /// `capacity` is the number of rules of all interfaces together.
  SoftAclHelper(const Velo::String& name, std::uint32_t capacity);
  ~SoftAclHelper() override;

  [[nodiscard]] PolicyMap::AclResult addRule(const Velo::String& intf, std::size_t place,
                                             const PolicyMap::AclRule& rule) override;
  void removeRule(const Velo::String& intf, std::size_t place) override;
  void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) override;

  [[nodiscard]] PolicyMap::AclResult replaceRule(const Velo::String& intf, std::size_t place,
                                                 const PolicyMap::AclRule& rule) override;
  void intfClosedIs(const Velo::String& intf, bool closed) override;
  [[nodiscard]] bool intfClosed(const Velo::String& intf) const override;

  [[nodiscard]] const Rules& rules(const Velo::String& intf) const override;
  [[nodiscard]] std::vector<Velo::String> intfs() const override;

  [[nodiscard]] std::uint32_t capacity() const override { return capacity_; }
  void capacityIs(std::uint32_t capacity) override { capacity_ = capacity; }
  [[nodiscard]] std::size_t rulesInUse() const override { return rulesInUse_; }
  [[nodiscard]] std::size_t mostRulesInUse() const override { return mostRulesInUse_; }

  [[nodiscard]] PacketCounter counter(const Velo::String& intf, std::size_t place) const override;
  void countersReset() override;

  /// The place of the first rule of the interface that matches. The first call after a change of
  /// the rules compiles them.
  [[nodiscard]] std::optional<std::size_t> classify(const Velo::String& intf,
                                                    const PacketHeader& header) const;
  /// Counts a packet for the rule at `place`.
  void count(const Velo::String& intf, std::size_t place, std::size_t bytes);

 private:
  struct NameHash {
    std::size_t operator()(const Velo::String& name) const noexcept { return name.hash(0); }
  };
  struct IntfRules {
    Rules rules;
    std::vector<PacketCounter> counters;  // by place
    bool isClosed = false;
    mutable std::unique_ptr<RuleClassifier> classifier;  // null after a change
  };

  [[nodiscard]] const IntfRules& rulesOf(const Velo::String& intf) const;
  [[nodiscard]] IntfRules& rulesIs(const Velo::String& intf);
  void eraseIfUnused(const Velo::String& intf, const IntfRules& rules);

  std::uint32_t capacity_;
  std::size_t rulesInUse_ = 0;
  std::size_t mostRulesInUse_ = 0;
  std::unordered_map<Velo::String, IntfRules, NameHash> intfs_;  // none that is open without rules
  // The interface that was changed last, and its rules; null for none. A change of policy makes
  // many calls for one interface.
  Velo::String recentIntf_;
  IntfRules* recentRules_ = nullptr;
};

}  // namespace Chips
