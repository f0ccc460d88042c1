#pragma once

#include <cstdint>

#include "Mox/Entity.h"
#include "Mox/PublishedMap.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// A rule of a policy map on an interface to which it is applied.
struct ZEL_EXPORT RuleKey {
  Velo::String intf;
  Velo::String policyMap;
  std::uint32_t sequence = 0;

  [[nodiscard]] unsigned hash(unsigned seed) const noexcept;
  bool operator==(const RuleKey&) const = default;
};

/// The status of a rule on an interface.
struct RuleStatus {
  bool programmed = false;
  /// The reason if it is not programmed; otherwise empty.
  Velo::String reason;

  bool operator==(const RuleStatus&) const = default;
};

/// The status of a policy map, summed over the served interfaces to which it is applied.
struct PolicyStatus {
  unsigned intfs = 0;
  /// Number of its rules on all these interfaces, and number of those that are programmed.
  unsigned rules = 0;
  unsigned rulesProgrammed = 0;

  [[nodiscard]] bool isProgrammed() const noexcept { return rules == rulesProgrammed; }
  bool operator==(const PolicyStatus&) const = default;
};

/// The status of each configured policy map, and of each rule on each interface. The traffic-policy
/// state machine writes it. Subscribers are notified of each real change.
class ZEL_EXPORT PolicyMapTypeStatus : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::PolicyMapTypeStatus"};
  static constexpr Mox::AttributeId policyStatusAttribute = 130;
  static constexpr Mox::AttributeId ruleStatusAttribute = 131;

  using PolicyStatuses = Mox::PublishedMap<Velo::String, PolicyStatus, 0x739dc1e5>;
  using RuleStatuses = Mox::PublishedMap<RuleKey, RuleStatus, 0x18f5a2c9>;

  [[nodiscard]] static Mox::Ptr<PolicyMapTypeStatus> PolicyMapTypeStatusIs(
      const Velo::String& name);
  explicit PolicyMapTypeStatus(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override {
    return publisher_.notifieeList(this);
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }

  void policyStatusIs(const Velo::String& policyMap, const PolicyStatus& status) {
    policyStatus_.is(policyMap, status);
  }
  bool policyStatusDel(const Velo::String& policyMap) { return policyStatus_.del(policyMap); }
  /// The status of the policy map of that name, or null.
  [[nodiscard]] const PolicyStatus* policyStatus(const Velo::String& policyMap) const noexcept {
    return policyStatus_.map().find(policyMap);
  }
  [[nodiscard]] const PolicyStatuses::Map& policyStatus() const noexcept {
    return policyStatus_.map();
  }

  void ruleStatusIs(const RuleKey& rule, const RuleStatus& status) { ruleStatus_.is(rule, status); }
  bool ruleStatusDel(const RuleKey& rule) { return ruleStatus_.del(rule); }
  /// The status of that rule, or null.
  [[nodiscard]] const RuleStatus* ruleStatus(const RuleKey& rule) const noexcept {
    return ruleStatus_.map().find(rule);
  }
  [[nodiscard]] const RuleStatuses::Map& ruleStatus() const noexcept { return ruleStatus_.map(); }

  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  PolicyStatuses policyStatus_{publisher_, policyStatusAttribute};
  RuleStatuses ruleStatus_{publisher_, ruleStatusAttribute};
};

}  // namespace PolicyMap
