#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"

namespace ZelVrfSelectionPolicy {

Velo::NotifieeListDescriptor VrfHwConfig::notifieeList() const {
  return publisher_.notifieeList(this);
}

VrfHwConfig::~VrfHwConfig() = default;

Mox::Ptr<VrfHwConfig> VrfHwConfig::VrfHwConfigIs() {
  return Mox::makeActivePtr<VrfHwConfig>();
}

void VrfHwConfig::vrfRefCountIs(const VrfAction& action, unsigned count) {
  const auto [at, inserted] = vrfRefCount_.insert(action, count);
  if (!inserted) {
    if (vrfRefCount_.value(at) == count) return;
    vrfRefCount_.value(at) = count;
  }
  // A copy, since a subscriber may delete the entry whose key the caller gave.
  const VrfAction key = vrfRefCount_.key(at);
  publisher_.publish(vrfRefCountAttribute, &key, &count);
}

unsigned VrfHwConfig::vrfRefCountInc(const VrfAction& action, unsigned users) {
  const unsigned count = vrfRefCount(action) + users;
  vrfRefCountIs(action, count);
  return count;
}

unsigned VrfHwConfig::vrfRefCountDec(const VrfAction& action, unsigned users) {
  const unsigned count = vrfRefCount(action) - users;
  vrfRefCountIs(action, count);
  return count;
}

unsigned VrfHwConfig::vrfRefCountDel(const VrfAction& action) {
  const auto erased = vrfRefCount_.erase(action);
  if (!erased) return 0;
  publisher_.publish(vrfRefCountAttribute, &erased->first, nullptr);
  return erased->second;
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

Mox::Ptr<VrfHwConfig> vrfHwConfigFactory() {
  return VrfHwConfig::VrfHwConfigIs();
}

}  // namespace ZelVrfSelectionPolicy
