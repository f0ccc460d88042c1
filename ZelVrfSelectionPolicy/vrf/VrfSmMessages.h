#pragma once

#include "ZelVrfSelectionPolicy/trace/Source.h"

namespace ZelVrfSelectionPolicy {

/// The messages of `VrfSm`, to the ring and to the text trace. Operators and their tools know the
/// texts, levels and lines, so they do not follow the code.
struct VrfSmMessages {
  using Message = Duolog::Message;

  Message initialize =
      message(5, 289, "handleInitialized",
              {"VrfSm::VrfInstanceSm::", "handleInitialized", " Initialize VRF SM"});

  Message createFailed = message(5, 26, "handleVrfRefCountChange",
                                 {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfRefCountChange",
                                  ": Failed to create VRF:", "%s", ". Error:", "%s"});
  Message alreadyInUse =
      message(7, 59, "handleVrfRefCountChange",
              {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfRefCountChange",
               ": VRF HW resource already in use for VRF:", "%s", " refCount:", "%u"});
  Message invalidCount =
      message(5, 52, "handleVrfRefCountChange",
              {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfRefCountChange",
               ": Invalid ref count for a vrf that has not yer been created", " VRF:", "%s"});
  Message deleting = message(7, 35, "handleVrfRefCountChange",
                             {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfRefCountChange",
                              ": Deleting VRF Hw resource. VRF:", "%s"});
  Message deletingUncreated = message(
      7, 41, "handleVrfRefCountChange",
      {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfRefCountChange",
       ": Trying to delete a vrf HW resource that has not been", " created yet. VRF:", "%s"});

  Message updating = message(5, 149, "updateVrfAction",
                             {"ZelVrfSelectionPolicy::VrfSm::", "updateVrfAction",
                              ": Updating VRF HW instance for: ", "%s"});
  Message updatingAll =
      message(5, 130, "updateAllVrfActions",
              {"ZelVrfSelectionPolicy::VrfSm::", "updateAllVrfActions", " ", "%s"});
  Message updatingNamed = message(5, 137, "updateAllVrfActions",
                                  {"ZelVrfSelectionPolicy::VrfSm::", "updateAllVrfActions",
                                   ": Updating VRF HW instance for: ", "%s"});
  Message updatingDependent =
      message(5, 177, "handleVrfUpdates",
              {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfUpdates",
               ": Updating dependent VRF:", "%s", "  HW resource. Changed VRF:", "%s"});

  Message fallbackChange = message(7, 69, "handleVrfFallbackConfig",
                                   {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfFallbackConfig",
                                    ": Handling fallback vrf config change for VRF:", "%s"});
  Message fallbackAlreadyHandled =
      message(7, 85, "handleVrfFallbackConfig",
              {"ZelVrfSelectionPolicy::VrfSm::", "handleVrfFallbackConfig",
               " Fallback config already handled, Skipping this", " notification"});

  Message decapNhFallback =
      message(7, 266, "handleDecapNhFallback",
              {"VrfSm::", "handleDecapNhFallback", " decapNhFallbackEnabled:", "%b"});
  Message decapNh =
      message(7, 278, "handleDecapNh", {"VrfSm::", "handleDecapNh", " decapNhEnabled:", "%b"});
  Message decapNhAction =
      message(7, 282, "handleDecapNh", {"VrfSm::", "handleDecapNh", " action:", "%u"});
};

/// The messages, which are registered while the library is loaded.
inline const VrfSmMessages vrfSmMessages;

}  // namespace ZelVrfSelectionPolicy
