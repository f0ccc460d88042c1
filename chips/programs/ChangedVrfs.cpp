#include "chips/programs/ChangedVrfs.h"

#include <functional>

namespace Chips {

// Calls `handle` with each change of the entity.
class ChangedVrfs::Watch final : public Mox::PtrInterface::NotifieeConst {
 public:
  using Handle = std::function<void(Mox::AttributeId attributeId, const void* key)>;

  Watch(const EntityPtr& entity, Handle handle)
      : NotifieeConst(entity), handle_(std::move(handle)) {
    isRegisteredIs(true);
  }
  ~Watch() override { Watch::moxDoZombieReactors(true); }

  void onAttribute(Mox::AttributeId attributeId, const void* key) override {
    if (!isZombie()) handle_(attributeId, key);
  }

 private:
  Handle handle_;
};

ChangedVrfs::ChangedVrfs(ProgramInputs inputs) : inputs_(std::move(inputs)) {
  watchRoutes(inputs_.routeStatus, Fact::lengths);
  watchRoutes(inputs_.routeStatusV6, Fact::lengthsV6);
  if (inputs_.routeStatus) {
    for (auto entry = inputs_.routeStatus->vrfStatus().iterator(); entry; ++entry)
      watchStatus(entry.key());
  }
  if (!inputs_.fallbackConfig) return;
  fallbackSubscriber_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short,
                                    const void* key, const void*) {
    ChangedVrfs& self = Velo::MemberSubscriber<ChangedVrfs>::ownerOf(subscriber);
    self.changed_.insert(*static_cast<const L3::VrfName*>(key));
  };
  inputs_.fallbackConfig->publisher().subscriberIs(fallbackSubscriber_);
}

ChangedVrfs::~ChangedVrfs() {
  if (inputs_.fallbackConfig) {
    inputs_.fallbackConfig->publisher().subscriberDel(fallbackSubscriber_);
  }
}

std::set<L3::VrfName> ChangedVrfs::take() {
  return std::exchange(changed_, {});
}

void ChangedVrfs::watchRoutes(const Mox::Ptr<RouteStatusBase const>& routes, Fact lengths) {
  if (!routes) return;
  for (auto entry = routes->vrfPrefixLensInExactMatch().iterator(); entry; ++entry)
    watchLengths(*routes, lengths, entry.key());
  const auto handle = [this, &routes = *routes, lengths](Mox::AttributeId attribute,
                                                         const void* key) {
    if (attribute == RouteStatusBase::prefixLensAttribute) {
      const Velo::String name = *static_cast<const Velo::String*>(key);
      watchLengths(routes, lengths, name);
      if (name.size() <= L3::VrfName::maxLength) changed_.insert(name);
    } else if (attribute == RouteStatusBase::vrfStatusAttribute && lengths == Fact::lengths) {
      const L3::VrfName vrf = *static_cast<const L3::VrfName*>(key);
      watchStatus(vrf);
      changed_.insert(vrf);
    }
  };
  routeWatches_.push_back(Mox::makeActivePtr<Watch>(routes, handle));
}

// Only the IPv4 route status has the statuses of VRFs.
void ChangedVrfs::watchStatus(const L3::VrfName& vrf) {
  watch(Fact::status, vrf, inputs_.routeStatus->vrfStatus(vrf));
}

// No action can name a VRF with a name that is too long.
void ChangedVrfs::watchLengths(const RouteStatusBase& routes, Fact lengths,
                               const Velo::String& name) {
  if (name.size() > L3::VrfName::maxLength) return;
  watch(lengths, name, routes.vrfPrefixLensInExactMatch(name));
}

void ChangedVrfs::watch(Fact fact, const L3::VrfName& vrf, const EntityPtr& entity) {
  if (!entity) {
    watches_.erase({fact, vrf});
    return;
  }
  const auto handle = [this, vrf](Mox::AttributeId, const void*) { changed_.insert(vrf); };
  watches_[{fact, vrf}] = Mox::makeActivePtr<Watch>(entity, handle);
}

}  // namespace Chips
