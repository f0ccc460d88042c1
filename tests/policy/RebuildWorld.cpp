#include "RebuildWorld.h"

#include <map>
#include <set>
#include <utility>

#include "ZelVrfSelectionPolicy/vrf/PrefixLensSm.h"
#include "ZelVrfSelectionPolicy/vrf/VrfInstanceSm.h"
#include "testing/Shown.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

// Those that others fall back to come before these.
constexpr const char* vrfsInUse[] = {"solo",  "late",   "white", "grey", "blue",
                                     "green", "yellow", "black", "red"};

void configure(Facts& facts) {
  std::uint32_t id = 0;
  for (const char* vrf : {"red", "blue", "grey", "green", "white"})
    facts.routes->vrfStatusIs(vrf)->vrfIdIs(++id);
  for (const char* vrf : {"red", "blue", "grey"}) {
    facts.routes->vrfPrefixLensInExactMatchIs(vrf)->prefixLenIs(1);
    facts.routes6->vrfPrefixLensInExactMatchIs(vrf)->prefixLenIs(2);
  }
  facts.fallback->fallbackVrfIs("red", "blue");
  facts.fallback->fallbackVrfIs("blue", "grey");
}

// What is configured as fallback while the old machine is in place already.
void completeFallback(Facts& facts) {
  facts.fallback->fallbackVrfIs("green", "blue");
  facts.fallback->fallbackVrfIs("yellow", "late");
  facts.fallback->fallbackVrfIs("black", "white");
}

VrfAction actionOfThree() {
  VrfAction action("green", PolicyMap::ActionType::decapVrf);
  action.fallbackVrfNameIs("red");
  action.postDecapVrfNameIs("solo");
  return action;
}

std::vector<VrfAction> actionsInUse() {
  std::vector<VrfAction> actions{actionOfThree()};
  for (const char* vrf : vrfsInUse)
    actions.push_back(lookUpIn(vrf));
  return actions;
}

using LinesByName = std::map<std::string, std::string>;

template <class Map, class Show>
LinesByName linesOf(const Map& map, Show show) {
  LinesByName lines;
  for (auto entry = map.iterator(); entry; ++entry)
    lines[std::string(entry.key().bytes())] = show(entry);
  return lines;
}

std::string compared(const char* what, const LinesByName& present, const LinesByName& wanted) {
  if (present == wanted) return "";
  std::string text = std::string(what) + ":";
  for (const auto& [key, value] : present)
    text += " " + key + "(" + value + ")";
  text += " instead of";
  for (const auto& [key, value] : wanted)
    text += " " + key + "(" + value + ")";
  return text + "\n";
}

std::string stateOf(const Mox::PtrInterface& machine) {
  return std::string(machine.hasNotificationActive() ? "active" : "silent") +
         (machine.isZombie() ? " zombie" : "");
}

// A nested machine for each entity, which follows that very one.
template <class Entities>
LinesByName followersWanted(const Entities& entities) {
  return linesOf(entities, [](const auto&) { return "active"; });
}

template <class Machines>
LinesByName followersOfLengths(const Machines& machines,
                               const Routing::Hardware::RouteStatusBase& routes) {
  return linesOf(machines, [&](const auto& entry) {
    const bool isIts = entry.value()->prefixLens() == routes.vrfPrefixLensInExactMatch(entry.key());
    return stateOf(*entry.value()) + (isIts ? "" : " on another entity");
  });
}

LinesByName followersOfVrfs(const VrfSm& machine, const Facts& facts) {
  return linesOf(machine.moxVrfInstance(), [&](const auto& entry) {
    const bool isIts = entry.value()->vrfInstance() == facts.routes->vrfStatus(entry.key());
    return stateOf(*entry.value()) + (isIts ? "" : " on another entity");
  });
}

LinesByName linksWanted(const Facts& facts) {
  std::map<std::string, std::set<std::string>> dependents;
  for (auto entry = facts.fallback->fallbackVrf().iterator(); entry; ++entry) {
    if (!entry.value().isDefaultVrf()) dependents[entry.value().str()].insert(entry.key().str());
  }
  LinesByName lines;
  for (const auto& [vrf, names] : dependents) {
    for (const std::string& name : names)
      lines[vrf] += name + " ";
  }
  return lines;
}

LinesByName links(const VrfSm& machine) {
  return linesOf(machine.dependentVrfInfo(), [](const auto& entry) {
    std::set<std::string> names;
    for (auto name = entry.value()->dependentVrfs().iterator(); name; ++name)
      names.insert(name.key().str());
    std::string line;
    for (const std::string& name : names)
      line += name + " ";
    return line;
  });
}

}  // namespace

const char* nameOf(Difference difference) {
  switch (difference) {
    case Difference::fallback:
      return "OnAnotherFallbackConfig";
    case Difference::routes:
      return "OnAnotherRouteStatus";
    case Difference::routes6:
      return "OnAnotherRouteStatus6";
    case Difference::helper:
      return "OnAnotherHelper";
    case Difference::tables:
      return "OnOtherTables";
  }
  return "";
}

std::ostream& operator<<(std::ostream& out, Difference difference) {
  return out << nameOf(difference);
}

RebuildWorld::RebuildWorld(Difference difference, Outcome outcome)
    : outcome_(outcome), hardware_(remaining().facts) {
  const Mox::Ptr<VrfHelper> helper = Mox::makePtr<FactsHelper>(hardware_);
  before_.chip = helper;
  configure(before_.facts);
  if (difference != Difference::fallback) completeFallback(before_.facts);
  after_.chip = helper;
  configure(after_.facts);
  completeFallback(after_.facts);

  if (difference == Difference::helper) after_.chip = Mox::makePtr<FactsHelper>(hardware_);
  if (difference != Difference::fallback) after_.facts.fallback = before_.facts.fallback;
  if (difference != Difference::routes) after_.facts.routes = before_.facts.routes;
  if (difference != Difference::routes6) after_.facts.routes6 = before_.facts.routes6;
  if (difference != Difference::tables) {
    after_.users = before_.users;
    after_.statuses = before_.statuses;
  }

  before_.bindTo(*top_);
  for (const VrfAction& action : actionsInUse()) {
    before_.users->vrfRefCountInc(action, 1);
    after_.users->vrfRefCountIs(action, 1);
    after_.statuses->hwStatusIs(action, HwStatus());
  }
}

RebuildWorld::~RebuildWorld() {
  hardware_.before = nullptr;
  hardware_.after = nullptr;
}

bool RebuildWorld::rebuild(unsigned call, const Happening& happening, unsigned further) {
  static_cast<void>(takeCalls());
  bool hasHappened = false;
  bool hasThrown = false;
  const unsigned callsBefore = hardware_.outerCalls();
  hardware_.after = [&](unsigned number) {
    if (number != callsBefore + call) return;
    hasHappened = true;
    happening(remaining());
  };
  if (outcome_ == Outcome::throws) {
    hardware_.before = [&](unsigned number) {
      if (!hasHappened || number != callsBefore + call + 1 + further) return;
      hasThrown = true;
      throw ConstructionFails();
    };
  }
  try {
    after_.bindTo(*top_);
  } catch (const ConstructionFails&) {
  }
  hardware_.before = nullptr;
  hardware_.after = nullptr;
  return hasHappened && hasThrown == (outcome_ == Outcome::throws);
}

std::string RebuildWorld::difference() {
  return staleResources() + differenceOfTables() + differenceOfMachine();
}

std::string RebuildWorld::staleResources() {
  std::string text;
  for (auto entry = remaining().statuses->hwStatus().iterator(); entry; ++entry) {
    const std::string action = shown(entry.key());
    const auto held = hardware_.programs().find(action);
    const std::string wanted = remaining().facts.programOf(entry.key());
    if (held == hardware_.programs().end()) {
      text += "no resource of " + action + "\n";
    } else if (held->second != wanted) {
      text += "stale: " + action + " has" + held->second + " instead of" + wanted + "\n";
    }
  }
  return text;
}

// Each action that has users has a status and a resource, and no other has.
std::string RebuildWorld::differenceOfTables() {
  LinesByName users;
  LinesByName statuses;
  LinesByName resources;
  for (auto entry = remaining().users->vrfRefCount().iterator(); entry; ++entry)
    users[shown(entry.key())];
  for (auto entry = remaining().statuses->hwStatus().iterator(); entry; ++entry)
    statuses[shown(entry.key())];
  for (const auto& [action, program] : hardware_.programs())
    resources[action];
  return compared("statuses", statuses, users) + compared("resources", resources, users);
}

std::string RebuildWorld::differenceOfMachine() {
  const Facts& facts = remaining().facts;
  const Mox::Ptr<VrfSm> machine = top_->vrfSm();
  std::string text;
  if (machine->vrfHelper() != remaining().chip || machine->vrfHwConfig() != remaining().users ||
      machine->vrfFallbackConfig() != facts.fallback ||
      machine->routingHwRouteStatus() != facts.routes ||
      machine->routing6HwRouteStatus() != facts.routes6) {
    text += "the machine is not the one that is to remain\n";
  }
  if (!machine->hasNotificationActive() || machine->isZombie()) text += "the machine is off\n";
  const auto valueOf = [](const auto& entry) { return entry.value().str(); };
  text += compared("instances", followersOfVrfs(*machine, facts),
                   followersWanted(facts.routes->vrfStatus()));
  text += compared("machines of lengths",
                   followersOfLengths(machine->vrfPrefixLensInExactMatch(), *facts.routes),
                   followersWanted(facts.routes->vrfPrefixLensInExactMatch()));
  text += compared("machines of IPv6 lengths",
                   followersOfLengths(machine->vrfPrefixLensInExactMatchV6(), *facts.routes6),
                   followersWanted(facts.routes6->vrfPrefixLensInExactMatch()));
  text += compared("handled fallback", linesOf(machine->fallbackVrfInfo(), valueOf),
                   linesOf(facts.fallback->fallbackVrf(), valueOf));
  text += compared("links", links(*machine), linksWanted(facts));
  return text;
}

std::string RebuildWorld::unfollowedFacts() {
  Facts& facts = remaining().facts;
  std::string text;
  const auto expectFollowed = [&](const std::string& what) {
    const std::string stale = staleResources();
    if (!stale.empty()) text += "after " + what + ": " + stale;
  };
  for (const char* vrf : vrfsInUse)
    facts.routes->vrfStatusIs(vrf)->vrfIdIs(900);
  expectFollowed("other ids");
  for (const char* vrf : vrfsInUse)
    facts.routes->vrfPrefixLensInExactMatchIs(vrf)->prefixLenIs(4);
  expectFollowed("further lengths");
  for (const char* vrf : vrfsInUse)
    facts.routes6->vrfPrefixLensInExactMatchIs(vrf)->prefixLenIs(4);
  expectFollowed("further IPv6 lengths");
  for (const char* vrf : vrfsInUse)
    facts.fallback->fallbackVrfIs(vrf, "spare");
  expectFollowed("other fallback");
  facts.routes->decapNhEnabledIs(!facts.routes->decapNhEnabled());
  expectFollowed("decapsulation");
  facts.routes->decapNhFallbackEnabledIs(!facts.routes->decapNhFallbackEnabled());
  expectFollowed("fallback of decapsulation");
  remaining().users->vrfRefCountInc(lookUpIn("spare"), 1);
  expectFollowed("a first user");
  return text + differenceOfTables() + differenceOfMachine();
}

}  // namespace ZelVrfSelectionPolicy::Testing
