#include "Conversions.h"

namespace VrfModel {

using ZelVrfSelectionPolicy::FailureCode;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;
using ZelVrfSelectionPolicy::VrfAction;

VrfAction real(const Action& action) {
  VrfAction made(action.vrf, static_cast<PolicyMap::ActionType>(action.type));
  made.fallbackVrfNameIs(action.fallback);
  made.postDecapVrfNameIs(action.postDecap);
  return made;
}

HwStatus real(const Status& status) {
  HwStatus made;
  made.statusIs(static_cast<ProgrammingResult>(status.result));
  made.failureReasonIs(static_cast<FailureCode>(status.reason));
  made.failureDescriptionIs(status.description);
  return made;
}

Action plain(const VrfAction& action) {
  return {action.vrfName().str(), action.fallbackVrfName().str(), action.postDecapVrfName().str(),
          static_cast<unsigned>(action.action())};
}

Status plain(const HwStatus& status) {
  return {static_cast<unsigned>(status.status()), static_cast<unsigned>(status.failureReason()),
          status.failureDescription().str()};
}

}  // namespace VrfModel
