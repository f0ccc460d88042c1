#include "agent/model/events/Event.h"

#include "Mox/QuotedString.h"
#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

std::string onOrOff(bool isOn) {
  return isOn ? "on" : "off";
}

std::string vrfOrAny(const std::optional<std::string>& vrf) {
  if (!vrf) return anyVrfWord;
  return *vrf == anyVrfWord ? Mox::quoted(*vrf) : toWord(*vrf);
}

template <class RouteEvent>
std::string routeTo(const RouteEvent& event) {
  return "route " + toWord(event.vrf) + ' ' + toText(event.prefix);
}

struct Writer {
  std::string operator()(const SetVrfId& event) const {
    return "vrf " + toWord(event.vrf) + " id " + std::to_string(event.id);
  }
  std::string operator()(const RemoveVrf& event) const {
    return "vrf " + toWord(event.vrf) + " remove";
  }
  std::string operator()(const AddVrf& event) const {
    const std::string text = "vrf " + toWord(event.vrf) + " add";
    return event.id == 0 ? text : text + " id " + std::to_string(event.id);
  }
  std::string operator()(const SetFallback& event) const {
    return "fallback " + toWord(event.vrf) + " to " + toWord(event.fallback);
  }
  std::string operator()(const RemoveFallback& event) const {
    return "fallback " + toWord(event.vrf) + " remove";
  }
  std::string operator()(const SetDecapNh& event) const {
    return "decap-nh " + onOrOff(event.isOn);
  }
  std::string operator()(const SetDecapNhFallback& event) const {
    return "decap-nh-fallback " + onOrOff(event.isOn);
  }
  std::string operator()(const SetPrefixLens& event) const {
    std::string text = "prefix-lens " + toText(event.family) + ' ' + toWord(event.vrf);
    for (const std::uint8_t length : event.lengths)
      text += ' ' + std::to_string(length);
    return text;
  }
  std::string operator()(const RemovePrefixLens& event) const {
    return "prefix-lens " + toText(event.family) + ' ' + toWord(event.vrf) + " remove";
  }
  std::string operator()(const ApplyConfig& event) const { return "config " + toWord(event.file); }
  std::string operator()(const SetChipCapacity& event) const {
    return "chip capacity " + std::to_string(event.capacity);
  }
  std::string operator()(const SetChipRules& event) const {
    return "chip rules " + std::to_string(event.capacity);
  }
  std::string operator()(const PlanChipFaults& event) const {
    return "chip fail " + vrfOrAny(event.vrf) + ' ' + std::to_string(event.count);
  }
  std::string operator()(const SetDecapRoute& event) const { return routeTo(event) + " decap"; }
  std::string operator()(const SetEgressRoute& event) const {
    return routeTo(event) + " via " + toWord(event.interface);
  }
  std::string operator()(const RemoveRoute& event) const { return routeTo(event) + " remove"; }
  std::string operator()(const Retry& /*event*/) const { return "retry"; }
  std::string operator()(const Show& /*event*/) const { return "show"; }
};

}  // namespace

std::string toText(const Event& event) {
  return std::visit(Writer{}, event);
}

}  // namespace ZelAgent
