#pragma once

#include "Mox/Entity.h"
#include "Mox/PublishedMap.h"
#include "PolicyMap/RuleStatusTable.h"
#include "Velo/Export.h"

namespace PolicyMap {

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
    return ruleStatus_.find(rule);
  }
  [[nodiscard]] const RuleStatusTable& ruleStatus() const noexcept { return ruleStatus_; }

  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  PolicyStatuses policyStatus_{publisher_, policyStatusAttribute};
  RuleStatusTable ruleStatus_{publisher_, ruleStatusAttribute};
};

}  // namespace PolicyMap
