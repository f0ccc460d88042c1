#include "Routing/Hardware/VrfStatus.h"

#include <utility>

namespace Routing::Hardware {

Mox::Ptr<VrfStatus> VrfStatus::VrfStatusIs(L3::VrfName name) {
  return Mox::makeActivePtr<VrfStatus>(std::move(name));
}

VrfStatus::VrfStatus(L3::VrfName name) noexcept : name_(std::move(name)) {}

VrfStatus::~VrfStatus() = default;

Velo::NotifieeListDescriptor VrfStatus::notifieeList() const {
  return reactors_.notifieeList(*this);
}

const Mox::Type* VrfStatus::fwkType() const {
  return &moxType;
}

void VrfStatus::vrfIdIs(std::uint32_t vrfId) {
  if (vrfId_ == vrfId) return;
  vrfId_ = vrfId;
  reactors_.notify(*this, vrfIdAttribute);
}

}  // namespace Routing::Hardware
