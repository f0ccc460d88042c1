// The hardware id of a VRF changes. 64 VRFs fall back to it, and 8 others to each of these. 4
// actions name each VRF. The peer is a bare loop over the same actions in the same order.

#include "benchmarks/Families.h"
#include "benchmarks/World.h"

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

constexpr unsigned dependents = 64;
constexpr unsigned secondLevel = 8;
constexpr unsigned actionsEach = 4;
constexpr unsigned vrfs = 1 + dependents + dependents * secondLevel;

/// The VRFs of the chain: the root, then each dependent, followed by the dependents of it.
std::vector<L3::VrfName> chainIs(VrfSelectionPolicy::VrfSelectionFallbackVrf& fallback) {
  std::vector<L3::VrfName> chain{vrfNames()[0]};
  for (unsigned i = 0; i < dependents; ++i) {
    const L3::VrfName& dependent = vrfNames()[chain.size()];
    fallback.fallbackVrfIs(dependent, chain[0]);
    chain.push_back(dependent);
    for (unsigned j = 0; j < secondLevel; ++j) {
      const L3::VrfName& second = vrfNames()[chain.size()];
      fallback.fallbackVrfIs(second, dependent);
      chain.push_back(second);
    }
  }
  return chain;
}

// The post-decapsulation VRF makes the actions of one VRF differ. It does not change.
VrfAction naming(const L3::VrfName& vrf, unsigned number) {
  VrfAction action(vrf, PolicyMap::ActionType::vrf);
  action.postDecapVrfNameIs(vrfNames()[vrfs + number]);
  return action;
}

}  // namespace

void fallbackChain(Report& report) {
  World world;
  const std::vector<L3::VrfName> chain = chainIs(*world.fallback);
  std::vector<VrfAction> present;
  for (const L3::VrfName& vrf : chain) {
    for (unsigned i = 0; i < actionsEach; ++i)
      present.push_back(naming(vrf, i));
  }
  for (const VrfAction& action : shuffled(present, 5))
    world.users->vrfRefCountIs(action, 1);
  const auto root = world.routes->vrfStatusIs(chain[0]);

  std::vector<BareEntry> entries;
  for (const VrfAction& action : present)
    entries.push_back({action, HwStatus()});
  BareRing ring;

  Comparison("fallback chain: 64 dependents, 8 second-level each, 4 actions each")
      .ours([&, id = 1U](benchmark::State& state) mutable {
        for (auto _ : state)
          root->vrfIdIs(id = id % 1000 + 1);
      })
      .beside("bare loop over the 2,308 actions reached", ratioAtMost(2.0),
              [&](benchmark::State& state) {
                for (auto _ : state)
                  reprogram(entries, *world.chip, ring, chain[0].bytes());
              })
      .measure(report);
}

}  // namespace Benchmarks
