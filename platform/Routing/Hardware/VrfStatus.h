#pragma once

#include <cstdint>

#include "L3/VrfName.h"
#include "Mox/NotifieeConst.h"
#include "Velo/Export.h"

namespace Routing::Hardware {

/// The status of one VRF in the hardware. Reactors are notified of a change of `vrfId`.
class ZEL_EXPORT VrfStatus final : public Mox::PtrInterface {
 public:
  static const Mox::Type moxType;
  static constexpr Mox::AttributeId vrfIdAttribute = 259;

  [[nodiscard]] static Mox::Ptr<VrfStatus> VrfStatusIs(L3::VrfName name);
  explicit VrfStatus(L3::VrfName name) noexcept;
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfStatus() override;

  [[nodiscard]] const L3::VrfName& name() const noexcept { return name_; }
  /// The hardware VRF id; 0 while none is assigned.
  [[nodiscard]] std::uint32_t vrfId() const noexcept { return vrfId_; }
  void vrfIdIs(std::uint32_t vrfId);

 private:
  L3::VrfName name_;
  std::uint32_t vrfId_ = 0;
  mutable Mox::ReactorList reactors_;
};

}  // namespace Routing::Hardware
