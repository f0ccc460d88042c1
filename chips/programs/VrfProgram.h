#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "L3/VrfName.h"
#include "Routing/Hardware/RouteStatus.h"
#include "Routing6/Hardware/RouteStatus.h"
#include "VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace Chips {

/// What the chip needs to look packets up in one VRF.
struct VrfFacts {
  L3::VrfName name;
  std::uint32_t vrfId = 0;  // 0 while the VRF has none
  std::vector<unsigned char> exactMatchLens;
  std::vector<unsigned char> exactMatchLensV6;

  friend bool operator==(const VrfFacts&, const VrfFacts&) = default;
};

/// The most VRFs of a walk: a VRF and two levels of fallback.
inline constexpr std::size_t longestWalk = 3;

/// A VRF, then the VRFs of the lookups after a miss: its fallback, the fallback's own and so on,
/// none twice, at most `longestWalk`. Empty if an action names no VRF.
using VrfWalk = std::vector<VrfFacts>;

/// What a hardware resource is programmed with.
///
/// A resource acts by the facts of the moment when it was last programmed, not by the current
/// facts. A program is a value that holds such facts, so two of them can be compared. Two programs
/// are equal exactly if a chip does the same with them.
struct VrfProgram {
  VrfWalk lookUp;
  VrfWalk fallback;
  VrfWalk postDecap;
  bool decapNhEnabled = false;
  bool decapNhFallbackEnabled = false;

  friend bool operator==(const VrfProgram&, const VrfProgram&) = default;
};

/// Prints the whole program on one line, for example
/// "look up red(2) v4=[24,32] v6=[] > blue(3) v4=[] v6=[]; fallback none; post-decap none;
/// decap-nh off; decap-nh-fallback off".
std::ostream& operator<<(std::ostream& stream, const VrfProgram& program);

/// The state that programs are made from.
struct ProgramInputs {
  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf const> fallbackConfig;
  Mox::Ptr<Routing::Hardware::RouteStatus const> routeStatus;
  Mox::Ptr<Routing6::Hardware::RouteStatus const> routeStatusV6;
};

/// The current facts about the VRF. A null input contributes none.
[[nodiscard]] VrfFacts factsOf(const L3::VrfName& name, const ProgramInputs& inputs);
/// The walk that begins with the VRF, by the current facts.
[[nodiscard]] VrfWalk walkOf(L3::VrfName name, const ProgramInputs& inputs);

/// The program of an action by the current facts. A null input contributes none.
[[nodiscard]] VrfProgram programOf(const ZelVrfSelectionPolicy::VrfAction& action,
                                   const ProgramInputs& inputs);

/// The first VRF named by the action that has no hardware id. The empty name if all have one.
[[nodiscard]] L3::VrfName vrfWithoutId(const VrfProgram& program);

}  // namespace Chips
