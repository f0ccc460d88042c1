// Why: a hardware resource does what the facts said when it was last programmed, not what they say
// now. To see the difference, everything that programming depends on is kept with the resource.
// Always: a program is a value without ties to where its facts came from; two programs are equal
// exactly when a chip would do the same by them.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "L3/VrfName.h"
#include "Routing/Hardware/RouteStatus.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace SoftChip {

// What the chip needs to know of one VRF to look packets up in it.
struct VrfFacts {
  L3::VrfName name;
  std::uint32_t vrfId = 0;  // 0 while the VRF has none
  std::vector<unsigned char> exactMatchLens;
  std::vector<unsigned char> exactMatchLensV6;

  friend bool operator==(const VrfFacts&, const VrfFacts&) = default;
};

// A VRF, then the VRFs that a miss goes on in: its fallback and the fallback's own, none twice.
// Empty where an action names no VRF.
using VrfWalk = std::vector<VrfFacts>;

struct VrfProgram {
  VrfWalk lookUp;
  VrfWalk fallback;
  VrfWalk postDecap;
  bool decapNhEnabled = false;
  bool decapNhFallbackEnabled = false;

  friend bool operator==(const VrfProgram&, const VrfProgram&) = default;
};

// In full, for example
// "look up red(2) v4=[24,32] v6=[] > blue(3) v4=[] v6=[]; fallback none; post-decap none;
// decap-nh off; decap-nh-fallback off" (on one line).
std::ostream& operator<<(std::ostream& stream, const VrfProgram& program);

// The state that programs are made from.
struct ProgramInputs {
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const> fallbackConfig;
  Mox::Ptr<Routing::Hardware::RouteStatus const> routeStatus;
  Mox::Ptr<Routing6::Hardware::RouteStatus const> routeStatusV6;
};

// What is known of the VRF of that name at this moment. An absent input knows no facts.
[[nodiscard]] VrfFacts factsOf(const L3::VrfName& name, const ProgramInputs& inputs);
// The walk that begins with the VRF, by the facts of this moment.
[[nodiscard]] VrfWalk walkOf(L3::VrfName name, const ProgramInputs& inputs);

// The program of an action by the facts of this moment. An absent input knows no facts.
[[nodiscard]] VrfProgram programOf(const ZelVrfSelectionPolicy::VrfAction& action,
                                   const ProgramInputs& inputs);

// The first VRF that the action names and that has no hardware id; the empty name when all have.
[[nodiscard]] L3::VrfName vrfWithoutId(const VrfProgram& program);

}  // namespace SoftChip
