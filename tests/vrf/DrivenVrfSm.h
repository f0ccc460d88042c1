#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {

/// An action of the type "look up in a VRF" that names a VRF and, perhaps, others.
[[nodiscard]] inline VrfAction actionOf(const L3::VrfName& vrf, const L3::VrfName& fallback = {},
                                        const L3::VrfName& postDecap = {},
                                        PolicyMap::ActionType type = PolicyMap::ActionType::vrf) {
  VrfAction action(vrf, type);
  action.fallbackVrfNameIs(fallback);
  action.postDecapVrfNameIs(postDecap);
  return action;
}

[[nodiscard]] inline HwStatus failure(const char* description) {
  HwStatus status;
  status.statusIs(ProgrammingResult::programmingFailure);
  status.failureReasonIs(FailureCode::failureVrfResourceExhausted);
  status.failureDescriptionIs(description);
  return status;
}

/// A name with a number behind it.
[[nodiscard]] inline std::string numbered(const char* name, int number) {
  std::string text(name);
  text += std::to_string(number);
  return text;
}

/// The number of times that each line occurs.
[[nodiscard]] inline std::map<std::string, int> counted(const std::vector<std::string>& lines) {
  std::map<std::string, int> counts;
  for (const std::string& line : lines)
    ++counts[line];
  return counts;
}

/// A VRF state machine with everything that drives it, and the journal of what it asks of the chip.
struct DrivenVrfSm {
  Journal journal;
  Mox::Ptr<VrfHwConfig> users = VrfHwConfig::VrfHwConfigIs();
  Mox::Ptr<VrfHwStatus> statuses = VrfHwStatus::VrfHwStatusIs();
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallback =
      VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<RecordingVrfHelper> chip =
      Mox::makePtr<RecordingVrfHelper>(journal, fallback, routes, routes6);
  Mox::Ptr<VrfSm> vrfSm;

  DrivenVrfSm() = default;
  DrivenVrfSm(const DrivenVrfSm&) = delete;
  DrivenVrfSm& operator=(const DrivenVrfSm&) = delete;
  // What a hook captured goes before what it refers to.
  ~DrivenVrfSm() {
    chip->onCreate = nullptr;
    chip->onUpdate = nullptr;
    chip->onDelete = nullptr;
  }

  /// Begins the journal anew.
  void forget() { static_cast<void>(journal.take()); }

  void start() {
    vrfSm = VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, routes6);
    forget();
  }

  /// Gives `action` its first user, so that the chip creates it, and forgets that in the journal.
  VrfAction created(const VrfAction& action) {
    users->vrfRefCountInc(action, 1);
    forget();
    return action;
  }
};

class DrivenVrfSmTest : public DrivenVrfSm, public ::testing::Test {};

}  // namespace ZelVrfSelectionPolicy::Testing
