#pragma once

#include <cstdint>
#include <vector>

#include "Mox/Entity.h"
#include "Mox/PublishedMap.h"
#include "PolicyMap/RuleAction.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// One rule of a policy map: the action applies to the packets that the class map matches.
struct PolicyMapRule {
  /// Rules are tried in ascending order of their sequences.
  std::uint32_t sequence = 0;
  /// The class map, which need not exist.
  Velo::String classMap;
  RuleAction action;

  bool operator==(const PolicyMapRule&) const = default;
};

/// The rules of one policy map, in ascending order of their sequences.
using PolicyMapRules = std::vector<PolicyMapRule>;

/// The configured policy maps: a list of rules for each name. A policy map is replaced as a whole,
/// so that a subscriber never sees half a change. Subscribers are notified of each real change.
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

  /// Sets the rules of the policy map of that name. Throws `Mox::RangeException` unless their
  /// sequences ascend.
  void policyMapIs(const Velo::String& name, PolicyMapRules rules);
  /// Removes the policy map. Returns whether there was one.
  bool policyMapDel(const Velo::String& name) { return policyMap_.del(name); }
  /// The rules of the policy map of that name, or null.
  [[nodiscard]] const PolicyMapRules* policyMap(const Velo::String& name) const noexcept {
    return policyMap_.map().find(name);
  }
  [[nodiscard]] const PolicyMaps::Map& policyMap() const noexcept { return policyMap_.map(); }

  /// Subscribing does not change the configuration, so it needs no write access.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  PolicyMaps policyMap_{publisher_, policyMapAttribute};
};

}  // namespace PolicyMap
