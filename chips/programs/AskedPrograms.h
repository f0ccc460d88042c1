#pragma once

#include <map>
#include <set>

#include "L3/VrfName.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"
#include "chips/programs/VrfProgram.h"

namespace Chips {

/// The program of each action in the last hook call for it, whether the chip accepted or refused
/// it.
///
/// Actions are found by the VRFs on the walks of their programs. Every fact in a program belongs to
/// one of these VRFs or is a flag. So a change of a fact of a VRF can make only the programs of
/// `actionsWith` that VRF out of date.
class AskedPrograms final {
 public:
  using VrfAction = ZelVrfSelectionPolicy::VrfAction;

  void programIs(const VrfAction& action, const VrfProgram& program);
  void programDel(const VrfAction& action);

  /// The program of the action. Null if there was no hook call since its deletion.
  [[nodiscard]] const VrfProgram* program(const VrfAction& action) const;
  /// The actions whose program has the VRF on one of its walks.
  [[nodiscard]] const std::set<VrfAction>& actionsWith(const L3::VrfName& vrf) const;

 private:
  void unlink(const VrfAction& action, const L3::VrfName& vrf);

  // Invariant: an action is in the set of a VRF exactly if the VRF is on a walk of its program.
  std::map<VrfAction, VrfProgram> programs_;
  std::map<L3::VrfName, std::set<VrfAction>> byVrf_;
};

}  // namespace Chips
