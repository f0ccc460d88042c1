// Runs the real agent as a process, as an operator would. A run that does not end fails the test,
// and the agent is killed.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/agent/TestFiles.h"

namespace ZelAgent {

struct AgentOutcome {
  int status = -1;  // the exit status; -1 where the agent did not exit by itself
  std::string out;
  std::string err;

  // The documents of --json, in order.
  [[nodiscard]] std::vector<nlohmann::json> documents() const;
};

// The agent of the build, or the one that the environment variable `ZEL_AGENT` names.
[[nodiscard]] std::string agentBinary();

[[nodiscard]] AgentOutcome runAgent(std::vector<std::string> arguments);

// The same with standard output going to a file that already exists.
[[nodiscard]] AgentOutcome runAgentInto(const std::string& file,
                                        std::vector<std::string> arguments);

// The same with standard input coming from a file; it is empty otherwise.
[[nodiscard]] AgentOutcome runAgentReading(const std::string& input,
                                           std::vector<std::string> arguments);

[[nodiscard]] std::string examplePath(const std::string& name);

}  // namespace ZelAgent
