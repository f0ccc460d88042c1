#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"

#include "ZelVrfSelectionPolicy/trace/Source.h"

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
  try {
    PrefixLensSm::moxDoZombieReactors(true);
  } catch (...) {  // NOLINT(bugprone-empty-catch): a destructor must not throw
  }
}

Velo::String VrfSm::PrefixLensSm::name() const noexcept {
  const auto* watched = notifierAs<PrefixLensInExactMatch>();
  return watched == nullptr ? Velo::String() : watched->name();
}

void VrfSm::PrefixLensSm::notifierIs(const Mox::Ptr<Mox::PtrInterface const>& notifier) {
  NotifieeConst::notifierIs(Mox::ptrCast<PrefixLensInExactMatch const>(notifier));
}

void VrfSm::PrefixLensSm::onAttribute(Mox::AttributeId attributeId, const void* /*key*/) {
  if (attributeId == PrefixLensInExactMatch::prefixLenAttribute && !isZombie()) handlePrefixLen();
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
  updateActions();
}

void VrfSm::PrefixLensSm::handlePrefixLen() {
  messages_.prefixLen(name());
  updateActions();
}

void VrfSm::PrefixLensSm::updateActions() {
  if (vrfSm_ != nullptr) vrfSm_->handleVrfUpdates(L3::VrfName(name()), false);
}

VrfSm::NestedSm_VrfPrefixLensInExactMatch::NestedSm_VrfPrefixLensInExactMatch(
    const PrefixLensPtr& prefixLens, VrfSm* vrfSm)
    : PrefixLensSm(prefixLens, vrfSm, messages4) {}

VrfSm::NestedSm_VrfPrefixLensInExactMatchV6::NestedSm_VrfPrefixLensInExactMatchV6(
    const PrefixLensPtr& prefixLens, VrfSm* vrfSm)
    : PrefixLensSm(prefixLens, vrfSm, messages6) {}

}  // namespace ZelVrfSelectionPolicy
