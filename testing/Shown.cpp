#include "testing/Shown.h"

#include "Mox/QuotedString.h"

namespace ZelVrfSelectionPolicy::Testing {

std::string shown(const VrfAction& action) {
  const bool isPlain = action.action() == PolicyMap::ActionType::vrf &&
                       action.fallbackVrfName().empty() && action.postDecapVrfName().empty();
  if (isPlain) return action.vrfName().str();
  return action.vrfName().str() + ">" + action.fallbackVrfName().str() + ">" +
         action.postDecapVrfName().str() + ":" + PolicyMap::stringValue(action.action()).str();
}

std::string shown(const HwStatus& status) {
  if (!status) return "ok";
  return stringValue(status.status()).str() + " " + stringValue(status.failureReason()).str() +
         " " + Mox::quoted(status.failureDescription().bytes());
}

}  // namespace ZelVrfSelectionPolicy::Testing
