#include "agent/commands/served/ServedCommands.h"
#include "agent/reports/InterfaceReport.h"

namespace ZelAgent {

ReportPagesPtr showInterfaces(const CommandCall& call) {
  return interfacePages(interfaceStates(call.served.agent()), call.asJson);
}

ReportPagesPtr showPolicies(const CommandCall& call) {
  return policyPages(policyStates(call.served.agent().configuration()), call.asJson);
}

}  // namespace ZelAgent
