#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "Velo/Subscriber.h"
#include "ZelVrfSelectionPolicy/policy/ZelVrfSelectionPolicySm.h"
#include "tests/vrf/faults/FactsChip.h"

namespace ZelVrfSelectionPolicy::Testing {

/// The library with everything that it works on, as an agent holds it, and the means to show all of
/// it as text.
class World {
 public:
  using FallbackVrf = VrfSelectionPolicy::VrfSelectionFallbackVrf;

  World();
  World(const World&) = delete;
  World& operator=(const World&) = delete;
  ~World();

  /// Builds the machine of the top object on one of the two fallback configurations.
  void build(unsigned config = 0);
  /// Makes a further machine on the same tables, which works beside that of the top object.
  void buildBeside();

  /// Sees to it that there is a machine that has caught up with everything, whatever became of an
  /// event: builds a new one, and has it look at each action again.
  void catchUp();
  /// Has every created action programmed anew.
  void refresh();

  /// Everything, on a line each: tables, platform, machines, who subscribes where, and what the
  /// chip holds.
  [[nodiscard]] std::string dump() const;
  /// How much of that breaks what always holds; empty when nothing does.
  [[nodiscard]] std::string brokenInvariants() const;
  Mox::Ptr<VrfHwConfig> users;
  Mox::Ptr<VrfHwStatus> statuses;
  std::array<Mox::Ptr<FallbackVrf>, 2> fallbacks;
  Mox::Ptr<Routing::Hardware::RouteStatus> routes;
  Mox::Ptr<Routing6::Hardware::RouteStatus> routes6;
  Mox::Ptr<FactsChip> chip;
  Mox::Ptr<ZelVrfSelectionPolicySm> top;
  Mox::Ptr<VrfSm> beside;

 private:
  void listenToStatuses();

  Velo::MemberSubscriber<World> listener_{*this};
  std::map<std::string, HwStatus> told_;  // last, by action
};

}  // namespace ZelVrfSelectionPolicy::Testing
