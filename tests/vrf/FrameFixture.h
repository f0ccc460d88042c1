#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"
#include "testing/Journal.h"
#include "testing/RecordingVrfHelper.h"
#include "testing/TableJournal.h"
#include "testing/TraceCapture.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Everything that one `VrfSm` works on, with a recording chip, and the lines that it is expected
/// to write into the journal.
///
/// The machine is not started, and neither notices nor trace are journalled, until a test asks for
/// it: so each test chooses what is there before the machine, and who subscribes before it.
class VrfSmFrameFixture : public ::testing::Test {
 protected:
  using FallbackVrf = VrfSelectionPolicy::VrfSelectionFallbackVrf;
  using Lines = std::vector<std::string>;

  /// Level 0 is that of no message.
  VrfSmFrameFixture() { Mox::traceLevelsIs("ZelVrfSelection=0"); }

  Mox::Ptr<VrfSm> newVrfSm() {
    return VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, routes6);
  }
  void start() { vrfSm = newVrfSm(); }
  void journalTrace() { trace.emplace(journal); }
  void journalTables() { tables.emplace(journal, users, statuses); }
  /// Has the journal begin anew.
  void forgetLines() { static_cast<void>(journal.take()); }

  /// The action "look up in that VRF".
  static VrfAction lookUpIn(const char* vrf) { return {vrf, PolicyMap::ActionType::vrf}; }

  /// Puts resources with one user each in place, as an earlier machine would have left them.
  void resourcesAre(std::initializer_list<VrfAction> actions) {
    for (const VrfAction& action : actions) {
      users->vrfRefCountIs(action, 1);
      statuses->hwStatusIs(action, HwStatus());
    }
  }

  /// Has every update report success under a new description, so that each one changes a status.
  void numberUpdates() {
    chip->onUpdate = [number = 0](const VrfAction&) mutable {
      HwStatus status;
      status.failureDescriptionIs(std::to_string(++number));
      return status;
    };
  }
  /// How the journal shows the status of the update of that number.
  static std::string updated(unsigned number) {
    return "programmedInHw failureNone '" + std::to_string(number) + "'";
  }

  static HwStatus failure(FailureCode reason, const char* description) {
    HwStatus status;
    status.statusIs(ProgrammingResult::programmingFailure);
    status.failureReasonIs(reason);
    status.failureDescriptionIs(description);
    return status;
  }

  /// How many notifiees `entity` has.
  static unsigned notifiees(const Mox::PtrInterface& entity) {
    const Velo::NotifieeListDescriptor list = entity.notifieeList();
    unsigned count = 0;
    list.visit(
        list.list, [](void* counter, void*) { ++*static_cast<unsigned*>(counter); }, &count);
    return count;
  }

  // Lines of text trace.
  static std::string traced(unsigned level, unsigned line, const std::string& function,
                            const std::string& text) {
    return "ZelVrfSelection " + std::to_string(level) +
           " /src/ZelVrfSelectionPolicy/ZelVrfSelectionPolicy:" + std::to_string(line) + " " +
           function + " " + text;
  }
  static std::string initialize() {
    return traced(5, 289, "handleInitialized",
                  "VrfSm::VrfInstanceSm::handleInitialized Initialize VRF SM");
  }
  static std::string createFailed(const std::string& vrf, const std::string& reason) {
    return traced(5, 26, "handleVrfRefCountChange",
                  "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Failed to create VRF:" +
                      vrf + ". Error:" + reason);
  }
  static std::string alreadyInUse(const std::string& vrf, unsigned count) {
    return traced(7, 59, "handleVrfRefCountChange",
                  "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange"
                  ": VRF HW resource already in use for VRF:" +
                      vrf + " refCount:" + std::to_string(count));
  }
  static std::string deleting(const std::string& vrf) {
    return traced(
        7, 35, "handleVrfRefCountChange",
        "ZelVrfSelectionPolicy::VrfSm::handleVrfRefCountChange: Deleting VRF Hw resource. VRF:" +
            vrf);
  }
  static std::string fallbackChange(const std::string& vrf) {
    return traced(7, 69, "handleVrfFallbackConfig",
                  "ZelVrfSelectionPolicy::VrfSm::handleVrfFallbackConfig"
                  ": Handling fallback vrf config change for VRF:" +
                      vrf);
  }
  static std::string fallbackAlreadyHandled() {
    return traced(7, 85, "handleVrfFallbackConfig",
                  "ZelVrfSelectionPolicy::VrfSm::handleVrfFallbackConfig"
                  " Fallback config already handled, Skipping this notification");
  }
  static std::string updating(const std::string& vrf) {
    return traced(
        5, 149, "updateVrfAction",
        "ZelVrfSelectionPolicy::VrfSm::updateVrfAction: Updating VRF HW instance for: " + vrf);
  }
  static std::string updatingAll(const std::string& vrf) {
    return traced(5, 130, "updateAllVrfActions",
                  "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions " + vrf);
  }
  static std::string updatingOneOfAll(const std::string& vrf) {
    return traced(
        5, 137, "updateAllVrfActions",
        "ZelVrfSelectionPolicy::VrfSm::updateAllVrfActions: Updating VRF HW instance for: " + vrf);
  }
  static std::string updatingDependent(const std::string& vrf, const std::string& changed) {
    return traced(5, 177, "handleVrfUpdates",
                  "ZelVrfSelectionPolicy::VrfSm::handleVrfUpdates: Updating dependent VRF:" + vrf +
                      "  HW resource. Changed VRF:" + changed);
  }
  static std::string instanceInitialized(const std::string& vrf, unsigned id) {
    return instance(227, "handleInitialized", vrf, id);
  }
  static std::string instanceVrfId(const std::string& vrf, unsigned id) {
    return instance(201, "handleVrfId", vrf, id);
  }
  static std::string instanceRemove(const std::string& vrf, unsigned id) {
    return instance(219, "handleVrfRemove", vrf, id);
  }
  static std::string prefixLensInitialized(const std::string& vrf) {
    return traced(5, 242, "handleInitialized",
                  "VrfSm::MoxVrfPrefixLensInExactMatch::handleInitialized: VRF:" + vrf);
  }
  static std::string prefixLens(const std::string& vrf) {
    return traced(5, 235, "handlePrefixLen",
                  "VrfSm::MoxVrfPrefixLensInExactMatch::handlePrefixLen: VRF:" + vrf);
  }
  static std::string prefixLens6Initialized(const std::string& vrf) {
    return traced(5, 257, "handleInitialized",
                  "VrfSm::MoxVrfPrefixLensInExactMatchV6::handleInitialized: VRF:" + vrf);
  }
  static std::string prefixLens6(const std::string& vrf) {
    return traced(5, 249, "handlePrefixLen",
                  "VrfSm::MoxVrfPrefixLensInExactMatchV6::handlePrefixLen: VRF:" + vrf);
  }

  Journal journal;
  std::optional<TraceCapture> trace;
  Mox::Ptr<VrfHwConfig> users = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses = vrfHwStatusFactory();
  Mox::Ptr<FallbackVrf> fallback = FallbackVrf::VrfSelectionFallbackVrfIs();
  Mox::Ptr<Routing::Hardware::RouteStatus> routes = Routing::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6 =
      Routing6::Hardware::RouteStatus::RouteStatusIs();
  Mox::Ptr<RecordingVrfHelper> chip =
      Mox::makePtr<RecordingVrfHelper>(journal, fallback, routes, routes6);
  std::optional<TableJournal> tables;
  Mox::Ptr<VrfSm> vrfSm;

  const VrfAction red = lookUpIn("red");
  const VrfAction blue = lookUpIn("blue");
  const VrfAction green = lookUpIn("green");

 private:
  static std::string instance(unsigned line, const std::string& function, const std::string& vrf,
                              unsigned id) {
    return traced(
        5, line, function,
        "VrfSm::VrfInstanceSm::" + function + ": VRF:" + vrf + " vrfId:" + std::to_string(id));
  }
};

}  // namespace ZelVrfSelectionPolicy::Testing
