#include "tests/vrf/faults/History.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

using PolicyMap::ActionType;

VrfAction actionOf(const std::string& vrf, const std::string& fallback = "",
                   const std::string& postDecap = "") {
  VrfAction action(vrf, postDecap.empty() ? ActionType::vrf : ActionType::decapVrf);
  action.fallbackVrfNameIs(fallback);
  action.postDecapVrfNameIs(postDecap);
  return action;
}

class Steps {
 public:
  void add(std::string name, std::function<void(World&)> work) {
    steps_.push_back({std::move(name), std::move(work)});
  }
  void request(std::string name, std::function<void(World&)> work) {
    steps_.push_back({std::move(name), std::move(work), true});
  }
  void users(unsigned count, const VrfAction& action) {
    add("users of " + action.vrfName().str() + ": " + std::to_string(count),
        [=](World& world) { world.users->vrfRefCountIs(action, count); });
  }
  void raised(const VrfAction& action) {
    add("one user more of " + action.vrfName().str(),
        [=](World& world) { world.users->vrfRefCountInc(action, 1); });
  }
  void lowered(const VrfAction& action) {
    add("one user less of " + action.vrfName().str(),
        [=](World& world) { world.users->vrfRefCountDec(action, 1); });
  }
  void id(const char* vrf, unsigned id) {
    add(std::string(vrf) + " has id " + std::to_string(id), [=](World& world) {
      if (const auto status = world.routes->vrfStatus(vrf)) status->vrfIdIs(id);
    });
  }
  void status(const std::string& vrf) {
    add("status of " + vrf, [=](World& world) { world.routes->vrfStatusIs(vrf); });
  }
  void statusReplaced(const char* vrf, unsigned id) {
    add(std::string("another status of ") + vrf, [=](World& world) {
      const auto status = Routing::Hardware::VrfStatus::VrfStatusIs(vrf);
      status->vrfIdIs(id);
      world.routes->vrfStatusIs(status);
    });
  }
  void fallback(const std::string& vrf, const std::string& to) {
    add(vrf + " falls back to " + to,
        [=](World& world) { world.fallbacks[0]->fallbackVrfIs(vrf, to); });
  }
  void noFallback(const char* vrf) {
    add(std::string(vrf) + " falls back to none",
        [=](World& world) { world.fallbacks[0]->fallbackVrfDel(vrf); });
  }
  template <class Family>
  void lens(const char* family, const std::string& vrf, Family of) {
    add(std::string(family) + " prefix lengths of " + vrf,
        [=](World& world) { of(world).vrfPrefixLensInExactMatchIs(vrf); });
    add(std::string(family) + " prefix length of " + vrf, [=](World& world) {
      if (const auto lens = of(world).vrfPrefixLensInExactMatch(vrf)) lens->prefixLenIs(24);
    });
  }

  std::vector<Step> take() { return std::move(steps_); }

 private:
  std::vector<Step> steps_;
};

Routing::Hardware::RouteStatusBase& family4(World& world) {
  return *world.routes;
}
Routing::Hardware::RouteStatusBase& family6(World& world) {
  return *world.routes6;
}

void createAndDelete(Steps& steps) {
  steps.users(1, actionOf("red"));
  steps.users(1, actionOf("blue", "red"));
  steps.raised(actionOf("green", "", "red"));
  steps.raised(actionOf("white", "red"));
  steps.raised(actionOf("black", "red", "blue"));
  steps.users(2, actionOf("red"));
  steps.raised(actionOf("red"));
  steps.users(40, actionOf("red"));
  steps.users(1, actionOf("red"));
  steps.users(0, actionOf("blue", "red"));
  steps.raised(actionOf("blue", "red"));
}

void followVrfs(Steps& steps) {
  steps.status("red");
  steps.id("red", 7);
  steps.status("blue");
  steps.id("blue", 8);
  steps.id("red", 0);
  steps.statusReplaced("red", 9);
  steps.status("default");
  steps.id("default", 1);
}

void followFallbacks(Steps& steps) {
  steps.fallback("blue", "red");
  steps.fallback("green", "blue");
  steps.fallback("green", "blue");
  steps.fallback("green", "red");
  steps.fallback("violet", "default");
  steps.fallback("violet", "blue");
  steps.fallback("blue", "default");
  steps.noFallback("green");
  steps.noFallback("violet");
  steps.fallback("blue", "red");
  steps.id("red", 3);
}

void followPrefixLengths(Steps& steps) {
  steps.lens("IPv4", "red", family4);
  steps.lens("IPv6", "red", family6);
  steps.lens("IPv6", "never named", family6);
  steps.add("other prefix lengths of red", [](World& world) {
    const auto lens = Routing::Hardware::PrefixLensInExactMatch::PrefixLensInExactMatchIs("red");
    lens->prefixLenIs(8);
    world.routes->vrfPrefixLensInExactMatchIs(lens);
  });
  steps.add("no IPv4 prefix lengths of red",
            [](World& world) { world.routes->vrfPrefixLensInExactMatchDel("red"); });
  steps.add("no IPv6 prefix lengths of red",
            [](World& world) { world.routes6->vrfPrefixLensInExactMatchDel("red"); });
}

void followFlags(Steps& steps) {
  steps.add("decapsulation", [](World& world) { world.routes->decapNhEnabledIs(true); });
  steps.add("fallback of decapsulation",
            [](World& world) { world.routes->decapNhFallbackEnabledIs(true); });
}

void switchOffAndOn(Steps& steps) {
  steps.add("machine silent",
            [](World& world) { world.top->vrfSm()->hasNotificationActiveIs(false); });
  steps.users(2, actionOf("red"));
  steps.add("machine speaks",
            [](World& world) { world.top->vrfSm()->hasNotificationActiveIs(true); });
  steps.add("all silent", [](World& world) { world.top->hasNotificationActiveIs(false); });
  steps.add("all speak", [](World& world) { world.top->hasNotificationActiveIs(true); });
  steps.users(1, actionOf("red"));
  steps.request("zombie", [](World& world) { world.top->vrfSm()->moxDoZombieReactors(true); });
  steps.request("no zombie", [](World& world) { world.top->vrfSm()->moxDoZombieReactors(false); });
}

// Two machines on the same tables follow everything but the end of an action, of which only one may
// be told.
void workBeside(Steps& steps) {
  steps.add("a machine beside", [](World& world) { world.buildBeside(); });
  steps.users(1, actionOf("together", "red"));
  steps.fallback("together", "violet");
  steps.status("together");
  steps.id("together", 17);
  steps.lens("IPv4", "together", family4);
  steps.add("no machine beside", [](World& world) { world.beside = nullptr; });
  steps.users(0, actionOf("together", "red"));
  steps.add("together is no longer", [](World& world) { world.routes->vrfStatusDel("together"); });
}

void rebuild(Steps& steps) {
  steps.add("the same machine", [](World& world) { world.build(); });
  steps.add("another machine", [](World& world) { world.build(1); });
  steps.add("back again", [](World& world) { world.build(); });
}

void callHandlers(Steps& steps) {
  steps.request("an update of red",
                [](World& world) { world.top->vrfSm()->updateVrfAction(actionOf("red")); });
  steps.request("an update of what was never created", [](World& world) {
    world.top->vrfSm()->updateVrfAction(actionOf("early", "first", "last"));
  });
  steps.add("a record of dependents",
            [](World& world) { world.top->vrfSm()->dependentVrfInfoIs("asked for"); });
  steps.add("a dependent", [](World& world) {
    world.top->vrfSm()->dependentVrfInfoIs("asked for")->dependentVrfsIs("red");
  });
  steps.add("no record of dependents",
            [](World& world) { world.top->vrfSm()->dependentVrfInfoDel("asked for"); });
}

}  // namespace

std::vector<Step> historyOfHooks() {
  Steps steps;
  steps.add("a machine", [](World& world) { world.build(); });
  createAndDelete(steps);
  followVrfs(steps);
  followFallbacks(steps);
  followPrefixLengths(steps);
  followFlags(steps);
  rebuild(steps);
  callHandlers(steps);
  switchOffAndOn(steps);
  workBeside(steps);
  followVrfs(steps);
  return steps.take();
}

}  // namespace ZelVrfSelectionPolicy::Testing
