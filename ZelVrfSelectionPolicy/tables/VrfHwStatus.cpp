#include "ZelVrfSelectionPolicy/tables/VrfHwStatus.h"

#include <utility>

namespace ZelVrfSelectionPolicy {

Velo::NotifieeListDescriptor VrfHwStatus::notifieeList() const {
  return publisher_.notifieeList(this);
}

VrfHwStatus::~VrfHwStatus() = default;

Mox::Ptr<VrfHwStatus> VrfHwStatus::VrfHwStatusIs() {
  return Mox::makeActivePtr<VrfHwStatus>();
}

void VrfHwStatus::hwStatusIs(const VrfAction& action, const HwStatus& status) {
  const auto [at, inserted] = hwStatus_.insert(
      action, status, [&](HwStatuses::Position to) { actionsByVrf_.makeRoomFor(to, action); });
  if (!inserted) return presentIs(at, status);
  actionsByVrf_.insert(at, action);
  publish(at);
}

void VrfHwStatus::changeTo(HwStatuses::Position at, const HwStatus& status) {
  hwStatus_.value(at) = status;
  publish(at);
}

// By copies, since a subscriber may delete the entry.
void VrfHwStatus::publish(HwStatuses::Position at) {
  if (!publisher_.hasSubscribers()) return;
  const VrfAction key = hwStatus_.key(at);
  const HwStatus value = hwStatus_.value(at);
  publisher_.publish(hwStatusAttribute, &key, &value);
}

HwStatus VrfHwStatus::hwStatusDel(const VrfAction& action) {
  if (walks_ != 0) return withdraw(action);
  const auto erased = hwStatus_.eraseIf(action, [&](HwStatuses::Position at) {
    actionsByVrf_.erase(at, action);
    return true;
  });
  if (!erased) return {};
  noteRemoval(erased->first);
  publisher_.publish(hwStatusAttribute, &erased->first, nullptr);
  return erased->second;
}

// As above, while a walk may stand on the entry.
HwStatus VrfHwStatus::withdraw(const VrfAction& action) {
  const HwStatuses::Position at = hwStatus_.withdraw(action);
  if (at == HwStatuses::none) return {};
  const VrfAction key = hwStatus_.key(at);
  HwStatus value = hwStatus_.value(at);
  actionsByVrf_.erase(at, key);
  noteWithdrawn(at);
  noteRemoval(key);
  publisher_.publish(hwStatusAttribute, &key, nullptr);
  return value;
}

void VrfHwStatus::noteRemoval(const VrfAction& action) noexcept {
  for (EntryWatch* watch = innermostWatch_; watch != nullptr; watch = watch->outer_) {
    if (watch->action_ == action) watch->wasRemoved_ = true;
  }
}

void VrfHwStatus::hwStatusDelAll() {
  const Mox::Ptr<VrfHwStatus> alive(this);
  if (publisher_.hasSubscribers() || walks_ != 0) {
    for (auto entry = hwStatus_.iterator(); entry; ++entry)
      hwStatusDel(entry.key());
    return;
  }
  for (EntryWatch* watch = innermostWatch_; watch != nullptr; watch = watch->outer_) {
    if (hwStatusHas(watch->action_)) watch->wasRemoved_ = true;
  }
  actionsByVrf_.clear();
  hwStatus_.clear();
}

HwStatus VrfHwStatus::hwStatus(const VrfAction& action) const noexcept {
  const HwStatus* status = hwStatus_.find(action);
  return status == nullptr ? HwStatus() : *status;
}

bool VrfHwStatus::hwStatusHas(const VrfAction& action) const noexcept {
  return hwStatus_.has(action);
}

void VrfHwStatus::noteWithdrawn(HwStatuses::Position at) noexcept {
  const bool isFirst = firstWithdrawn_ == HwStatuses::none;
  (isFirst ? firstWithdrawn_ : actionsByVrf_.noteOf(lastWithdrawn_)) = at;
  lastWithdrawn_ = at;
  actionsByVrf_.noteOf(at) = HwStatuses::none;
}

void VrfHwStatus::discardWithdrawn() noexcept {
  HwStatuses::Position at = std::exchange(firstWithdrawn_, HwStatuses::none);
  while (at != HwStatuses::none)
    hwStatus_.discard(std::exchange(at, actionsByVrf_.noteOf(at)));
}

VrfHwStatus::Transition::Transition(VrfHwStatus& statuses, const VrfAction& action,
                                    Kind kind) noexcept
    : statuses_(&statuses), action_(action), kind_(kind), outer_(statuses.innermostTransition_) {
  statuses.innermostTransition_ = this;
}

VrfHwStatus::Transition::~Transition() {
  statuses_->innermostTransition_ = outer_;
}

VrfHwStatus::EntryWatch::EntryWatch(VrfHwStatus& statuses, const VrfAction& action)
    : statuses_(statuses),
      action_(action),
      at_(statuses.hwStatus_.position(action)),
      outer_(statuses.innermostWatch_) {
  if (at_ == HwStatuses::none) statuses.makeRoomFor(action);
  statuses.innermostWatch_ = this;
}

void VrfHwStatus::EntryWatch::hwStatusIs(const HwStatus& status) {
  if (wasRemoved_) return;
  if (at_ == HwStatuses::none) return statuses_.hwStatusIs(action_, status);
  statuses_.presentIs(at_, status);
}

VrfHwStatus::EntryWatch::~EntryWatch() {
  statuses_.innermostWatch_ = outer_;
}

Mox::Ptr<VrfHwStatus> vrfHwStatusFactory() {
  return VrfHwStatus::VrfHwStatusIs();
}

}  // namespace ZelVrfSelectionPolicy
