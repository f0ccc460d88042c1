#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

#include "ZelVrfSelectionPolicy/trace/Source.h"

namespace ZelVrfSelectionPolicy {
namespace {

using VrfStatus = Routing::Hardware::VrfStatus;

struct Messages {
  using Message = Duolog::Message;

  Message initialized =
      message(5, 227, "handleInitialized",
              {"VrfSm::VrfInstanceSm::", "handleInitialized", ": VRF:", "%s", " vrfId:", "%u"});
  Message vrfId =
      message(5, 201, "handleVrfId",
              {"VrfSm::VrfInstanceSm::", "handleVrfId", ": VRF:", "%s", " vrfId:", "%u"});
  Message notAssigned =
      message(7, 206, "handleVrfId",
              {"VrfSm::VrfInstanceSm::", "handleVrfId", " VRF ID not", " assigned yet, Skipping"});
  Message vrfRemove =
      message(5, 219, "handleVrfRemove",
              {"VrfSm::VrfInstanceSm::", "handleVrfRemove", ": VRF:", "%s", " vrfId:", "%u"});
};

const Messages messages;

}  // namespace

VrfSm::VrfInstanceSm::VrfInstanceSm(const VrfStatusPtr& vrfStatus, VrfSm* vrfSm)
    : NotifieeConst(vrfStatus), vrfSm_(vrfSm) {
  handleInitialized();
  isRegisteredIs(true);
  hasNotificationActiveIs(true);
}

VrfSm::VrfInstanceSm::~VrfInstanceSm() = default;

VrfSm::VrfStatusPtr VrfSm::VrfInstanceSm::vrfInstance() const noexcept {
  return VrfStatusPtr(notifierAs<VrfStatus>());
}

L3::VrfName VrfSm::VrfInstanceSm::vrfName() const noexcept {
  const auto* status = notifierAs<VrfStatus>();
  return status == nullptr ? L3::VrfName() : status->name();
}

unsigned VrfSm::VrfInstanceSm::vrfId() const noexcept {
  const auto* status = notifierAs<VrfStatus>();
  return status == nullptr ? 0 : status->vrfId();
}

void VrfSm::VrfInstanceSm::notifierIs(const Mox::Ptr<Mox::PtrInterface const>& notifier) {
  const VrfStatusPtr status = Mox::ptrCast<VrfStatus const>(notifier);
  if (status == vrfInstance()) return;
  NotifieeConst::notifierIs(status);
  if (status && !isZombie()) handleVrfId();
}

void VrfSm::VrfInstanceSm::onAttribute(Mox::AttributeId attributeId, const void* /*key*/) {
  if (attributeId == VrfStatus::vrfIdAttribute && !isZombie()) handleVrfId();
}

void VrfSm::VrfInstanceSm::moxDoZombieReactors(bool zombie) {
  if (isZombie() == zombie) return;
  if (notifier()) hasNotificationActiveIs(!zombie);
  try {
    handleVrfRemove();
  } catch (...) {
    zombieIs(zombie);
    throw;
  }
  zombieIs(zombie);
}

void VrfSm::VrfInstanceSm::handleInitialized() {
  messages.initialized(vrfName().bytes(), vrfId());
}

void VrfSm::VrfInstanceSm::handleVrfId() {
  const L3::VrfName name = vrfName();
  messages.vrfId(name.bytes(), vrfId());
  if (name.isDefaultVrf()) return;
  if (vrfId() == 0) {
    messages.notAssigned();
    return;
  }
  updateActions();
}

void VrfSm::VrfInstanceSm::handleVrfRemove() {
  messages.vrfRemove(vrfName().bytes(), vrfId());
  updateActions();
}

void VrfSm::VrfInstanceSm::updateActions() {
  if (vrfSm_ != nullptr) vrfSm_->handleVrfUpdates(vrfName(), false);
}

}  // namespace ZelVrfSelectionPolicy
