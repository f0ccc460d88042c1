#include "testing/Shown.h"

#include <arpa/inet.h>

#include <array>
#include <sstream>
#include <vector>

#include "Mox/QuotedString.h"

namespace ZelVrfSelectionPolicy::Testing {
namespace {

std::string shown(const Ip::Prefix& prefix) {
  const int family = prefix.address.family == Ip::Family::v4 ? AF_INET : AF_INET6;
  std::array<char, INET6_ADDRSTRLEN> text{};
  inet_ntop(family, prefix.address.bytes.data(), text.data(), text.size());
  return std::string(text.data()) + "/" + std::to_string(prefix.length);
}

std::string shown(const Classification::PrefixSet& set) {
  std::string text = "{";
  for (const Ip::Prefix& prefix : set.prefixes)
    text += (text.size() == 1 ? "" : " ") + shown(prefix);
  for (const Ip::Prefix& prefix : set.excluded)
    text += (text.size() == 1 ? "!" : " !") + shown(prefix);
  return text + "}";
}

std::string shown(const std::vector<PolicyMap::NumberRange>& ranges) {
  std::string text;
  for (const PolicyMap::NumberRange& range : ranges) {
    if (!text.empty()) text += '+';
    text += std::to_string(range.first);
    if (range.last != range.first) text += ".." + std::to_string(range.last);
  }
  return text;
}

std::string shown(const PolicyMap::AclMatch& match) {
  if (!match.family) return "any";
  std::ostringstream text;
  text << (*match.family == Ip::Family::v4 ? "v4" : "v6");
  if (match.protocol) text << ",protocol=" << static_cast<unsigned>(*match.protocol);
  if (match.dscps) text << ",dscps=" << std::hex << *match.dscps << std::dec;
  if (match.source) text << ",source=" << shown(*match.source);
  if (match.destination) text << ",destination=" << shown(*match.destination);
  if (match.sourceSet) text << ",sourceSet=" << shown(**match.sourceSet);
  if (match.destinationSet) text << ",destinationSet=" << shown(**match.destinationSet);
  if (match.hopLimit) text << ",hopLimit=" << static_cast<unsigned>(*match.hopLimit);
  if (match.length) text << ",length=" << *match.length;
  if (match.isFragment) text << ",fragment";
  if (!match.fragmentOffsets.empty()) text << ",offsets=" << shown(match.fragmentOffsets);
  if (!match.sourcePorts.empty()) text << ",sourcePorts=" << shown(match.sourcePorts);
  if (!match.destinationPorts.empty())
    text << ",destinationPorts=" << shown(match.destinationPorts);
  for (const PolicyMap::TcpFlagsMatch& flags : match.tcpFlags) {
    text << ",tcpFlags=" << std::hex << static_cast<unsigned>(flags.value) << '/'
         << static_cast<unsigned>(flags.mask) << std::dec;
  }
  if (match.matchesLaterFragments) text << ",laterFragments";
  return text.str();
}

}  // namespace

std::string shown(const VrfAction& action) {
  const bool isPlain = action.action() == PolicyMap::ActionType::vrf &&
                       action.fallbackVrfName().empty() && action.postDecapVrfName().empty();
  if (isPlain) return action.vrfName().str();
  return action.vrfName().str() + ">" + action.fallbackVrfName().str() + ">" +
         action.postDecapVrfName().str() + ":" + PolicyMap::stringValue(action.action()).str();
}

std::string shown(const HwStatus& status) {
  if (!status) return "ok";
  return stringValue(status.status()).str() + " " + stringValue(status.failureReason()).str() +
         " " + Mox::quoted(status.failureDescription().bytes());
}

std::string shown(const PolicyMap::AclRule& rule) {
  VrfAction action(rule.action.vrfName, rule.action.type);
  action.fallbackVrfNameIs(rule.action.fallbackVrfName);
  action.postDecapVrfNameIs(rule.action.postDecapVrfName);
  return shown(*rule.match) + "->" + shown(action);
}

}  // namespace ZelVrfSelectionPolicy::Testing
