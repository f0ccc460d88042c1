#include "agent/model/events/EventNames.h"

#include <optional>
#include <set>

#include "Mox/QuotedString.h"
#include "agent/config/Configuration.h"
#include "agent/language/Errors.h"
#include "agent/language/NearestName.h"
#include "agent/language/Words.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {
namespace {

bool isKnown(ForwardingAgent& agent, const std::string& vrf) {
  return agent.names().vrfs.contains(vrf) || agent.routeStatus().vrfStatus(vrf) != nullptr;
}

std::set<std::string> knownVrfNames(ForwardingAgent& agent) {
  std::set<std::string> names = agent.names().vrfs;
  const std::string& defaultName = agent.configuration().defaultName;
  if (!defaultName.empty()) names.insert(defaultName);
  for (auto status = agent.routeStatus().vrfStatus().iterator(); status; ++status)
    names.insert(status.key().str());
  return names;
}

// Writes the names of VRFs in an event as the names of the system.
class DefaultVrf final {
 public:
  explicit DefaultVrf(const std::string& defaultName) : defaultName_(defaultName) {}

  template <class EventKind>
  void operator()(EventKind& event) const {
    if constexpr (requires { event.vrf; }) rename(event.vrf);
    if constexpr (requires { event.fallback; }) rename(event.fallback);
  }

 private:
  void rename(std::string& vrf) const { vrf = vrfNamed(vrf, defaultName_); }
  void rename(std::optional<std::string>& vrf) const {
    if (vrf) rename(*vrf);
  }

  const std::string& defaultName_;
};

class NameCheck final {
 public:
  explicit NameCheck(ForwardingAgent& agent) : agent_(agent) {}

  void operator()(const SetVrfId& event) const { checkVrf("vrf NAME id N: NAME", event.vrf); }
  void operator()(const SetFallback& event) const {
    checkVrf("fallback NAME to NAME: NAME", event.vrf);
    checkVrf("fallback NAME to NAME: the second NAME", event.fallback);
  }
  void operator()(const SetPrefixLens& event) const {
    checkVrf("prefix-lens " + toText(event.family) + " NAME LENGTH...: NAME", event.vrf);
  }
  void operator()(const PlanChipFaults& event) const {
    if (event.vrf) checkVrf("chip fail VRF|any COUNT: VRF", *event.vrf);
  }
  void operator()(const SetDecapRoute& event) const {
    checkVrf("route VRF PREFIX decap: VRF", event.vrf);
  }
  void operator()(const SetEgressRoute& event) const {
    const std::string form = "route VRF PREFIX via INTERFACE: ";
    checkVrf(form + "VRF", event.vrf);
    checkInterface(agent_, event.interface, form + "INTERFACE");
  }
  // Other events may name anything, or say themselves what must be there.
  template <class Other>
  void operator()(const Other& /*event*/) const {}

 private:
  void checkVrf(const std::string& what, const std::string& vrf) const {
    if (!isKnown(agent_, vrf)) failOnVrf(what, vrf);
  }

  [[noreturn]] void failOnVrf(const std::string& what, const std::string& vrf) const {
    const std::string nearest = suggestion(vrf, knownVrfNames(agent_));
    throw EventError(
        what + " must be a VRF of the configuration or of the hardware, found " + Mox::quoted(vrf) +
        (nearest.empty() ? "; a new one needs first: vrf " + toWord(vrf) + " add" : nearest));
  }

  ForwardingAgent& agent_;
};

}  // namespace

Event checkedEvent(ForwardingAgent& agent, Event event) {
  std::visit(DefaultVrf(agent.configuration().defaultName), event);
  std::visit(NameCheck(agent), event);
  return event;
}

void checkInterface(ForwardingAgent& agent, const std::string& interface, const std::string& what) {
  const std::string problem = problemWithInterface(agent, interface);
  if (!problem.empty()) throw EventError(what + ' ' + problem);
}

std::string problemWithInterface(ForwardingAgent& agent, const std::string& interface) {
  const std::set<std::string>& known = agent.names().interfaces;
  if (known.contains(interface)) return {};
  return "must be an interface of the configuration, found " + Mox::quoted(interface) +
         suggestion(interface, known);
}

}  // namespace ZelAgent
