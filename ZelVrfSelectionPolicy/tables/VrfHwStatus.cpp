#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

#include "ZelVrfSelectionPolicy/tables/ActionsByVrf.h"
#include "ZelVrfSelectionPolicy/tables/ResourceCalls.h"

namespace ZelVrfSelectionPolicy {

VrfHwStatus::VrfHwStatus() : actionsByVrf_(std::make_unique<ActionsByVrf>()) {}
VrfHwStatus::~VrfHwStatus() = default;

Mox::Ptr<VrfHwStatus> VrfHwStatus::VrfHwStatusIs() {
  auto created = Mox::Ptr<VrfHwStatus>::attached(new VrfHwStatus);
  created->hasNotificationActiveIs(true);
  return created;
}

Velo::NotifieeListDescriptor VrfHwStatus::notifieeList() const {
  return publisher_.notifieeList(this);
}

void VrfHwStatus::hwStatusIs(const VrfAction& action, const HwStatus& status) {
  const auto [at, inserted] = hwStatus_.insert(action, status);
  if (!inserted) return presentIs(at, status);
  actionsByVrf_->insert(at, action);
  notify(at, status);
}

void VrfHwStatus::changeTo(HwStatuses::Position at, const HwStatus& status) {
  hwStatus_.value(at) = status;
  notify(at, status);
}

HwStatus VrfHwStatus::hwStatusDel(const VrfAction& action) {
  const Mox::Ptr<VrfHwStatus> alive(this);
  const HwStatuses::Pin pin(hwStatus_);
  const HwStatuses::Position at = hwStatus_.withdraw(action);
  if (at == HwStatuses::none) return {};
  const VrfAction& removed = hwStatus_.key(at);
  actionsByVrf_->erase(at, removed);
  calls_.forEach([&](ResourceCall& call) {
    if (call.action == removed) call.entryRemoved = true;
  });
  publisher_.publish(hwStatusAttribute, &removed, nullptr);
  return hwStatus_.value(at);
}

void VrfHwStatus::hwStatusDelAll() {
  if (!publisher_.hasSubscribers() && calls_.empty()) {
    actionsByVrf_->clear();
    hwStatus_.clear();
    return;
  }
  const Mox::Ptr<VrfHwStatus> alive(this);
  for (auto entry = hwStatus_.iterator(); entry; ++entry)
    hwStatusDel(entry.key());
}

HwStatus VrfHwStatus::hwStatus(const VrfAction& action) const noexcept {
  const HwStatus* status = hwStatus_.find(action);
  return status == nullptr ? HwStatus() : *status;
}

bool VrfHwStatus::hwStatusHas(const VrfAction& action) const noexcept {
  return hwStatus_.has(action);
}

// The entry is pinned, since a subscriber may delete it.
void VrfHwStatus::notify(HwStatuses::Position at, const HwStatus& status) {
  if (!publisher_.hasSubscribers()) return;
  const Mox::Ptr<VrfHwStatus> alive(this);
  const HwStatuses::Pin pin(hwStatus_);
  publisher_.publish(hwStatusAttribute, &hwStatus_.key(at), &status);
}

Mox::Ptr<VrfHwStatus> vrfHwStatusFactory() {
  return VrfHwStatus::VrfHwStatusIs();
}

}  // namespace ZelVrfSelectionPolicy
