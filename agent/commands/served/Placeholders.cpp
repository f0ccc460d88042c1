#include "agent/commands/served/Placeholders.h"

#include <algorithm>
#include <span>

#include "agent/commands/served/CommandTable.h"
#include "agent/commands/served/FormWalk.h"
#include "agent/commands/served/ObjectNames.h"
#include "agent/commands/served/TypedKey.h"
#include "agent/language/Words.h"
#include "agent/model/forwarding/FallbackGraph.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/model/packets/PacketText.h"

namespace ZelAgent {
namespace {

using Words = std::vector<std::string>;
using Values = std::set<std::string>;

Values vrfs(const Words& /*words*/, ForwardingAgent& agent) {
  Values values;
  for (const L3::VrfName& vrf : knownVrfs(agent))
    values.insert(toWord(vrf.str()));
  return values;
}

Values asWords(const std::set<std::string>& names) {
  Values values;
  for (const std::string& name : names)
    values.insert(toWord(name));
  return values;
}

Values interfaces(const Words& /*words*/, ForwardingAgent& agent) {
  return asWords(agent.names().interfaces);
}

Values policies(const Words& /*words*/, ForwardingAgent& agent) {
  return asWords(agent.names().policies);
}

// The prefixes of the routes of the VRF that the last word names.
Values prefixes(const Words& words, ForwardingAgent& agent) {
  Values values;
  for (const IpPrefix& prefix : agent.routes().prefixesOf(words.back()))
    values.insert(toText(prefix));
  return values;
}

Values types(const Words& /*words*/, ForwardingAgent& /*agent*/) {
  const Words names = readableTypes();
  return {names.begin(), names.end()};
}

Values attributes(const Words& words, ForwardingAgent& /*agent*/) {
  const Mox::Type* const type = typeNamed(words.back());
  if (type == nullptr) return {};
  const Words names = readableAttributesOf(*type);
  return {names.begin(), names.end()};
}

// The next words of the keys that begin with the words after the attribute. `words` begin with
// `get TYPE ATTRIBUTE`.
Values keys(const Words& words, ForwardingAgent& agent) {
  const Mox::Type* const type = typeNamed(words[1]);
  if (type == nullptr) return {};
  Words typed;
  std::transform(words.begin() + 3, words.end(), std::back_inserter(typed), toWord);
  Values values;
  for (const Mox::AnyValue& key : keysOf(agent.policySm(), *type, words[2])) {
    const Words whole = wordsOfKey(key);
    if (typed.size() < whole.size() && std::equal(typed.begin(), typed.end(), whole.begin())) {
      values.insert(whole[typed.size()]);
    }
    if (const auto vrf = vrfOfKey(key); vrf && typed.empty()) values.insert(*vrf);
  }
  return values;
}

// The keywords of a packet after its first words.
Values packetKeywordsAfter(std::span<const std::string> words) {
  constexpr std::size_t addresses = 4;  // ipv4|ipv6 SOURCE to DESTINATION
  if (words.empty()) return {"ipv4", "ipv6", "hex"};
  if (words.front() == "hex") return {};
  if (words.size() == 2) return {"to"};
  if (words.size() < addresses) return {};
  std::size_t next = addresses;
  for (; next < words.size(); next += 2) {
    if (words[next] == "carrying") return packetKeywordsAfter(words.subspan(next + 1));
  }
  if (next > words.size()) return {};  // the value of a field
  const Words keywords = ZelAgent::packetKeywords();
  return {keywords.begin(), keywords.end()};
}

// `words` begin with `explain INTERFACE`.
Values packetKeywords(const Words& words, ForwardingAgent& /*agent*/) {
  return packetKeywordsAfter(std::span(words).subspan(2));
}

// The words of a command after `help`.
Values commandWords(const Words& words, ForwardingAgent& /*agent*/) {
  FormWalk walk;
  for (std::size_t i = 1; i < words.size(); ++i)
    walk.take(words[i]);
  Values values;
  for (const FormWalk::Choice& choice : walk.choices()) {
    if (!isPlaceholder(choice.text)) values.insert(choice.text);
  }
  return values;
}

struct Placeholder {
  std::string_view name;
  std::string_view help;
  Values (*values)(const Words& words, ForwardingAgent& agent);  // null if they are not listed
};

constexpr Placeholder placeholders[] = {
    {"ATTRIBUTE", "an attribute of the type, by name or number", attributes},
    {"COUNT", "a number of operations", nullptr},
    {"FILE", "a file, from the daemon's folder", nullptr},
    {"INTERFACE", "an interface", interfaces},
    {"KEY", "a key: a name, the VRF of an action, or an action", keys},
    {"LENGTH", "a prefix length", nullptr},
    {"LINE", "a line, quoted as one word", nullptr},
    {"N", "a number", nullptr},
    {"NAME", "a VRF", vrfs},
    {"PACKET", "ipv4|ipv6 SOURCE to DESTINATION [FIELD VALUE]... [carrying PACKET], or hex BYTES",
     packetKeywords},
    {"POLICY", "a policy", policies},
    {"PREFIX", "a prefix, such as 192.0.2.0/24 or 2001:db8::/32", prefixes},
    {"TYPE", "a type of the library", types},
    {"VRF", "a VRF", vrfs},
    {"WORD", "a word of a command", commandWords},
};

const Placeholder* find(std::string_view name) noexcept {
  const auto* const found =
      std::find_if(std::begin(placeholders), std::end(placeholders),
                   [&](const Placeholder& placeholder) { return placeholder.name == name; });
  return found == std::end(placeholders) ? nullptr : found;
}

}  // namespace

std::string_view placeholderHelp(std::string_view placeholder) noexcept {
  const Placeholder* const found = find(placeholder);
  return found == nullptr ? std::string_view() : found->help;
}

std::set<std::string> valuesOf(std::string_view placeholder, const std::vector<std::string>& words,
                               ForwardingAgent& agent) {
  const Placeholder* const found = find(placeholder);
  if (found == nullptr || found->values == nullptr) return {};
  return found->values(words, agent);
}

}  // namespace ZelAgent
