// Fuzzes the configuration reader. The input is one document, or several, separated by NUL bytes.
//
// The reader refuses a document by printable lines that begin with the name of the file, or returns
// a configuration with the properties that `Configuration.h` lists. A second read returns an equal
// configuration, and so does a lenient one. The valid documents are applied to an agent one after
// the other. The agent then has the same rules, users and statuses as an agent with only the last
// document. Without a configuration it has none.

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "agent/config/OpenConfigReader.h"
#include "agent/language/Errors.h"
#include "fuzz/AgentChecks.h"
#include "fuzz/Must.h"

namespace {

using Fuzz::must;
using namespace ZelAgent;  // NOLINT(google-build-using-namespace): all checked names are in it

constexpr const char* fileName = "FILE";
constexpr std::uint32_t roomyChip = 10000;

bool isName(const std::string& name) {
  return !name.empty() && name.size() <= 100;
}

bool isNameOrNone(const std::string& name) {
  return name.empty() || isName(name);
}

// Whether `keyOf` returns a different key for each item.
template <class Items, class KeyOf>
bool areUnique(const Items& items, KeyOf keyOf) {
  std::set<decltype(keyOf(*items.begin()))> keys;
  for (const auto& item : items)
    keys.insert(keyOf(item));
  return keys.size() == items.size();
}

bool isOf(const std::optional<IpPrefix>& prefix, const std::optional<IpFamily>& family) {
  return !prefix || (family == prefix->address.family &&
                     Ip::firstBits(prefix->address, prefix->length) == prefix->address);
}

void checkMatch(const RuleMatch& match) {
  must(match.family || match == RuleMatch{}, "without a family there is no other field");
  must(isOf(match.source, match.family) && isOf(match.destination, match.family),
       "prefixes of a rule are of its family");
  must(match.dscp.value_or(0) < 64, "a DSCP has six bits");
  must(
      !match.dscp || match.dscpSet.empty() ||
          std::find(match.dscpSet.begin(), match.dscpSet.end(), *match.dscp) != match.dscpSet.end(),
      "a DSCP is in the set beside it");
  const bool hasPorts = !match.sourcePorts.empty() || !match.destinationPorts.empty();
  must(!hasPorts || match.protocol == 6 || match.protocol == 17, "ports are of TCP or UDP");
  must(match.tcpFlags.empty() || match.protocol == 6, "flags are of TCP");
  must(std::all_of(match.dscpSet.begin(), match.dscpSet.end(),
                   [](std::uint8_t dscp) { return dscp < 64; }),
       "each DSCP of a set has six bits");
}

void checkAction(const RuleAction& action) {
  if (const auto* const lookUp = std::get_if<LookUp>(&action)) {
    must(isName(lookUp->vrf), "a rule looks up in a VRF");
  }
  if (const auto* const decap = std::get_if<Decapsulate>(&action)) {
    must(isName(decap->decapVrf), "a rule decapsulates in a VRF");
    must(isNameOrNone(decap->fallbackVrf) && isNameOrNone(decap->postDecapVrf),
         "the further VRFs of a rule are names");
  }
}

void checkPolicy(const Policy& policy) {
  must(!policy.policyId.empty(), "a policy has a name");
  const auto sequenceOf = [](const Rule& rule) { return rule.sequenceId; };
  must(areUnique(policy.rules, sequenceOf), "sequence numbers are unique");
  must(std::is_sorted(policy.rules.begin(), policy.rules.end(),
                      [](const Rule& a, const Rule& b) { return a.sequenceId < b.sequenceId; }),
       "rules are in the order in which they are tried");
  for (const Rule& rule : policy.rules) {
    checkMatch(rule.match);
    checkAction(rule.action);
  }
}

void checkApplied(const std::string& policyId, PolicyType type, const NetworkInstance& instance) {
  must(policyId.empty() || std::any_of(instance.policies.begin(), instance.policies.end(),
                                       [&](const Policy& policy) {
                                         return policy.policyId == policyId && policy.type == type;
                                       }),
       "a binding names a policy of its own instance and of the type of its leaf");
}

void checkBinding(const PolicyBinding& binding, const NetworkInstance& instance) {
  must(!binding.interface.empty(), "a binding names an interface");
  checkApplied(binding.policyId, PolicyType::vrfSelection, instance);
  checkApplied(binding.forwardingPolicyId, PolicyType::forwarding, instance);
}

void checkInstance(const NetworkInstance& instance) {
  must(isName(instance.name) && isNameOrNone(instance.fallback), "instances have names");
  must(instance.name != defaultInstanceName, "the default instance has the system's name");
  must((instance.name == defaultVrfName) == (instance.type == InstanceType::defaultInstance),
       "the default instance is the one of that name");
  must(areUnique(instance.policies, [](const Policy& policy) { return policy.policyId; }),
       "policies are unique in their instance");
  for (const Policy& policy : instance.policies)
    checkPolicy(policy);
  for (const PolicyBinding& binding : instance.policyBindings)
    checkBinding(binding, instance);
}

void checkConfiguration(const ReadConfiguration& read) {
  const auto& instances = read.configuration.networkInstances;
  must(areUnique(instances, [](const NetworkInstance& instance) { return instance.name; }),
       "names of instances are unique");
  for (const NetworkInstance& instance : instances)
    checkInstance(instance);
  for (const std::string& warning : read.warnings)
    Fuzz::checkError(warning, std::string(fileName) + ": ");
}

void checkErrors(std::string_view lines) {
  while (true) {
    const std::size_t end = lines.find('\n');
    Fuzz::checkError(lines.substr(0, end), std::string(fileName) + ":");
    if (end == std::string_view::npos) return;
    lines.remove_prefix(end + 1);
  }
}

std::optional<Configuration> configurationIn(const std::string& document) {
  try {
    ReadConfiguration read = readOpenConfig(document, fileName);
    checkConfiguration(read);
    must(readOpenConfig(document, fileName).configuration == read.configuration,
         "a document is read alike each time");
    must(readOpenConfig(document, fileName, Leniency::lenient).configuration == read.configuration,
         "a lenient reader leaves nothing of a right document out");
    return std::move(read.configuration);
  } catch (const ConfigError& error) {
    checkErrors(error.what());
    return std::nullopt;
  }
}

std::vector<Configuration> configurationsIn(std::string_view documents) {
  std::vector<Configuration> right;
  while (!documents.empty()) {
    const std::string document(documents.substr(0, documents.find('\0')));
    documents.remove_prefix(std::min(document.size() + 1, documents.size()));
    if (auto configuration = configurationIn(document)) right.push_back(std::move(*configuration));
  }
  return right;
}

void applyOneAfterTheOther(const std::vector<Configuration>& configurations) {
  ServedAgent served(fileName, roomyChip);
  ForwardingAgent& agent = served.agent();
  KeptFacts facts(roomyChip);
  for (const Configuration& configuration : configurations) {
    agent.apply(configuration);
    facts.configurationIs(configuration);
    Fuzz::checkAgent(agent, agent.chip());
  }
  Fuzz::checkAsFresh(served, facts, Scope::everything);
  agent.removeAll();
  must(agent.statuses().empty() && agent.chip().resources().empty() && agent.rules().empty(),
       "without a configuration nothing is left");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto configurations = configurationsIn({reinterpret_cast<const char*>(data), size});
  if (!configurations.empty()) applyOneAfterTheOther(configurations);
  return 0;
}
