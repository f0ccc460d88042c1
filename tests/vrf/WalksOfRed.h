#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/vrf/DrivenVrfSm.h"

namespace ZelVrfSelectionPolicy::Testing {

/// A machine with a few created actions, every one of which names the VRF "red"; so that each of
/// the ways in which the library comes to walk over actions updates each of them once.
struct DrivenVrfSmWithRed : DrivenVrfSm {
  std::vector<VrfAction> actions;
  Mox::Ptr<Routing::Hardware::VrfStatus> redStatus;
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> redLens;
  Mox::Ptr<Routing::Hardware::PrefixLensInExactMatch> redLens6;

  DrivenVrfSmWithRed() {
    start();
    actions = {actionOf("red"), actionOf("x", "red"), actionOf("y", {}, "red"),
               actionOf("red", "red", "red", PolicyMap::ActionType::decapVrf)};
    for (const VrfAction& action : actions)
      created(action);
  }

  [[nodiscard]] static bool namesRed(const VrfAction& action) {
    const L3::VrfName red("red");
    return action.vrfName() == red || action.fallbackVrfName() == red ||
           action.postDecapVrfName() == red;
  }
};

/// One way to have every action that names "red" updated once.
struct WalkOfRed {
  const char* name;
  /// What has to be there before; nothing that it does is part of the walk.
  std::function<void(DrivenVrfSmWithRed&)> prepare;
  std::function<void(DrivenVrfSmWithRed&)> walk;
};

inline void PrintTo(const WalkOfRed& walk, std::ostream* stream) {
  *stream << walk.name;
}

[[nodiscard]] inline std::vector<WalkOfRed> walksOfRed() {
  const auto nothing = [](DrivenVrfSmWithRed&) {};
  const auto followPrefixLens = [](DrivenVrfSmWithRed& on) {
    on.redLens = on.routes->vrfPrefixLensInExactMatchIs("red");
  };
  const auto followPrefixLens6 = [](DrivenVrfSmWithRed& on) {
    on.redLens6 = on.routes6->vrfPrefixLensInExactMatchIs("red");
  };
  const auto followStatus = [](DrivenVrfSmWithRed& on) {
    on.redStatus = on.routes->vrfStatusIs("red");
  };
  return {
      {"AllActionsOfAVrf", nothing,
       [](DrivenVrfSmWithRed& on) { on.vrfSm->updateAllVrfActions("red"); }},
      {"DependentsOfAVrf",
       [](DrivenVrfSmWithRed& on) { on.vrfSm->dependentVrfInfoIs("a")->dependentVrfsIs("red"); },
       [](DrivenVrfSmWithRed& on) { on.vrfSm->handleVrfUpdates("a", true); }},
      {"SecondLevelOfDependents",
       [](DrivenVrfSmWithRed& on) {
         on.vrfSm->dependentVrfInfoIs("a")->dependentVrfsIs("b");
         on.vrfSm->dependentVrfInfoIs("b")->dependentVrfsIs("red");
       },
       [](DrivenVrfSmWithRed& on) { on.vrfSm->handleVrfUpdates("a", false); }},
      {"DecapFlag", nothing, [](DrivenVrfSmWithRed& on) { on.routes->decapNhEnabledIs(true); }},
      {"DecapFallbackFlag", nothing,
       [](DrivenVrfSmWithRed& on) { on.routes->decapNhFallbackEnabledIs(true); }},
      {"NewFallback", nothing,
       [](DrivenVrfSmWithRed& on) { on.fallback->fallbackVrfIs("red", "z"); }},
      {"ChangedFallback", [](DrivenVrfSmWithRed& on) { on.fallback->fallbackVrfIs("red", "z"); },
       [](DrivenVrfSmWithRed& on) { on.fallback->fallbackVrfIs("red", "default"); }},
      {"RemovedFallback", [](DrivenVrfSmWithRed& on) { on.fallback->fallbackVrfIs("red", "z"); },
       [](DrivenVrfSmWithRed& on) { on.fallback->fallbackVrfDel("red"); }},
      {"VrfId", followStatus, [](DrivenVrfSmWithRed& on) { on.redStatus->vrfIdIs(7); }},
      {"RepointedVrf", followStatus,
       [](DrivenVrfSmWithRed& on) {
         const auto other = Routing::Hardware::VrfStatus::VrfStatusIs("red");
         other->vrfIdIs(9);
         on.routes->vrfStatusIs(other);
       }},
      {"RemovedVrf", followStatus, [](DrivenVrfSmWithRed& on) { on.routes->vrfStatusDel("red"); }},
      {"NewPrefixLens", nothing, followPrefixLens},
      {"ChangedPrefixLens", followPrefixLens,
       [](DrivenVrfSmWithRed& on) { on.redLens->prefixLenIs(24); }},
      {"RemovedPrefixLens", followPrefixLens,
       [](DrivenVrfSmWithRed& on) { on.routes->vrfPrefixLensInExactMatchDel("red"); }},
      {"NewPrefixLens6", nothing, followPrefixLens6},
      {"ChangedPrefixLens6", followPrefixLens6,
       [](DrivenVrfSmWithRed& on) { on.redLens6->prefixLenIs(64); }},
      {"RemovedPrefixLens6", followPrefixLens6,
       [](DrivenVrfSmWithRed& on) { on.routes6->vrfPrefixLensInExactMatchDel("red"); }},
  };
}

}  // namespace ZelVrfSelectionPolicy::Testing
