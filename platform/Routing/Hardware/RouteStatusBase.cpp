#include "Routing/Hardware/RouteStatusBase.h"

#include "Mox/Exceptions.h"

namespace Routing::Hardware {
namespace {

template <class Map, class Key>
auto take(Map& map, const Key& key) {
  auto erased = map.erase(key);
  return erased ? std::move(erased->second) : nullptr;
}

template <class Map, class Key>
auto get(const Map& map, const Key& key) noexcept {
  const auto* found = map.find(key);
  return found == nullptr ? nullptr : *found;
}

// Adds `entity` under `key`. Returns false if it was present.
template <class Map, class Key, class Entity>
bool put(Map& map, const Key& key, const Entity& entity) {
  const auto [at, inserted] = map.insert(key, entity);
  if (inserted) return true;
  if (map.value(at) == entity) return false;
  map.value(at) = entity;
  return true;
}

}  // namespace

RouteStatusBase::~RouteStatusBase() = default;

Velo::NotifieeListDescriptor RouteStatusBase::notifieeList() const {
  return reactors_.notifieeList(*this);
}

Mox::Ptr<VrfStatus> RouteStatusBase::vrfStatusIs(const L3::VrfName& name) {
  if (Mox::Ptr<VrfStatus> present = vrfStatus(name)) return present;
  Mox::Ptr<VrfStatus> created = VrfStatus::VrfStatusIs(name);
  vrfStatusIs(created);
  return created;
}

void RouteStatusBase::vrfStatusIs(const Mox::Ptr<VrfStatus>& status) {
  if (!status) throw Mox::NullArgumentException("vrfStatus");
  const L3::VrfName name = status->name();
  if (put(vrfStatus_, name, status)) reactors_.notify(*this, vrfStatusAttribute, &name);
}

Mox::Ptr<VrfStatus> RouteStatusBase::vrfStatusDel(const L3::VrfName& name) {
  const L3::VrfName key = name;
  Mox::Ptr<VrfStatus> taken = take(vrfStatus_, key);
  if (taken) reactors_.notify(*this, vrfStatusAttribute, &key);
  return taken;
}

void RouteStatusBase::vrfStatusDelAll() {
  const Mox::Ptr<RouteStatusBase> alive(this);
  for (auto entry = vrfStatus_.iterator(); entry; ++entry)
    vrfStatusDel(entry.key());
}

Mox::Ptr<VrfStatus> RouteStatusBase::vrfStatus(const L3::VrfName& name) const noexcept {
  return get(vrfStatus_, name);
}

Mox::Ptr<PrefixLensInExactMatch> RouteStatusBase::vrfPrefixLensInExactMatchIs(
    const Velo::String& name) {
  if (Mox::Ptr<PrefixLensInExactMatch> present = vrfPrefixLensInExactMatch(name)) return present;
  Mox::Ptr<PrefixLensInExactMatch> created = PrefixLensInExactMatch::PrefixLensInExactMatchIs(name);
  vrfPrefixLensInExactMatchIs(created);
  return created;
}

void RouteStatusBase::vrfPrefixLensInExactMatchIs(const Mox::Ptr<PrefixLensInExactMatch>& lengths) {
  if (!lengths) throw Mox::NullArgumentException("vrfPrefixLensInExactMatch");
  const Velo::String name = lengths->name();
  if (put(prefixLens_, name, lengths)) reactors_.notify(*this, prefixLensAttribute, &name);
}

Mox::Ptr<PrefixLensInExactMatch> RouteStatusBase::vrfPrefixLensInExactMatchDel(
    const Velo::String& name) {
  const Velo::String key = name;
  Mox::Ptr<PrefixLensInExactMatch> taken = take(prefixLens_, key);
  if (taken) reactors_.notify(*this, prefixLensAttribute, &key);
  return taken;
}

void RouteStatusBase::vrfPrefixLensInExactMatchDelAll() {
  const Mox::Ptr<RouteStatusBase> alive(this);
  for (auto entry = prefixLens_.iterator(); entry; ++entry) {
    vrfPrefixLensInExactMatchDel(entry.key());
  }
}

Mox::Ptr<PrefixLensInExactMatch> RouteStatusBase::vrfPrefixLensInExactMatch(
    const Velo::String& name) const noexcept {
  return get(prefixLens_, name);
}

void RouteStatusBase::decapNhEnabledIs(bool enabled) {
  if (decapNhEnabled_ == enabled) return;
  decapNhEnabled_ = enabled;
  reactors_.notify(*this, decapNhEnabledAttribute);
}

void RouteStatusBase::decapNhFallbackEnabledIs(bool enabled) {
  if (decapNhFallbackEnabled_ == enabled) return;
  decapNhFallbackEnabled_ = enabled;
  reactors_.notify(*this, decapNhFallbackEnabledAttribute);
}

}  // namespace Routing::Hardware
