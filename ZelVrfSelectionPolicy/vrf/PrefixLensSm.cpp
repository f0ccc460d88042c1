#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"

#include <optional>

#include "Mox/Exceptions.h"
#include "ZelVrfSelectionPolicy/trace/Source.h"
#include "ZelVrfSelectionPolicy/vrf/NestedSmRemoval.h"

namespace ZelVrfSelectionPolicy {

using PrefixLensInExactMatch = Routing::Hardware::PrefixLensInExactMatch;

/// The messages of one family's machines.
struct PrefixLensMessages {
  Duolog::Message initialized;
  Duolog::Message prefixLen;
};

namespace {

const PrefixLensMessages messages4{
    message(5, 242, "handleInitialized",
            {"VrfSm::MoxVrfPrefixLensInExactMatch::", "handleInitialized", ": VRF:", "%s"}),
    message(5, 235, "handlePrefixLen",
            {"VrfSm::MoxVrfPrefixLensInExactMatch::", "handlePrefixLen", ": VRF:", "%s"})};
const PrefixLensMessages messages6{
    message(5, 257, "handleInitialized",
            {"VrfSm::MoxVrfPrefixLensInExactMatchV6::", "handleInitialized", ": VRF:", "%s"}),
    message(5, 249, "handlePrefixLen",
            {"VrfSm::MoxVrfPrefixLensInExactMatchV6::", "handlePrefixLen", ": VRF:", "%s"})};

}  // namespace

VrfSm::PrefixLensSm::PrefixLensSm(const PrefixLensPtr& prefixLens, VrfSm* vrfSm,
                                  const PrefixLensMessages& messages)
    : NotifieeConst(prefixLens), vrfSm_(vrfSm), messages_(messages) {
  isRegisteredIs(true);
  handleInitialized();
}

VrfSm::PrefixLensSm::~PrefixLensSm() {
  // Removed machines are zombies already, and one that never entered a collection runs no handler.
  NotifieeConst::moxDoZombieReactors(true);
}

VrfSm::PrefixLensPtr VrfSm::PrefixLensSm::prefixLens() const noexcept {
  return PrefixLensPtr(notifierAs<PrefixLensInExactMatch>());
}

Velo::String VrfSm::PrefixLensSm::name() const noexcept {
  const auto* watched = notifierAs<PrefixLensInExactMatch>();
  return watched == nullptr ? Velo::String() : watched->name();
}

void VrfSm::PrefixLensSm::notifierIs(const Mox::Ptr<Mox::PtrInterface const>& notifier) {
  NotifieeConst::notifierIs(Mox::ptrCast<PrefixLensInExactMatch const>(notifier));
}

void VrfSm::PrefixLensSm::onAttribute(Mox::AttributeId attributeId, const void* /*key*/) {
  if (attributeId != PrefixLensInExactMatch::prefixLenAttribute || isZombie()) return;
  if (vrfSm_ == nullptr || !vrfSm_->isPaused()) handlePrefixLen();
}

void VrfSm::PrefixLensSm::moxDoZombieReactors(bool zombie) {
  if (isZombie() == zombie) return;
  if (notifier()) hasNotificationActiveIs(!zombie);
  try {
    handlePrefixLen();
  } catch (...) {
    zombieIs(zombie);
    throw;
  }
  zombieIs(zombie);
}

void VrfSm::PrefixLensSm::handleInitialized() {
  messages_.initialized(name());
  updateWhatNamesIt();
}

void VrfSm::PrefixLensSm::handlePrefixLen() {
  messages_.prefixLen(name());
  updateWhatNamesIt();
}

void VrfSm::PrefixLensSm::updateWhatNamesIt() {
  if (vrfSm_ == nullptr || vrfSm_->isTearingDown()) return;
  vrfName_ = L3::VrfName(name());
  vrfSm_->handleVrfUpdates(vrfName_, false);
}

VrfSm::NestedSm_VrfPrefixLensInExactMatch::NestedSm_VrfPrefixLensInExactMatch(
    const PrefixLensPtr& prefixLens, VrfSm* vrfSm)
    : PrefixLensSm(prefixLens, vrfSm, messages4) {}

VrfSm::NestedSm_VrfPrefixLensInExactMatchV6::NestedSm_VrfPrefixLensInExactMatchV6(
    const PrefixLensPtr& prefixLens, VrfSm* vrfSm)
    : PrefixLensSm(prefixLens, vrfSm, messages6) {}

/// A machine under construction, which has the chip program before it enters its collection. What
/// happens to its prefix lengths meanwhile is caught up with when it has entered.
class VrfSm::PrefixLensCreation {
 public:
  PrefixLensCreation(VrfSm& vrfSm, const void* machines, Velo::String name) noexcept
      : vrfSm_(vrfSm),
        machines_(machines),
        name_(std::move(name)),
        outer_(vrfSm.innermostCreation_) {
    vrfSm.innermostCreation_ = this;
  }
  PrefixLensCreation(const PrefixLensCreation&) = delete;
  PrefixLensCreation& operator=(const PrefixLensCreation&) = delete;
  ~PrefixLensCreation() { vrfSm_.innermostCreation_ = outer_; }

  /// The creation under way in `machines` under `name`, null when there is none.
  static PrefixLensCreation* of(const VrfSm& vrfSm, const void* machines,
                                const Velo::String& name) noexcept {
    PrefixLensCreation* creation = vrfSm.innermostCreation_;
    while (creation != nullptr && !(creation->machines_ == machines && creation->name_ == name)) {
      creation = creation->outer_;
    }
    return creation;
  }

  /// What came meanwhile: other prefix lengths, or null for their removal.
  void meanwhileIs(const PrefixLensPtr& prefixLens) { meanwhile_ = prefixLens; }
  [[nodiscard]] const std::optional<PrefixLensPtr>& meanwhile() const noexcept {
    return meanwhile_;
  }

 private:
  VrfSm& vrfSm_;
  const void* machines_;
  Velo::String name_;
  std::optional<PrefixLensPtr> meanwhile_;
  PrefixLensCreation* outer_;
};

template <class Machine>
void VrfSm::makeRoomFor(PrefixLensSms<Machine>& machines,
                        const PrefixLensInExactMatch& prefixLens) {
  const Velo::String& name = prefixLens.name();
  if (!machines.has(name)) {
    Machine::makeRoom();
    machines.makeRoom();
    const bool isVrfName = name.size() <= L3::VrfName::maxLength;
    nameToCome_ = isVrfName ? L3::VrfName(name) : L3::VrfName();
  }
  PtrInterface::NotifieeConst::makeRoomAt(prefixLens);
}

template <class Machine>
void VrfSm::prefixLensSmIs(PrefixLensSms<Machine>& machines, const PrefixLensPtr& prefixLens,
                           const char* attribute) {
  if (!prefixLens) throw Mox::NullArgumentException(attribute);
  const Mox::Ptr<VrfSm> alive(this);
  const Velo::String name = prefixLens->name();
  if (const auto* present = machines.find(name)) {
    const Mox::Ptr<Machine> machine = *present;
    if (machine->prefixLens() == prefixLens) return;
    machine->notifierIs(prefixLens);
    machine->moxDoZombieReactors(isZombie());
    return;
  }
  if (PrefixLensCreation* underWay = PrefixLensCreation::of(*this, &machines, name)) {
    underWay->meanwhileIs(prefixLens);
    return;
  }
  makeRoomFor(machines, *prefixLens);
  std::optional<PrefixLensPtr> meanwhile;
  {
    const PrefixLensCreation creation(*this, &machines, name);
    const Mox::Ptr<Machine> machine = Mox::makePtr<Machine>(prefixLens, this);
    nameToCome_ = L3::VrfName();
    machine->hasNotificationActiveIs(true);
    machines.insert(name, machine);
    machine->moxDoZombieReactors(isZombie());
    meanwhile = creation.meanwhile();
  }
  if (!meanwhile) return;
  if (*meanwhile) {
    prefixLensSmIs(machines, *meanwhile, attribute);
  } else {
    prefixLensSmDel(machines, name);
  }
}

template <class Machine>
void VrfSm::prefixLensSmDel(PrefixLensSms<Machine>& machines, const Velo::String& name) {
  auto erased = machines.erase(name);
  if (!erased) {
    if (PrefixLensCreation* underWay = PrefixLensCreation::of(*this, &machines, name)) {
      underWay->meanwhileIs(nullptr);
    }
    return;
  }
  const NestedSmRemoval<Machine> removal(erased->second);
  removal.machine()->moxDoZombieReactors(true);
}

template <class Machine>
void VrfSm::prefixLensSmDelAll(PrefixLensSms<Machine>& machines) {
  const Mox::Ptr<VrfSm> alive(this);
  for (auto entry = machines.iterator(); entry; ++entry)
    prefixLensSmDel(machines, entry.key());
}

void VrfSm::makeRoomForPrefixLens(const PrefixLensInExactMatch& prefixLens) {
  makeRoomFor(vrfPrefixLensInExactMatch_, prefixLens);
}
void VrfSm::makeRoomForPrefixLensV6(const PrefixLensInExactMatch& prefixLens) {
  makeRoomFor(vrfPrefixLensInExactMatchV6_, prefixLens);
}

void VrfSm::vrfPrefixLensInExactMatchIs(const PrefixLensPtr& prefixLens) {
  prefixLensSmIs(vrfPrefixLensInExactMatch_, prefixLens, "vrfPrefixLensInExactMatch");
}
void VrfSm::vrfPrefixLensInExactMatchDel(const Velo::String& name) {
  prefixLensSmDel(vrfPrefixLensInExactMatch_, name);
}
void VrfSm::vrfPrefixLensInExactMatchDelAll() {
  prefixLensSmDelAll(vrfPrefixLensInExactMatch_);
}

void VrfSm::vrfPrefixLensInExactMatchV6Is(const PrefixLensPtr& prefixLens) {
  prefixLensSmIs(vrfPrefixLensInExactMatchV6_, prefixLens, "vrfPrefixLensInExactMatchV6");
}
void VrfSm::vrfPrefixLensInExactMatchV6Del(const Velo::String& name) {
  prefixLensSmDel(vrfPrefixLensInExactMatchV6_, name);
}
void VrfSm::vrfPrefixLensInExactMatchV6DelAll() {
  prefixLensSmDelAll(vrfPrefixLensInExactMatchV6_);
}

}  // namespace ZelVrfSelectionPolicy
