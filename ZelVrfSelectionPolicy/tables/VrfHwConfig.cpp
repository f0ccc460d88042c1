#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"

#include "ZelVrfSelectionPolicy/tables/ResourceCalls.h"

namespace ZelVrfSelectionPolicy {

VrfHwConfig::VrfHwConfig() = default;
VrfHwConfig::~VrfHwConfig() = default;

Mox::Ptr<VrfHwConfig> VrfHwConfig::VrfHwConfigIs() {
  auto created = Mox::Ptr<VrfHwConfig>::attached(new VrfHwConfig);
  created->hasNotificationActiveIs(true);
  return created;
}

Velo::NotifieeListDescriptor VrfHwConfig::notifieeList() const {
  return publisher_.notifieeList(this);
}

void VrfHwConfig::vrfRefCountIs(const VrfAction& action, unsigned count) {
  const auto [at, inserted] = vrfRefCount_.insert(action, count);
  if (inserted || vrfRefCount_.value(at) != count) countIs(at, count);
}

unsigned VrfHwConfig::vrfRefCountInc(const VrfAction& action, unsigned users) {
  const auto [at, inserted] = vrfRefCount_.insert(action, 0U);
  const unsigned count = vrfRefCount_.value(at) + users;
  if (inserted || users != 0) countIs(at, count);
  return count;
}

unsigned VrfHwConfig::vrfRefCountDec(const VrfAction& action, unsigned users) {
  return vrfRefCountInc(action, 0U - users);
}

unsigned VrfHwConfig::vrfRefCountDel(const VrfAction& action) {
  const Mox::Ptr<VrfHwConfig> alive(this);
  const VrfRefCounts::Pin pin(vrfRefCount_);
  const VrfRefCounts::Position at = vrfRefCount_.withdraw(action);
  if (at == VrfRefCounts::none) return 0;
  publish(at, nullptr);
  return vrfRefCount_.value(at);
}

// Removes the entry of `action` if its count is 0. Returns whether there was an entry, with any
// count.
bool VrfHwConfig::vrfRefCountDelUnused(const VrfAction& action) {
  const unsigned* count = vrfRefCount_.find(action);
  if (count == nullptr) return false;
  if (*count == 0) vrfRefCountDel(action);
  return true;
}

void VrfHwConfig::vrfRefCountDelAll() {
  if (!publisher_.hasSubscribers()) {
    vrfRefCount_.clear();
    return;
  }
  const Mox::Ptr<VrfHwConfig> alive(this);
  for (auto entry = vrfRefCount_.iterator(); entry; ++entry)
    vrfRefCountDel(entry.key());
}

unsigned VrfHwConfig::vrfRefCount(const VrfAction& action) const noexcept {
  const unsigned* count = vrfRefCount_.find(action);
  return count == nullptr ? 0 : *count;
}

// The entry is pinned, since a subscriber may delete it.
void VrfHwConfig::countIs(VrfRefCounts::Position at, unsigned count) {
  vrfRefCount_.value(at) = count;
  if (!publisher_.hasSubscribers()) return;
  const Mox::Ptr<VrfHwConfig> alive(this);
  const VrfRefCounts::Pin pin(vrfRefCount_);
  publish(at, &count);
}

// Precondition: the caller holds the table and a pin.
void VrfHwConfig::publish(VrfRefCounts::Position at, const unsigned* count) {
  const Changes::Scope change(changes_, vrfRefCount_.key(at));
  publisher_.publish(vrfRefCountAttribute, &change->action, count);
}

Mox::Ptr<VrfHwConfig> vrfHwConfigFactory() {
  return VrfHwConfig::VrfHwConfigIs();
}

}  // namespace ZelVrfSelectionPolicy
