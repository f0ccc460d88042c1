#pragma once

#include "Mox/Entity.h"
#include "Mox/PublishedMap.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// The kind of an interface to which a policy map is applied.
enum class IntfKind : unsigned char {
  /// Forwards by IP.
  routed,
  /// Forwards by MAC address.
  l2,
  /// Belongs to the management of the switch.
  mgmt,
};

/// An interface to which a policy map is applied.
struct IntfPolicy {
  IntfKind kind = IntfKind::routed;
  /// The policy map, which need not exist.
  Velo::String policyMap;

  bool operator==(const IntfPolicy&) const = default;
};

/// The policy map of each interface. Subscribers are notified of each real change.
class ZEL_EXPORT IntfConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::IntfConfig"};
  static constexpr Mox::AttributeId intfAttribute = 130;

  using Intfs = Mox::PublishedMap<Velo::String, IntfPolicy, 0x46a3f01d>;

  [[nodiscard]] static Mox::Ptr<IntfConfig> IntfConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<IntfConfig>(name);
  }
  explicit IntfConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override {
    return publisher_.notifieeList(this);
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }

  /// Applies a policy map to the interface, and replaces any other.
  void intfIs(const Velo::String& intf, const IntfPolicy& policy) { intf_.is(intf, policy); }
  /// Removes the policy map of the interface. Returns whether there was one.
  bool intfDel(const Velo::String& intf) { return intf_.del(intf); }
  /// The policy map that is applied to the interface, or null.
  [[nodiscard]] const IntfPolicy* intf(const Velo::String& intf) const noexcept {
    return intf_.map().find(intf);
  }
  [[nodiscard]] const Intfs::Map& intf() const noexcept { return intf_.map(); }

  /// Subscribing does not change the configuration, so it needs no write access.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  mutable Velo::Publisher publisher_;
  Intfs intf_{publisher_, intfAttribute};
};

}  // namespace PolicyMap
