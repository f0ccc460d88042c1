#pragma once

#include "Mox/PtrInterface.h"
#include "Velo/Export.h"
#include "Velo/Publisher.h"

namespace PolicyMap {

/// Base of the state machines that program policy maps into classification hardware. It notifies
/// its subscribers of each attribute that changed.
class ZEL_EXPORT ServicePolicySm : public Mox::PtrInterface {
 public:
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override {
    return publisher_.notifieeList(this);
  }

  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

  /// Whether interfaces that forward by MAC address are served.
  [[nodiscard]] bool allowL2Intf() const noexcept { return allowL2Intf_; }
  /// Switches the service of these interfaces on or off.
  void allowL2IntfIs(bool allow);

 protected:
  explicit ServicePolicySm(bool allowL2Intf) noexcept : allowL2Intf_(allowL2Intf) {}
  ~ServicePolicySm() override;

  /// `allowL2Intf` has changed.
  virtual void handleAllowL2Intf() = 0;

 private:
  mutable Velo::Publisher publisher_;
  bool allowL2Intf_;
};

}  // namespace PolicyMap
