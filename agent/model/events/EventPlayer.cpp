#include "agent/model/events/EventPlayer.h"

#include <string>
#include <utility>
#include <vector>

#include "Mox/QuotedString.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "agent/language/Words.h"
#include "agent/model/events/Event.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {
namespace {

using Routing::Hardware::PrefixLensInExactMatch;
using Routing::Hardware::RouteStatusBase;
using Routing::Hardware::VrfStatus;

[[noreturn]] void failOnName(const std::string& form, const std::string& needed,
                             const std::string& vrf, const std::string& advice = {}) {
  throw EventError(form + ": NAME must be a VRF that " + needed + ", found " + Mox::quoted(vrf) +
                   advice);
}

// `show` changes nothing, and `apply` makes the step for a configuration.
bool needsStep(const Event& event) {
  return !std::holds_alternative<Show>(event) && !std::holds_alternative<ApplyConfig>(event);
}

// Applies one event to the agent.
class Change final {
 public:
  Change(ForwardingAgent& agent, const std::filesystem::path& folder, Leniency leniency,
         std::vector<std::string>& warnings)
      : agent_(agent), folder_(folder), leniency_(leniency), warnings_(warnings) {}

  void operator()(const SetVrfId& event) const {
    const auto status = agent_.routeStatus().vrfStatus(event.vrf);
    if (!status) {
      failOnName("vrf NAME id N", "exists", event.vrf,
                 "; first: vrf " + toWord(event.vrf) + " add");
    }
    status->vrfIdIs(event.id);
  }

  void operator()(const RemoveVrf& event) const {
    if (!agent_.routeStatus().vrfStatusDel(event.vrf)) {
      failOnName("vrf NAME remove", "exists", event.vrf);
    }
  }

  void operator()(const AddVrf& event) const {
    const Mox::Ptr<VrfStatus> status = VrfStatus::VrfStatusIs(event.vrf);
    status->vrfIdIs(event.id);
    agent_.routeStatus().vrfStatusIs(status);
  }

  void operator()(const SetFallback& event) const {
    agent_.fallbackConfig().fallbackVrfIs(event.vrf, event.fallback);
  }

  void operator()(const RemoveFallback& event) const {
    if (!agent_.fallbackConfig().fallbackVrfHas(event.vrf)) {
      failOnName("fallback NAME remove", "has a fallback", event.vrf);
    }
    agent_.fallbackConfig().fallbackVrfDel(event.vrf);
  }

  void operator()(const SetDecapNh& event) const {
    agent_.routeStatus().decapNhEnabledIs(event.isOn);
  }

  void operator()(const SetDecapNhFallback& event) const {
    agent_.routeStatus().decapNhFallbackEnabledIs(event.isOn);
  }

  void operator()(const SetPrefixLens& event) const {
    RouteStatusBase& routes = routesOf(event.family);
    if (const auto present = routes.vrfPrefixLensInExactMatch(event.vrf)) {
      setLengths(*present, event.lengths);
      return;
    }
    const auto lengths = PrefixLensInExactMatch::PrefixLensInExactMatchIs(event.vrf);
    setLengths(*lengths, event.lengths);
    routes.vrfPrefixLensInExactMatchIs(lengths);
  }

  void operator()(const RemovePrefixLens& event) const {
    if (!routesOf(event.family).vrfPrefixLensInExactMatchDel(event.vrf)) {
      const std::string family = toText(event.family);
      failOnName("prefix-lens " + family + " NAME remove", "has " + family + " prefix lengths",
                 event.vrf);
    }
  }

  void operator()(const ApplyConfig& event) const {
    try {
      const ReadConfiguration read = readOpenConfigFile(folder_ / event.file, leniency_);
      warnings_ = read.warnings;
      agent_.apply(read.configuration);
    } catch (const ConfigError& error) {
      throw EventError(std::string("config FILE: ") + error.what());
    }
  }

  void operator()(const SetChipCapacity& event) const { agent_.chip().capacityIs(event.capacity); }

  void operator()(const SetChipRules& event) const { agent_.ruleCapacityIs(event.capacity); }

  void operator()(const PlanChipFaults& event) const {
    Chips::FaultPlan& plan = agent_.chip().faultPlan();
    if (event.vrf) {
      plan.vrfFaultsIs(*event.vrf, event.count);
    } else {
      plan.anyFaultsIs(event.count);
    }
  }

  void operator()(const SetDecapRoute& event) const {
    agent_.routes().routeIs(event.vrf, event.prefix, {Chips::Route::Kind::decap, {}});
  }

  void operator()(const SetEgressRoute& event) const {
    agent_.routes().routeIs(event.vrf, event.prefix, {Chips::Route::Kind::egress, event.interface});
  }

  void operator()(const RemoveRoute& event) const {
    if (!agent_.routes().routeDel(event.vrf, event.prefix)) {
      throw EventError("route VRF PREFIX remove: VRF must have a route of an event to " +
                       toText(event.prefix) + ", found " + Mox::quoted(event.vrf));
    }
  }

  void operator()(const Retry& /*event*/) const { agent_.retry(); }

  void operator()(const Show& /*event*/) const {}

 private:
  [[nodiscard]] RouteStatusBase& routesOf(IpFamily family) const {
    if (family == IpFamily::v4) return agent_.routeStatus();
    return agent_.routeStatusV6();
  }

  static void setLengths(PrefixLensInExactMatch& entity, const std::set<std::uint8_t>& lengths) {
    for (const std::uint8_t length : lengths)
      entity.prefixLenIs(length);
    for (unsigned length = 0; length <= PrefixLensInExactMatch::longest; ++length) {
      const auto candidate = static_cast<std::uint8_t>(length);
      if (!lengths.contains(candidate)) entity.prefixLenDel(candidate);
    }
  }

  ForwardingAgent& agent_;
  const std::filesystem::path& folder_;
  Leniency leniency_;
  std::vector<std::string>& warnings_;
};

}  // namespace

EventEffects EventPlayer::play(const Event& event) {
  EffectsRecorder recorder(agent_);
  std::vector<std::string> warnings;
  std::visit(Change(agent_, folder_, leniency_, warnings), event);
  if (needsStep(event)) agent_.complete();
  agent_.routes().program();
  EventEffects effects = recorder.take();
  effects.warnings = std::move(warnings);
  return effects;
}

}  // namespace ZelAgent
