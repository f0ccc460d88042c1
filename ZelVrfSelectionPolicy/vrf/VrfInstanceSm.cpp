#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"

#include "Mox/Exceptions.h"
#include "ZelVrfSelectionPolicy/trace/Source.h"
#include "ZelVrfSelectionPolicy/vrf/NestedSmRemoval.h"

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

VrfSm::VrfInstanceSm::~VrfInstanceSm() {
  // Removed machines are zombies already, and one that never entered a collection runs no handler.
  NotifieeConst::moxDoZombieReactors(true);
}

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
  if (attributeId != VrfStatus::vrfIdAttribute || isZombie()) return;
  if (vrfSm_ == nullptr || !vrfSm_->isPaused()) handleVrfId();
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
  updateWhatNamesIt();
}

void VrfSm::VrfInstanceSm::handleVrfRemove() {
  messages.vrfRemove(vrfName().bytes(), vrfId());
  updateWhatNamesIt();
}

void VrfSm::VrfInstanceSm::updateWhatNamesIt() {
  if (vrfSm_ == nullptr || vrfSm_->isTearingDown()) return;
  vrfSm_->handleVrfUpdates(vrfName(), false);
}

void VrfSm::makeRoomForVrfStatus(const VrfStatus& vrfStatus) {
  VrfInstanceSm::makeRoom();
  vrfInstance_.makeRoom();
  PtrInterface::NotifieeConst::makeRoomAt(vrfStatus);
}

Mox::Ptr<VrfSm::VrfInstanceSm> VrfSm::vrfInstanceIs(const VrfStatusPtr& vrfStatus) {
  if (!vrfStatus) throw Mox::NullArgumentException("vrfInstance");
  const Mox::Ptr<VrfSm> alive(this);
  const L3::VrfName name = vrfStatus->name();
  const auto* present = vrfInstance_.find(name);
  const bool isNew = present == nullptr;
  Mox::Ptr<VrfInstanceSm> instance =
      isNew ? Mox::makePtr<VrfInstanceSm>(vrfStatus, this) : *present;
  if (isNew) {
    vrfInstance_.insert(name, instance);
  } else {
    instance->notifierIs(vrfStatus);
  }
  // Unless what followed from that has removed it again.
  if (instance->vrfSm() != nullptr) instance->moxDoZombieReactors(isZombie());
  return instance;
}

Mox::Ptr<VrfSm::VrfInstanceSm> VrfSm::vrfInstanceDel(const L3::VrfName& vrfName) {
  auto erased = vrfInstance_.erase(vrfName);
  if (!erased) return nullptr;
  const NestedSmRemoval<VrfInstanceSm> removal(erased->second);
  removal.machine()->moxDoZombieReactors(true);
  return removal.machine();
}

void VrfSm::vrfInstanceDelAll() {
  const Mox::Ptr<VrfSm> alive(this);
  for (auto entry = vrfInstance_.iterator(); entry; ++entry)
    vrfInstanceDel(entry.key());
}

bool VrfSm::moxVrfInstanceHas(const L3::VrfName& vrfName) const noexcept {
  return vrfInstance_.has(vrfName);
}

}  // namespace ZelVrfSelectionPolicy
