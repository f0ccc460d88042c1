// The reference machine and the fallback configuration: dependent VRFs, and the actions that a
// change of a VRF updates.

#include "Messages.h"
#include "PlainVrfSm.h"

namespace VrfModel {

void PlainVrfSm::handleFallback(const Name& vrf) {
  expected_.message(Messages::fallbackChange(vrf));
  handleUpdates(vrf, true);

  const FallbackConfig& config = platform_.fallbacks.at(inputs_.fallback);
  const auto configured = config.find(vrf);
  const auto handled = handled_.find(vrf);
  const bool isConfigured = configured != config.end();
  const bool isHandled = handled != handled_.end();
  const Name old = isHandled ? handled->second : Name();

  if (isConfigured && isHandled && old == configured->second) {
    expected_.message(Messages::fallbackAlreadyHandled());
    return;
  }
  if (isConfigured) dependencyIs(vrf, configured->second);
  if (isHandled || !isConfigured) dependencyDel(vrf, old);
  if (isConfigured) {
    handled_[vrf] = configured->second;
  } else {
    handled_.erase(vrf);
  }
}

// Dependents of the default VRF are not recorded.
void PlainVrfSm::dependencyIs(const Name& vrf, const Name& fallback) {
  if (fallback != defaultVrf) dependents_[fallback].insert(vrf);
}

void PlainVrfSm::dependencyDel(const Name& vrf, const Name& fallback) {
  if (fallback == defaultVrf) return;
  dependents_[fallback].erase(vrf);
  if (dependents_[fallback].empty()) dependents_.erase(fallback);
}

void PlainVrfSm::handleUpdates(const Name& vrf, bool fallbackConfigChange) {
  if (isEnding_) return;
  updateAll(vrf);
  const auto record = dependents_.find(vrf);
  if (record == dependents_.end()) return;
  const Expected::AnyOrder anyOrder(expected_);
  for (const Name& dependent : record->second) {
    expected_.message(Messages::updatingDependent(dependent, vrf));
    updateAll(dependent);
    const auto furtherRecord = dependents_.find(dependent);
    if (fallbackConfigChange || furtherRecord == dependents_.end()) continue;
    for (const Name& further : furtherRecord->second)
      updateAll(further);
  }
}

}  // namespace VrfModel
