#pragma once

#include <cstdint>
#include <vector>

#include "Mox/Entity.h"
#include "Mox/PublishedMap.h"
#include "PolicyMap/RuleAction.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// One rule of a policy map: what the class map matches is treated by the action.
struct PolicyMapRule {
  /// Rules are tried in ascending order of it.
  std::uint32_t sequence = 0;
  /// The class map, which need not exist.
  Velo::String classMap;
  RuleAction action;

  bool operator==(const PolicyMapRule&) const = default;
};

using PolicyMapRules = std::vector<PolicyMapRule>;

/// The configured policy maps: lists of rules under a name. A policy map changes as a whole, so
/// that whoever follows it never sees half a change. Subscribers are told of each real change.
class ZEL_EXPORT PolicyMapTypeConfig : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::PolicyMapTypeConfig"};
  static constexpr Mox::AttributeId policyMapAttribute = 130;

  using PolicyMaps = Mox::PublishedMap<Velo::String, PolicyMapRules, 0x5b81e7a2>;

  [[nodiscard]] static Mox::Ptr<PolicyMapTypeConfig> PolicyMapTypeConfigIs(
      const Velo::String& name);
  explicit PolicyMapTypeConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override {
    return publisher_.notifieeList(this);
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }

  /// Makes `rules` the policy map of that name. Throws `Mox::RangeException` unless their
  /// sequences ascend.
  void policyMapIs(const Velo::String& name, PolicyMapRules rules);
  /// Removes the policy map; whether it was there.
  bool policyMapDel(const Velo::String& name) { return policyMap_.del(name); }
  /// The rules of the policy map of that name, or null.
  [[nodiscard]] const PolicyMapRules* policyMap(const Velo::String& name) const noexcept {
    return policyMap_.map().find(name);
  }
  [[nodiscard]] const PolicyMaps::Map& policyMap() const noexcept { return policyMap_.map(); }

  /// Subscribing does not change the configuration, so it is open to those who may only read.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  PolicyMaps policyMap_{publisher_, policyMapAttribute};
};

}  // namespace PolicyMap
