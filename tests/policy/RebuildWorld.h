#pragma once

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "FactsHardware.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"

namespace ZelVrfSelectionPolicy::Testing {

/// Everything that a machine is built on.
struct MachineInputs {
  Mox::Ptr<VrfHwConfig> users = vrfHwConfigFactory();
  Mox::Ptr<VrfHwStatus> statuses = vrfHwStatusFactory();
  Facts facts;
  Mox::Ptr<VrfHelper> chip;

  Mox::Ptr<VrfSm> bindTo(ZelVrfSelectionPolicySm& top) const {
    return top.vrfSmIs(users, statuses, chip, facts.fallback, facts.routes, facts.routes6);
  }
};

/// What the inputs of the new machine differ in from those of the old one. Where one is another
/// object, it has the same contents, or more.
enum class Difference { fallback, routes, routes6, helper, tables };

inline constexpr Difference differences[] = {Difference::fallback, Difference::routes,
                                             Difference::routes6, Difference::helper,
                                             Difference::tables};

[[nodiscard]] const char* nameOf(Difference difference);

/// The name of a test for a change, which has a `name`, during a rebuild with a difference.
inline constexpr auto nameOfRebuild = [](const auto& each) {
  return std::string(std::get<0>(each.param).name) + nameOf(std::get<Difference>(each.param));
};
std::ostream& operator<<(std::ostream& out, Difference difference);

/// Whether the construction of the new machine succeeds.
enum class Outcome { succeeds, throws };

/// What a hook throws to have a construction fail.
struct ConstructionFails : std::runtime_error {
  ConstructionFails() : std::runtime_error("construction fails") {}
};

/// A machine in place, and the inputs of another that is to take its place.
///
/// Of nine VRFs five fall back to others, three levels deep. "late" and
/// "solo" have neither a status nor prefix lengths yet; others have a status alone, or nothing.
/// Each has a resource with one user, and there is a resource that names three of them. Nobody uses
/// "spare".
class RebuildWorld {
 public:
  RebuildWorld(Difference difference, Outcome outcome);
  RebuildWorld(const RebuildWorld&) = delete;
  RebuildWorld& operator=(const RebuildWorld&) = delete;
  ~RebuildWorld();

  using Happening = std::function<void(MachineInputs& remaining)>;

  /// Has the other machine built. In the course of the call of that number `happening` happens to
  /// the inputs of the machine that remains in the end; and if the construction is to fail, it does
  /// so `further` calls later, or with the next one if that is 0. False when there are not as many
  /// calls.
  [[nodiscard]] bool rebuild(unsigned call, const Happening& happening, unsigned further);

  /// What the next creation or deletion of a resource does.
  void inNextLifecycleCall(std::function<void()> work) {
    hardware_.inNextLifecycleCall = std::move(work);
  }

  /// The inputs of the machine that remains.
  [[nodiscard]] MachineInputs& remaining() noexcept {
    return outcome_ == Outcome::succeeds ? after_ : before_;
  }
  /// How what is there differs from what a world has in which everything was told in time: nothing
  /// when it does not.
  [[nodiscard]] std::string difference();
  /// Changes facts of every kind in turn. Returns those after which something is stale.
  [[nodiscard]] std::string unfollowedFacts();

  /// The calls of the chip since they were last taken.
  [[nodiscard]] std::vector<std::string> takeCalls() { return hardware_.takeCalls(); }

 private:
  [[nodiscard]] std::string staleResources();
  [[nodiscard]] std::string differenceOfTables();
  [[nodiscard]] std::string differenceOfMachine();

  Outcome outcome_;
  MachineInputs before_;
  MachineInputs after_;
  FactsHardware hardware_;
  Mox::Ptr<ZelVrfSelectionPolicySm> top_ =
      zelVrfSelectionPolicySmFactory(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
};

/// The action "look up in that VRF".
[[nodiscard]] inline VrfAction lookUpIn(const char* vrf) {
  return {vrf, PolicyMap::ActionType::vrf};
}

}  // namespace ZelVrfSelectionPolicy::Testing
