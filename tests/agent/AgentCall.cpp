#include "tests/agent/AgentCall.h"

#include <sstream>

#include "agent/CommandLine.h"

namespace ZelAgent {
namespace {

CallOutcome call(const std::vector<std::string>& arguments, bool canBeWritten) {
  std::vector<const char*> pointers{"zel-agent"};
  for (const std::string& argument : arguments)
    pointers.push_back(argument.c_str());
  std::ostringstream out;
  std::ostringstream err;
  if (!canBeWritten) out.setstate(std::ios::badbit);
  const ExitStatus status =
      runCommandLine(static_cast<int>(pointers.size()), pointers.data(), {out, err}, {out, err});
  return {static_cast<int>(status), out.str(), err.str()};
}

}  // namespace

std::vector<nlohmann::json> CallOutcome::documents() const {
  std::vector<nlohmann::json> documents;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);)
    documents.push_back(nlohmann::json::parse(line));
  return documents;
}

CallOutcome callAgent(const std::vector<std::string>& arguments) {
  return call(arguments, true);
}

CallOutcome callAgentWithoutOutput(const std::vector<std::string>& arguments) {
  return call(arguments, false);
}

std::string exampleFile(const std::string& name) {
  return std::string(ZEL_EXAMPLES_DIR) + '/' + name;
}

}  // namespace ZelAgent
