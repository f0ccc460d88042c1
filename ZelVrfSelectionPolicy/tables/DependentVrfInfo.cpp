#include "ZelVrfSelectionPolicy/tables/DependentVrfInfo.h"

#include <utility>

namespace ZelVrfSelectionPolicy {

DependentVrfInfo::DependentVrfInfo(L3::VrfName fallbackVrf) noexcept
    : fallbackVrf_(std::move(fallbackVrf)) {}

DependentVrfInfo::~DependentVrfInfo() = default;

void DependentVrfInfo::dependentVrfsIs(const L3::VrfName& vrfName) {
  dependentVrfs_.insert(vrfName);
}

bool DependentVrfInfo::dependentVrfsDel(const L3::VrfName& vrfName) {
  return dependentVrfs_.erase(vrfName).has_value();
}

void DependentVrfInfo::dependentVrfsDelAll() noexcept {
  dependentVrfs_.clear();
}

bool DependentVrfInfo::dependentVrfs(const L3::VrfName& vrfName) const noexcept {
  return dependentVrfs_.has(vrfName);
}

}  // namespace ZelVrfSelectionPolicy
