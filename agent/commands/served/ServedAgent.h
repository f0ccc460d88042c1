#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "agent/model/events/EventPlayer.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

/// Where the configuration in force came from.
enum class ConfigurationSource : std::uint8_t { start, reload, event };

struct ConfigurationRecord {
  std::string file;  // what start and reload read
  std::string inForce;
  ConfigurationSource source = ConfigurationSource::start;
  std::uint64_t reloadsApplied = 0;
  std::uint64_t reloadsRefused = 0;
  std::optional<std::string> refusal;  // of the last reload, if it was refused
};

/// An agent that runs for long and is configured again and again, with a record of its
/// configuration. A wrong configuration changes nothing but the record.
class ServedAgent final {
 public:
  ServedAgent(std::string file, std::uint32_t chipCapacity);

  /// Applies the file for the first time. Returns warnings. Throws a `ConfigError`.
  std::vector<std::string> start();
  /// Applies the file as it is now, in place of what is in force. Otherwise as `start`.
  std::vector<std::string> reload();
  /// Throws an `EventError`.
  EventEffects play(const Event& event);

  [[nodiscard]] ForwardingAgent& agent() noexcept { return agent_; }
  [[nodiscard]] const ConfigurationRecord& record() const noexcept { return record_; }

 private:
  std::vector<std::string> applyFile(ConfigurationSource source);

  ForwardingAgent agent_;
  ConfigurationRecord record_;
};

}  // namespace ZelAgent
