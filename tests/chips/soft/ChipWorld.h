// A state machine that drives a software chip, with all the facts that they depend on, and the
// steps that change these: what random histories are made of.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/ZelVrfSelectionPolicy.h"
#include "chips/soft/SoftVrfHelper.h"

namespace Chips {

enum class StepKind : std::uint8_t {
  addUser,         // of `action`
  removeUser,      // of `action`
  addStatus,       // of `vrf`, which has none, with the id `number`
  removeStatus,    // of `vrf`
  setId,           // of `vrf` to `number`
  replaceStatus,   // of `vrf` by another with the id `number`
  setFallback,     // of `vrf` to `other`
  removeFallback,  // of `vrf`
  removeFallbacks,
  addLength,           // `number` to the prefix lengths of `vrf`, which has some
  removeLength,        // the same
  addLengths,          // prefix lengths of `vrf`, which has none: `number` and the next
  replaceLengths,      // of `vrf` by another entity with `number` in it
  removeLengths,       // of `vrf`
  setDecapNh,          // to `flag`
  setDecapNhFallback,  // to `flag`
  setCapacity,         // of the chip to `number`
  planFaults,          // for the next `number` operations
};

struct Step {
  StepKind kind = StepKind::addUser;
  L3::VrfName vrf;
  L3::VrfName other;
  ZelVrfSelectionPolicy::VrfAction action;
  std::uint32_t number = 0;
  bool flag = false;  // for prefix lengths: those of IPv6
};

std::ostream& operator<<(std::ostream& stream, const Step& step);

class ChipWorld final {
 public:
  // What happens before the state machine is built is a history of its own.
  explicit ChipWorld(const std::vector<Step>& before);

  // A step that the present state does not allow does nothing, so that any part of a history is a
  // history.
  void take(const Step& step);

  // What of the chip or of the statuses differs from what a new chip makes, from scratch, of the
  // same actions and facts.
  [[nodiscard]] std::optional<std::string> difference() const;

  static constexpr std::uint32_t enoughCapacity = 1000;

 private:
  void takeFact(const Step& step);
  void takeLengths(const Step& step);
  [[nodiscard]] Routing::Hardware::RouteStatusBase& routesOf(const Step& step) const;

  Mox::Ptr<VrfSelectionPolicy::VrfSelectionFallbackVrf> fallbacks_;
  Mox::Ptr<Routing::Hardware::RouteStatus> routes_;
  Mox::Ptr<Routing6::Hardware::RouteStatus> routesV6_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwStatus> statuses_;
  Mox::Ptr<SoftVrfHelper> chip_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfSm> vrfSm_;
};

}  // namespace Chips
