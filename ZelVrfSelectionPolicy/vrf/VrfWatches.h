#pragma once

#include <utility>

#include "Mox/Exceptions.h"
#include "Velo/ScopeStack.h"
#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// Ends a nested machine that was removed from its collection: calls its last handler and then,
/// also if that throws, detaches the machine from its owner.
template <class Machine>
void endRemoved(Machine& machine) {
  struct CutOff {
    Machine& machine;
    ~CutOff() {
      machine.vrfSmIs(nullptr);
      machine.hasNotificationActiveIs(false);
    }
  } const cutOff{machine};
  machine.moxDoZombieReactors(true);
}

/// The machines that follow the prefix lengths of one address family, one for each VRF.
///
/// The constructor of a machine calls hooks before the machine is in the collection. Changes of its
/// prefix lengths during these calls are handled after the insertion.
template <class Machine>
class PrefixLensWatches {
 public:
  using Machines = VrfSm::PrefixLensSms<Machine>;

  /// `attribute` is the name of the attribute of `owner` that is this collection.
  PrefixLensWatches(VrfSm& owner, const char* attribute) noexcept
      : owner_(owner), attribute_(attribute) {}

  [[nodiscard]] const Machines& machines() const noexcept { return machines_; }

  void is(const VrfSm::PrefixLensPtr& prefixLens) {
    if (!prefixLens) throw Mox::NullArgumentException(attribute_);
    const Velo::String name = prefixLens->name();
    if (const auto* present = machines_.find(name)) return repoint(*present, prefixLens);
    if (Creation* activeCall = creationOf(name)) {
      activeCall->latest = prefixLens;
    } else {
      create(name, prefixLens);
    }
  }

  void del(const Velo::String& name) {
    if (const auto erased = machines_.erase(name)) return endRemoved(*erased->second);
    if (Creation* activeCall = creationOf(name)) activeCall->latest = nullptr;
  }

  void delAll() {
    for (auto entry = machines_.iterator(); entry; ++entry) {
      const Velo::String name = entry.key();
      del(name);
    }
  }

 private:
  // `latest` is the entity that the machine must follow after its creation; null if it must be
  // removed.
  struct Creation {
    Velo::String name;
    VrfSm::PrefixLensPtr latest;
  };
  using Creations = Velo::ScopeStack<Creation>;

  [[nodiscard]] Creation* creationOf(const Velo::String& name) const {
    return creations_.find([&](const Creation& creation) { return creation.name == name; });
  }

  void repoint(const Mox::Ptr<Machine>& present, const VrfSm::PrefixLensPtr& prefixLens) {
    const Mox::Ptr<Machine> machine = present;
    if (machine->prefixLens() == prefixLens) return;
    machine->notifierIs(prefixLens);
    machine->moxDoZombieReactors(owner_.isZombie());
  }

  void create(const Velo::String& name, const VrfSm::PrefixLensPtr& prefixLens) {
    const auto lengths = prefixLens->lengths();
    const bool wasActive = owner_.hasNotificationActive();
    Mox::Ptr<Machine> machine;
    VrfSm::PrefixLensPtr latest;
    {
      const typename Creations::Scope creation(creations_, name, prefixLens);
      machine = Mox::makePtr<Machine>(prefixLens, &owner_);
      latest = creation->latest;
    }
    // Off if the owner was switched off during the creation, before it knew the machine.
    machine->hasNotificationActiveIs(owner_.hasNotificationActive() == wasActive);
    machines_.insert(name, machine);
    machine->moxDoZombieReactors(owner_.isZombie());
    if (!latest) {
      del(name);
    } else if (latest != prefixLens) {
      is(latest);
    } else if (prefixLens->lengths() != lengths) {
      machine->handlePrefixLen();
    }
  }

  VrfSm& owner_;
  const char* attribute_;
  Machines machines_;
  Creations creations_;
};

/// The nested machines of a VRF state machine: one for each VRF status, and one for the prefix
/// lengths of each VRF and address family.
///
/// A nested machine calls its owner when a fact about its VRF changes. When it is removed, its last
/// handler is called, and then it is detached from the owner.
class VrfWatches {
 public:
  using PrefixLensV4 = PrefixLensWatches<VrfSm::NestedSm_VrfPrefixLensInExactMatch>;
  using PrefixLensV6 = PrefixLensWatches<VrfSm::NestedSm_VrfPrefixLensInExactMatchV6>;

  explicit VrfWatches(VrfSm& owner) noexcept : owner_(owner) {}
  VrfWatches(const VrfWatches&) = delete;
  VrfWatches& operator=(const VrfWatches&) = delete;

  /// The functions of `VrfSm` for VRF instances.
  Mox::Ptr<VrfSm::VrfInstanceSm> instanceIs(const VrfSm::VrfStatusPtr& vrfStatus);
  Mox::Ptr<VrfSm::VrfInstanceSm> instanceDel(const L3::VrfName& vrfName);
  void instanceDelAll();
  [[nodiscard]] const VrfSm::VrfInstances& instances() const noexcept { return instances_; }

  [[nodiscard]] PrefixLensV4& prefixLens() noexcept { return prefixLens_; }
  [[nodiscard]] PrefixLensV6& prefixLensV6() noexcept { return prefixLensV6_; }

  /// Calls `visitor` with each nested machine: those of VRF statuses, of IPv4 lengths and of IPv6
  /// lengths.
  template <class Visitor>
  void forEach(Visitor visitor) {
    forEachOf(instances_, visitor);
    forEachOf(prefixLens_.machines(), visitor);
    forEachOf(prefixLensV6_.machines(), visitor);
  }

 private:
  template <class Machines, class Visitor>
  static void forEachOf(const Machines& machines, Visitor& visitor) {
    for (auto entry = machines.iterator(); entry; ++entry) {
      const auto machine = entry.value();
      visitor(*machine);
    }
  }

  VrfSm& owner_;
  VrfSm::VrfInstances instances_;
  PrefixLensV4 prefixLens_{owner_, "vrfPrefixLensInExactMatch"};
  PrefixLensV6 prefixLensV6_{owner_, "vrfPrefixLensInExactMatchV6"};
};

}  // namespace ZelVrfSelectionPolicy
