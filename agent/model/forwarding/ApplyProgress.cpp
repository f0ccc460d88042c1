#include "agent/model/forwarding/ApplyProgress.h"

#include <map>
#include <variant>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

ApplyProgress::ApplyProgress(ForwardingAgent& agent, Progress& progress, const std::string& file,
                             std::uint64_t rules)
    : agent_(agent), progress_(progress) {
  progress_.begin("applying " + printable(file), "rules", rules);
  agent_.chipObserverIs([this](const ChipCall& call) {
    if (std::holds_alternative<RuleCall>(call)) progress_.step();
  });
}

ApplyProgress::~ApplyProgress() {
  agent_.chipObserverIs({});
  progress_.end();
}

std::uint64_t rulesOnInterfaces(const Configuration& configuration) {
  std::uint64_t rules = 0;
  for (const NetworkInstance& instance : configuration.networkInstances) {
    std::map<std::string, std::uint64_t> ofPolicy;
    for (const Policy& policy : instance.policies)
      ofPolicy[policy.policyId] = policy.rules.size();
    for (const PolicyBinding& binding : instance.policyBindings)
      rules += ofPolicy[binding.policyId] + ofPolicy[binding.forwardingPolicyId];
  }
  return rules;
}

}  // namespace ZelAgent
