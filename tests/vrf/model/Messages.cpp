#include "Messages.h"

#include <array>

namespace VrfModel::Messages {
namespace {

using std::to_string;

constexpr const char* machine = "ZelVrfSelectionPolicy::VrfSm::";
constexpr const char* shortMachine = "VrfSm::";
constexpr const char* instance = "VrfSm::VrfInstanceSm::";
constexpr std::array<const char*, 2> lens{"VrfSm::MoxVrfPrefixLensInExactMatch::",
                                          "VrfSm::MoxVrfPrefixLensInExactMatchV6::"};

// The text of a message begins with a prefix and the name of the function.
Message message(unsigned level, unsigned line, const char* prefix, const char* function,
                const std::string& rest) {
  return {level, line, function, std::string(prefix) + function + rest};
}

std::string nameAndId(const Name& vrf, unsigned id) {
  return ": VRF:" + vrf + " vrfId:" + to_string(id);
}

const char* shownFlag(bool flag) {
  return flag ? "true" : "false";
}

}  // namespace

Message initialize() {
  return message(5, 289, instance, "handleInitialized", " Initialize VRF SM");
}

Message createFailed(const Name& vrf, unsigned reason) {
  constexpr std::array<const char*, 3> reasons{"failureNone", "failureVrfResourceAlloc",
                                               "failureVrfResourceExhausted"};
  return message(5, 26, machine, "handleVrfRefCountChange",
                 ": Failed to create VRF:" + vrf + ". Error:" + reasons.at(reason));
}

Message alreadyInUse(const Name& vrf, unsigned count) {
  return message(
      7, 59, machine, "handleVrfRefCountChange",
      ": VRF HW resource already in use for VRF:" + vrf + " refCount:" + to_string(count));
}

Message deleting(const Name& vrf) {
  return message(7, 35, machine, "handleVrfRefCountChange",
                 ": Deleting VRF Hw resource. VRF:" + vrf);
}

Message updatingOne(const Name& vrf) {
  return message(5, 149, machine, "updateVrfAction", ": Updating VRF HW instance for: " + vrf);
}

Message updatingAll(const Name& changed) {
  return message(5, 130, machine, "updateAllVrfActions", " " + changed);
}

Message updatingOneOfAll(const Name& changed) {
  return message(5, 137, machine, "updateAllVrfActions",
                 ": Updating VRF HW instance for: " + changed);
}

Message updatingDependent(const Name& dependent, const Name& changed) {
  return message(5, 177, machine, "handleVrfUpdates",
                 ": Updating dependent VRF:" + dependent + "  HW resource. Changed VRF:" + changed);
}

Message fallbackChange(const Name& vrf) {
  return message(7, 69, machine, "handleVrfFallbackConfig",
                 ": Handling fallback vrf config change for VRF:" + vrf);
}

Message fallbackAlreadyHandled() {
  return message(7, 85, machine, "handleVrfFallbackConfig",
                 " Fallback config already handled, Skipping this notification");
}

Message decapNh(bool flag) {
  return message(7, 278, shortMachine, "handleDecapNh",
                 std::string(" decapNhEnabled:") + shownFlag(flag));
}

Message decapNhAction(unsigned type) {
  return message(7, 282, shortMachine, "handleDecapNh", " action:" + to_string(type));
}

Message decapNhFallback(bool flag) {
  return message(7, 266, shortMachine, "handleDecapNhFallback",
                 std::string(" decapNhFallbackEnabled:") + shownFlag(flag));
}

Message instanceInitialized(const Name& vrf, unsigned id) {
  return message(5, 227, instance, "handleInitialized", nameAndId(vrf, id));
}

Message instanceId(const Name& vrf, unsigned id) {
  return message(5, 201, instance, "handleVrfId", nameAndId(vrf, id));
}

Message instanceIdNotAssigned() {
  return message(7, 206, instance, "handleVrfId", " VRF ID not assigned yet, Skipping");
}

Message instanceRemoved(const Name& vrf, unsigned id) {
  return message(5, 219, instance, "handleVrfRemove", nameAndId(vrf, id));
}

Message lensInitialized(unsigned family, const Name& vrf) {
  return message(5, family == 0 ? 242 : 257, lens.at(family), "handleInitialized", ": VRF:" + vrf);
}

Message lensChanged(unsigned family, const Name& vrf) {
  return message(5, family == 0 ? 235 : 249, lens.at(family), "handlePrefixLen", ": VRF:" + vrf);
}

}  // namespace VrfModel::Messages
