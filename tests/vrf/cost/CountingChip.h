#pragma once

#include <array>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A chip that counts its updates and reports another outcome each time; its hooks allocate
/// nothing.
class CountingChip final : public VrfHelper {
 public:
  CountingChip() : VrfHelper("counter", nullptr, nullptr, nullptr) {
    outcomes_[1].statusIs(ProgrammingResult::programmingFailure);
    outcomes_[1].failureDescriptionIs("no room");
  }

  HwStatus createVrf(const VrfAction& /*action*/) override { return {}; }
  HwStatus updateVrf(const VrfAction& /*action*/) override { return outcomes_[++updates_ % 2]; }
  void deleteVrf(const VrfAction& /*action*/) override {}

  [[nodiscard]] unsigned updates() const noexcept { return updates_; }

 private:
  std::array<HwStatus, 2> outcomes_;
  unsigned updates_ = 0;
};

}  // namespace ZelVrfSelectionPolicy::Testing
