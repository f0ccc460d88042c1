// What the functions of the reports print, for comparison with the whole text.
#pragma once

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelAgent {

template <class Write>
[[nodiscard]] std::string printedBy(const Write& write) {
  std::ostringstream text;
  write(text);
  return text.str();
}

[[nodiscard]] inline ZelVrfSelectionPolicy::VrfAction lookUpAction(const char* vrf) {
  return {vrf, PolicyMap::ActionType::vrf};
}

[[nodiscard]] inline ZelVrfSelectionPolicy::VrfAction decapAction(const char* vrf,
                                                                  const char* fallback,
                                                                  const char* postDecap) {
  ZelVrfSelectionPolicy::VrfAction action(vrf, PolicyMap::ActionType::decapVrf);
  action.fallbackVrfNameIs(fallback);
  action.postDecapVrfNameIs(postDecap);
  return action;
}

[[nodiscard]] inline ZelVrfSelectionPolicy::HwStatus statusOf(
    ZelVrfSelectionPolicy::ProgrammingResult result, ZelVrfSelectionPolicy::FailureCode reason,
    const char* description = "") {
  ZelVrfSelectionPolicy::HwStatus status;
  status.statusIs(result);
  status.failureReasonIs(reason);
  status.failureDescriptionIs(description);
  return status;
}

}  // namespace ZelAgent
