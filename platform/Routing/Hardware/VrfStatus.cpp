#include "Routing/Hardware/VrfStatus.h"

#include <utility>

#include "Mox/AttributeTable.h"

namespace Routing::Hardware {
namespace {

constexpr Mox::Attribute attributes[] = {
    {VrfStatus::vrfIdAttribute, "vrfId", Mox::field<&VrfStatus::vrfId, &VrfStatus::vrfIdIs>()},
};
constexpr Mox::Reflection reflection{
    .attributes = attributes,
    .nameOf = &Mox::namedBy<&VrfStatus::name>,
};

}  // namespace

constinit const Mox::Type VrfStatus::moxType{"Routing::Hardware::VrfStatus", &reflection};

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
