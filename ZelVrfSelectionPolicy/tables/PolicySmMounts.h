#pragma once

#include "Acl/Config.h"
#include "Classification/FieldSetConfig.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "Lag/Input/Config.h"
#include "Mox/Dir.h"
#include "Mox/Ptr.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapStatusRequestDir.h"
#include "Quarry/Slab.h"
#include "TrafficPolicy/Status.h"
#include "TrafficPolicy/TrafficPolicyConfig.h"
#include "Velo/Export.h"

namespace ZelVrfSelectionPolicy {

/// References to the platform objects that the traffic-policy part uses.
///
/// The agent sets the references and passes the object to the policy state machine. Every reference
/// is null at first, and can be read and replaced. The new object is acquired before the old one is
/// released. A replacement is not published.
///
///     Mox::Ptr<PolicySmMounts> mounts = policySmMountsFactory();
///     mounts->aclConfigIs(aclConfig);
class ZEL_EXPORT PolicySmMounts final : public Mox::PtrInterface,
                                        public Quarry::SlabAllocated<PolicySmMounts> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::PolicySmMounts";
  static const Mox::Type moxType;

  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~PolicySmMounts() override;

  /// A new bag with all references empty.
  [[nodiscard]] static Mox::Ptr<PolicySmMounts> PolicySmMountsIs();

  [[nodiscard]] const Mox::Ptr<PolicyMap::IntfConfig const>& intfConfig() const noexcept {
    return intfConfig_;
  }
  void intfConfigIs(const Mox::Ptr<PolicyMap::IntfConfig const>& object) noexcept {
    intfConfig_ = object;
  }

  [[nodiscard]] const Mox::Ptr<TrafficPolicy::TrafficPolicyConfig const>& policyConfig()
      const noexcept {
    return policyConfig_;
  }
  void policyConfigIs(const Mox::Ptr<TrafficPolicy::TrafficPolicyConfig const>& object) noexcept {
    policyConfig_ = object;
  }

  [[nodiscard]] const Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir>& statusRequestDir()
      const noexcept {
    return statusRequestDir_;
  }
  void statusRequestDirIs(const Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir>& object) noexcept {
    statusRequestDir_ = object;
  }

  [[nodiscard]] const Mox::Ptr<TrafficPolicy::Status>& policyStatus() const noexcept {
    return policyStatus_;
  }
  void policyStatusIs(const Mox::Ptr<TrafficPolicy::Status>& object) noexcept {
    policyStatus_ = object;
  }

  [[nodiscard]] const Mox::Ptr<Acl::Config const>& aclConfig() const noexcept { return aclConfig_; }
  void aclConfigIs(const Mox::Ptr<Acl::Config const>& object) noexcept { aclConfig_ = object; }

  [[nodiscard]] const Mox::Ptr<Lag::Input::Config const>& lagInputConfig() const noexcept {
    return lagInputConfig_;
  }
  void lagInputConfigIs(const Mox::Ptr<Lag::Input::Config const>& object) noexcept {
    lagInputConfig_ = object;
  }

  [[nodiscard]] const Mox::Ptr<Ip::Status const>& ipStatus() const noexcept { return ipStatus_; }
  void ipStatusIs(const Mox::Ptr<Ip::Status const>& object) noexcept { ipStatus_ = object; }

  [[nodiscard]] const Mox::Ptr<Ip6::Status const>& ip6Status() const noexcept { return ip6Status_; }
  void ip6StatusIs(const Mox::Ptr<Ip6::Status const>& object) noexcept { ip6Status_ = object; }

  [[nodiscard]] const Mox::Ptr<Mox::Dir const>& routingVrfInfoDir() const noexcept {
    return routingVrfInfoDir_;
  }
  void routingVrfInfoDirIs(const Mox::Ptr<Mox::Dir const>& object) noexcept {
    routingVrfInfoDir_ = object;
  }

  [[nodiscard]] const Mox::Ptr<Mox::Dir const>& routing6VrfInfoDir() const noexcept {
    return routing6VrfInfoDir_;
  }
  void routing6VrfInfoDirIs(const Mox::Ptr<Mox::Dir const>& object) noexcept {
    routing6VrfInfoDir_ = object;
  }

  [[nodiscard]] const Mox::Ptr<Mox::Dir const>& bgpNeighborConfigDir() const noexcept {
    return bgpNeighborConfigDir_;
  }
  void bgpNeighborConfigDirIs(const Mox::Ptr<Mox::Dir const>& object) noexcept {
    bgpNeighborConfigDir_ = object;
  }

  [[nodiscard]] const Mox::Ptr<Classification::FieldSetConfig const>& fieldSetConfig()
      const noexcept {
    return fieldSetConfig_;
  }
  void fieldSetConfigIs(const Mox::Ptr<Classification::FieldSetConfig const>& object) noexcept {
    fieldSetConfig_ = object;
  }

 private:
  Mox::Ptr<PolicyMap::IntfConfig const> intfConfig_;
  Mox::Ptr<TrafficPolicy::TrafficPolicyConfig const> policyConfig_;
  Mox::Ptr<PolicyMap::PolicyMapStatusRequestDir> statusRequestDir_;
  Mox::Ptr<TrafficPolicy::Status> policyStatus_;
  Mox::Ptr<Acl::Config const> aclConfig_;
  Mox::Ptr<Lag::Input::Config const> lagInputConfig_;
  Mox::Ptr<Ip::Status const> ipStatus_;
  Mox::Ptr<Ip6::Status const> ip6Status_;
  Mox::Ptr<Mox::Dir const> routingVrfInfoDir_;
  Mox::Ptr<Mox::Dir const> routing6VrfInfoDir_;
  Mox::Ptr<Mox::Dir const> bgpNeighborConfigDir_;
  Mox::Ptr<Classification::FieldSetConfig const> fieldSetConfig_;
};

/// A new bag with all references empty.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<PolicySmMounts> policySmMountsFactory();

}  // namespace ZelVrfSelectionPolicy
