#include "tests/vrf/faults/World.h"

#include <sstream>

#include "Quarry/Slab.h"
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
  for (Velo::Subscriber& watcher : watchers_)
    watcher.dispatch = [](Velo::Publisher*, Velo::Subscriber*, short, const void*, const void*) {};
  listenToStatuses();
  policy_.classTypeConfig->classMapIs("all", {});
  policy_.policyConfig->policyMapIs("map",
                                    {{10, "all", {PolicyMap::ActionType::vrf, "red", {}, {}}}});
  policy_.intfConfig->intfIs("eth1", {PolicyMap::IntfKind::routed, "map"});
}

World::~World() {
  statuses->publisher().subscriberDel(listener_);
  for (std::size_t watcher = 0; watcher < watchers; ++watcher)
    unsubscribe(watcher);
}

void World::listenToStatuses() {
  listener_.dispatch = [](Velo::Publisher*, Velo::Subscriber* subscriber, short, const void* key,
                          const void* value) {
      World& world = Velo::MemberSubscriber<World>::ownerOf(subscriber);
    const std::string action = Testing::shown(*static_cast<const VrfAction*>(key));
    if (value == nullptr) {
      world.told_.erase(action);
    } else {
      world.told_[action] = *static_cast<const HwStatus*>(value);
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

void World::bindPolicy(bool permitFragment) {
  PolicySmArguments& arguments = policy_;
  arguments.permitFragment = permitFragment;
  arguments.bindTo(*top);
}

void World::policyHasTwoRules() {
  const PolicyMap::RuleAction action{PolicyMap::ActionType::vrf, "red", {}, {}};
  policy_.policyConfig->policyMapIs("map", {{10, "all", action}, {20, "all", action}});
}

unsigned World::rulesOfPolicy() const {
  return policy_.status->ruleStatus().count();
}

void World::mount() {
  const auto mounts = policySmMountsFactory();
  mounts->intfConfigIs(policy_.intfConfig);
  mounts->aclConfigIs(policy_.aclConfig);
  mounts_ = mounts;
}

// Of each of three publishers in turn, two by two.
void World::subscribe(std::size_t watcher) {
  const std::array<Velo::Publisher*, 3> publishers{&users->publisher(), &statuses->publisher(),
                                                   &fallbacks[0]->publisher()};
  publishers.at(watcher / 2)->subscriberIs(watchers_.at(watcher));
}

void World::unsubscribe(std::size_t watcher) {
  users->publisher().subscriberDel(watchers_.at(watcher));
  statuses->publisher().subscriberDel(watchers_.at(watcher));
  fallbacks[0]->publisher().subscriberDel(watchers_.at(watcher));
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
  if (const auto& policySm = top->policySm())
    text << "policySm " << flagsOf(*policySm) << " ready:" << policySm->ready() << '\n';
  text << "told of policies:" << notifiees(*policy_.intfConfig) << notifiees(*policy_.policyConfig)
       << notifiees(*policy_.classTypeConfig) << '\n';
  text << "mounted:" << (mounts_ ? mounts_->references() : 0) << '\n';
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

std::map<std::string, std::size_t> liveObjects() {
  std::map<std::string, std::size_t> live;
  for (const std::string& name : Quarry::Slab::typeNames())
    live[name] = Quarry::Slab::find(name)->live();
  return live;
}

}  // namespace ZelVrfSelectionPolicy::Testing
