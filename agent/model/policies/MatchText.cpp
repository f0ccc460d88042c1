#include "agent/model/policies/MatchText.h"

#include "agent/config/IpPrefix.h"

namespace ZelAgent {
namespace {

std::string toText(std::uint64_t dscps) {
  std::string text;
  for (unsigned dscp = 0; dscp < 64; ++dscp) {
    if ((dscps >> dscp & 1) == 0) continue;
    if (!text.empty()) text += ',';
    text += std::to_string(dscp);
  }
  return text.empty() ? "none" : text;
}

}  // namespace

std::string toText(const PolicyMap::ClassMatch& match) {
  if (!match.family) return "any";
  std::string text = toText(*match.family);
  if (match.protocol) text += " protocol " + std::to_string(*match.protocol);
  if (match.dscps) text += " dscp " + toText(*match.dscps);
  if (match.source) text += " source " + toText(*match.source);
  if (match.destination) text += " destination " + toText(*match.destination);
  return text;
}

}  // namespace ZelAgent
