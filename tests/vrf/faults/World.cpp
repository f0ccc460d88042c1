#include "tests/vrf/faults/World.h"

#include <sstream>

#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using Lines = std::map<std::string, std::string>;

// Collections are shown in the order of their keys: that of their walks is not told.
void write(std::ostream& text, const char* title, const Lines& lines) {
  text << title << '\n';
  for (const auto& [key, value] : lines)
    text << "  " << key << " = " << value << '\n';
}

unsigned notifiees(const Mox::PtrInterface& entity) {
  const Velo::NotifieeListDescriptor list = entity.notifieeList();
  unsigned count = 0;
  list.visit(
      list.list, [](void* to, void*) { ++*static_cast<unsigned*>(to); }, &count);
  return count;
}

std::string shown(const Routing::Hardware::PrefixLensInExactMatch& lens) {
  std::string text;
  for (unsigned length = 0; length <= lens.longest; ++length) {
    if (lens.prefixLenHas(static_cast<unsigned char>(length))) text += "/" + std::to_string(length);
  }
  return text + " told:" + std::to_string(notifiees(lens));
}

std::string flagsOf(const Mox::PtrInterface& machine) {
  return std::string(machine.hasNotificationActive() ? "active" : "silent") +
         (machine.isZombie() ? " zombie" : "");
}

template <class Map, class Show>
Lines linesOf(const Map& map, Show show) {
  Lines lines;
  for (auto entry = map.iterator(); entry; ++entry) {
    std::ostringstream key;
    key << entry.key();
    lines[key.str()] = show(entry);
  }
  return lines;
}

template <class Routes>
void writeRoutes(std::ostream& text, const Routes& routes) {
  text << "routes, told:" << notifiees(routes) << " decap:" << routes.decapNhEnabled()
       << " fallback:" << routes.decapNhFallbackEnabled() << '\n';
  write(text, "vrfStatus", linesOf(routes.vrfStatus(), [](const auto& entry) {
          return std::to_string(entry.value()->vrfId()) +
                 " told:" + std::to_string(notifiees(*entry.value()));
        }));
  write(text, "prefixLens", linesOf(routes.vrfPrefixLensInExactMatch(), [](const auto& entry) {
          return shown(*entry.value());
        }));
}

template <class Machines, class Routes>
Lines prefixMachines(const Machines& machines, const Routes& routes) {
  return linesOf(machines, [&](const auto& entry) {
    const bool isPresent =
        routes && entry.value()->prefixLens() == routes->vrfPrefixLensInExactMatch(entry.key());
    return flagsOf(*entry.value()) + (isPresent ? "" : " watches another");
  });
}

void write(std::ostream& text, const VrfSm& machine) {
  text << "machine " << flagsOf(machine) << '\n';
  write(text, "fallbackVrfInfo",
        linesOf(machine.fallbackVrfInfo(), [](const auto& entry) { return entry.value().str(); }));
  write(text, "dependentVrfInfo", linesOf(machine.dependentVrfInfo(), [](const auto& entry) {
          std::string members;
          for (const auto& [name, nothing] :
               linesOf(entry.value()->dependentVrfs(), [](const auto&) { return ""; }))
            members += name + " ";
          return members;
        }));
  const auto routes = machine.routingHwRouteStatus();
  write(text, "vrfInstance", linesOf(machine.moxVrfInstance(), [&](const auto& entry) {
          const bool isPresent =
              routes && entry.value()->vrfInstance() == routes->vrfStatus(entry.key());
          return flagsOf(*entry.value()) + (isPresent ? "" : " watches another");
        }));
  write(text, "prefixLensSms", prefixMachines(machine.vrfPrefixLensInExactMatch(), routes));
  write(text, "prefixLensSmsV6",
        prefixMachines(machine.vrfPrefixLensInExactMatchV6(), machine.routing6HwRouteStatus()));
}

}  // namespace

World::World()
    : users(vrfHwConfigFactory()),
      statuses(vrfHwStatusFactory()),
      fallbacks{FallbackVrf::VrfSelectionFallbackVrfIs(), FallbackVrf::VrfSelectionFallbackVrfIs()},
      routes(Routing::Hardware::RouteStatus::RouteStatusIs()),
      routes6(Routing6::Hardware::RouteStatus::RouteStatusIs()),
      chip(Mox::makePtr<FactsChip>(fallbacks[0], routes, routes6)),
      top(zelVrfSelectionPolicySmFactory(nullptr, nullptr, chip, nullptr, nullptr, nullptr)) {
  listenToStatuses();
}

World::~World() {
  statuses->publisher().subscriberDel(listener_);
}

void World::listenToStatuses() {
  listener_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void* key,
                          const void*) {
    World& world = Velo::MemberSubscriber<World>::ownerOf(subscriber);
    const auto& action = *static_cast<const VrfAction*>(key);
    if (const HwStatus* status = world.statuses->hwStatus().find(action)) {
      world.told_[Testing::shown(action)] = *status;
    } else {
      world.told_.erase(Testing::shown(action));
    }
  };
  statuses->publisher().subscriberIs(listener_);
}

void World::build(unsigned config) {
  top->vrfSmIs(users, statuses, chip, fallbacks.at(config), routes, routes6);
}

void World::buildBeside() {
  beside = vrfSmFactory(users, statuses, chip, fallbacks[0], routes, routes6);
}

void World::catchUp() {
  beside = nullptr;
  top->vrfSmDel();
  build();
  std::vector<VrfAction> behind;
  for (auto entry = users->vrfRefCount().iterator(); entry; ++entry) {
    if ((entry.value() != 0) != statuses->hwStatusHas(entry.key())) behind.push_back(entry.key());
  }
  for (const VrfAction& action : behind)
    top->vrfSm()->handleVrfRefCountChange(action);
}

void World::refresh() {
  routes->decapNhEnabledIs(!routes->decapNhEnabled());
  routes->decapNhEnabledIs(!routes->decapNhEnabled());
}

std::string World::dump() const {
  std::ostringstream text;
  text << "told:" << notifiees(*users) << ' ' << notifiees(*statuses) << ' '
       << notifiees(*fallbacks[0]) << ' ' << notifiees(*fallbacks[1]) << '\n';
  write(text, "vrfRefCount", linesOf(users->vrfRefCount(), [](const auto& entry) {
          return std::to_string(entry.value());
        }));
  write(text, "hwStatus", linesOf(statuses->hwStatus(), [](const auto& entry) {
          return Testing::shown(entry.value());
        }));
  for (const auto& config : fallbacks) {
    write(text, "fallbackVrf",
          linesOf(config->fallbackVrf(), [](const auto& entry) { return entry.value().str(); }));
  }
  writeRoutes(text, *routes);
  writeRoutes(text, *routes6);
  write(text, "resources", chip->resources());
  text << "top " << flagsOf(*top) << '\n';
  if (top->vrfSm()) write(text, *top->vrfSm());
  if (beside) write(text, *beside);
  return text.str();
}

std::string World::brokenInvariants() const {
  std::string broken;
  std::map<std::string, HwStatus> present;
  for (auto entry = statuses->hwStatus().iterator(); entry; ++entry)
    present[Testing::shown(entry.key())] = entry.value();
  if (present != told_) broken += "the watcher of the statuses was not told the last of them\n";
  for (const auto& [action, program] : chip->resources()) {
    if (present.count(action) == 0) broken += "no status tells of the resource of " + action + "\n";
  }
  return broken;
}

}  // namespace ZelVrfSelectionPolicy::Testing
