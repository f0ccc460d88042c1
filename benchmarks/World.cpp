#include "benchmarks/World.h"

#include <array>
#include <cstdio>
#include <unordered_set>

namespace Benchmarks {
namespace {

using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::VrfAction;

struct SeededHash {
  std::size_t operator()(const VrfAction& action) const noexcept { return action.hash(1); }
};

std::string vrfText(unsigned number) {
  std::array<char, nameBytes + 1> text{};
  std::snprintf(text.data(), text.size(), "customer-network-vrf-%03x", number);
  return std::string(text.data(), nameBytes);
}

}  // namespace

const std::vector<L3::VrfName>& vrfNames() {
  static const std::vector<L3::VrfName> names = [] {
    std::vector<L3::VrfName> made;
    for (unsigned number = 0; number < vrfCount; ++number)
      made.emplace_back(vrfText(number));
    return made;
  }();
  return names;
}

VrfAction Draw::action() {
  VrfAction drawn(vrf(), PolicyMap::ActionType::vrf);
  drawn.fallbackVrfNameIs(vrf());
  drawn.postDecapVrfNameIs(vrf());
  return drawn;
}

std::vector<VrfAction> actions(std::size_t count, unsigned seed) {
  Draw draw(seed);
  std::unordered_set<VrfAction, SeededHash> seen;
  std::vector<VrfAction> drawn;
  drawn.reserve(count);
  while (drawn.size() < count) {
    VrfAction action = draw.action();
    if (seen.insert(action).second) drawn.push_back(std::move(action));
  }
  return drawn;
}

World::World(const std::vector<VrfAction>& present)
    : vrfSm(
          ZelVrfSelectionPolicy::VrfSm::VrfSmIs(users, statuses, chip, fallback, routes, routes6)) {
  for (const VrfAction& action : present)
    users->vrfRefCountIs(action, 1);
}

void reprogram(std::vector<BareEntry>& entries, ZelVrfSelectionPolicy::VrfHelper& chip,
               BareRing& ring, std::string_view text) {
  for (BareEntry& entry : entries) {
    ring.write(1, text);
    HwStatus outcome = chip.updateVrf(entry.action);
    if (!(outcome == entry.status)) entry.status = std::move(outcome);
  }
}

}  // namespace Benchmarks
