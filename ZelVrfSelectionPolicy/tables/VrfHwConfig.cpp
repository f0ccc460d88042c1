#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"

namespace ZelVrfSelectionPolicy {

/// While subscribers are told of one change. Tellings nest like the calls that they are in, and a
/// subscriber may release the table.
class VrfHwConfig::Telling {
 public:
  Telling(VrfHwConfig& table, const VrfAction& action) noexcept
      : table_(&table), action_(action), outer_(table.innermostTelling_) {
    table.innermostTelling_ = this;
  }
  Telling(const Telling&) = delete;
  Telling& operator=(const Telling&) = delete;
  ~Telling() {
    if (table_ != nullptr) table_->innermostTelling_ = outer_;
  }

  VrfHwConfig* table_;
  const VrfAction& action_;
  Telling* outer_;
  bool resourceEnded_ = false;
};

Velo::NotifieeListDescriptor VrfHwConfig::notifieeList() const {
  return publisher_.notifieeList(this);
}

VrfHwConfig::~VrfHwConfig() {
  for (Telling* telling = innermostTelling_; telling != nullptr; telling = telling->outer_)
    telling->table_ = nullptr;
}

Mox::Ptr<VrfHwConfig> VrfHwConfig::VrfHwConfigIs() {
  return Mox::makeActivePtr<VrfHwConfig>();
}

void VrfHwConfig::vrfRefCountIs(const VrfAction& action, unsigned count) {
  const auto [at, inserted] = vrfRefCount_.insert(
      action, count, [&](VrfRefCounts::Position) { makeRoomFor(action, count); });
  if (!inserted) {
    if (vrfRefCount_.value(at) == count) return;
    makeRoomFor(action, count);
  }
  countIs(at, count);
}

void VrfHwConfig::countIs(VrfRefCounts::Position at, unsigned count) {
  vrfRefCount_.value(at) = count;
  // A copy, since a subscriber may delete the entry.
  const VrfAction key = vrfRefCount_.key(at);
  publish(key, &count);
}

unsigned VrfHwConfig::vrfRefCountInc(const VrfAction& action, unsigned users) {
  const auto [at, inserted] = vrfRefCount_.insert(
      action, users, [&](VrfRefCounts::Position) { makeRoomFor(action, users); });
  if (inserted) {
    countIs(at, users);
    return users;
  }
  const unsigned count = vrfRefCount_.value(at) + users;
  if (users != 0) {
    makeRoomFor(action, count);
    countIs(at, count);
  }
  return count;
}

unsigned VrfHwConfig::vrfRefCountDec(const VrfAction& action, unsigned users) {
  return vrfRefCountInc(action, 0U - users);
}

unsigned VrfHwConfig::vrfRefCountDel(const VrfAction& action) {
  const auto erased = vrfRefCount_.erase(action);
  if (!erased) return 0;
  publish(erased->first, nullptr);
  return erased->second;
}

void VrfHwConfig::vrfRefCountDelUnused(const VrfAction& action) {
  const auto erased = vrfRefCount_.eraseIf(
      action, [this](VrfRefCounts::Position at) { return vrfRefCount_.value(at) == 0; });
  if (erased) publish(erased->first, nullptr);
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

void VrfHwConfig::publish(const VrfAction& action, const unsigned* count) {
  const Telling telling(*this, action);
  publisher_.publish(vrfRefCountAttribute, &action, count);
}

void VrfHwConfig::resourceEndedIs(const VrfAction& action) noexcept {
  for (Telling* telling = innermostTelling_; telling != nullptr; telling = telling->outer_) {
    if (telling->action_ == action) telling->resourceEnded_ = true;
  }
}

bool VrfHwConfig::resourceEnded() const noexcept {
  return innermostTelling_ != nullptr && innermostTelling_->resourceEnded_;
}

unsigned VrfHwConfig::vrfRefCount(const VrfAction& action) const noexcept {
  const unsigned* count = vrfRefCount_.find(action);
  return count == nullptr ? 0 : *count;
}

Mox::Ptr<VrfHwConfig> vrfHwConfigFactory() {
  return VrfHwConfig::VrfHwConfigIs();
}

}  // namespace ZelVrfSelectionPolicy
