// Calls the command line of the agent in the process of the test.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ZelAgent {

struct CallOutcome {
  int status = -1;
  std::string out;
  std::string err;

  // The documents of --json, in order.
  [[nodiscard]] std::vector<nlohmann::json> documents() const;
};

[[nodiscard]] CallOutcome callAgent(const std::vector<std::string>& arguments);

// The same where standard output cannot be written.
[[nodiscard]] CallOutcome callAgentWithoutOutput(const std::vector<std::string>& arguments);

[[nodiscard]] std::string exampleFile(const std::string& name);

}  // namespace ZelAgent
