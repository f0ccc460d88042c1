#pragma once

#include <functional>

#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A top object that acts when it is told that the traffic-policy machine is ready.
class ActingTop final : public ZelVrfSelectionPolicySm {
 public:
  using ZelVrfSelectionPolicySm::ZelVrfSelectionPolicySm;
  void handlePolicySmReady() override {
    ++calls;
    if (onReady) onReady();
  }

  unsigned calls = 0;
  std::function<void()> onReady;
};

}  // namespace ZelVrfSelectionPolicy::Testing
