#pragma once

#include <cstdint>
#include <string>

#include "agent/config/Configuration.h"
#include "agent/language/Progress.h"

namespace ZelAgent {

class ForwardingAgent;

/// Shows how many rules of the chip have changed, as long as it exists. It is the observer of the
/// agent's chip.
class ApplyProgress final {
 public:
  /// The agent and the progress must outlive this. `rules` is the number of all, 0 if unknown.
  ApplyProgress(ForwardingAgent& agent, Progress& progress, const std::string& file,
                std::uint64_t rules);
  ApplyProgress(const ApplyProgress&) = delete;
  ApplyProgress& operator=(const ApplyProgress&) = delete;
  ~ApplyProgress();

 private:
  ForwardingAgent& agent_;
  Progress& progress_;
};

/// The number of rules that the configuration puts on its interfaces.
[[nodiscard]] std::uint64_t rulesOnInterfaces(const Configuration& configuration);

}  // namespace ZelAgent
