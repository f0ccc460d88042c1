// Runs the real agent as a process of its own, as an operator would.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ZelAgent {

struct AgentOutcome {
  int status = -1;  // the exit status; -1 where the agent did not exit by itself
  std::string out;
  std::string err;

  // The documents of --json, in order.
  [[nodiscard]] std::vector<nlohmann::json> documents() const;
};

[[nodiscard]] AgentOutcome runAgent(std::vector<std::string> arguments);

// The same with standard output going to a file that already exists.
[[nodiscard]] AgentOutcome runAgentInto(const std::string& file,
                                        std::vector<std::string> arguments);

// Writes a file of the test that runs, and gives its path.
[[nodiscard]] std::string writeFile(const std::string& name, const std::string& text);

[[nodiscard]] std::string examplePath(const std::string& name);

}  // namespace ZelAgent
