#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/language/TimeText.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/reports/LimitsReport.h"

namespace ZelAgent {

/// How the configuration in force was applied.
enum class ConfigurationSource : std::uint8_t { start, reload, event };

struct ConfigurationRecord {
  std::string file;  // start and reload read it
  std::string inForce;
  ConfigurationSource source = ConfigurationSource::start;
  WallTime appliedAt;
  std::uint64_t reloadsApplied = 0;
  std::uint64_t reloadsRefused = 0;
  // Why the last reload was refused, as one printable line: the first error, and the number of the
  // others. None if it was applied.
  std::optional<std::string> refusal;
  WallTime refusedAt;  // if there is a refusal
};

/// The agent of a daemon, with a record of its configurations. A wrong configuration changes only
/// the record. A reload that fails for another reason is recorded as refused, but may be applied in
/// part.
class ServedAgent final {
 public:
  /// The timeout of clients is only shown. The clock gives the times of the record.
  ServedAgent(std::string file, const ChipOptions& chip,
              std::chrono::milliseconds clientTimeout = Limits::clientTimeout,
              Leniency leniency = Leniency::strict, WallClock clock = systemTime);
  ServedAgent(std::string file, std::uint32_t chipCapacity,
              std::chrono::milliseconds clientTimeout = Limits::clientTimeout,
              WallClock clock = systemTime)
      : ServedAgent(std::move(file), ChipOptions{.capacity = chipCapacity}, clientTimeout,
                    Leniency::strict, std::move(clock)) {}

  /// Applies the file for the first time. Returns warnings. Throws a `ConfigError`.
  std::vector<std::string> start();
  /// Reads the file again and applies it as a change. Records any failure. Otherwise as `start`.
  std::vector<std::string> reload();
  /// Throws an `EventError`.
  EventEffects play(const Event& event);
  /// Replaces the observer, which is called after each of the above that succeeded. An empty one
  /// ends observation.
  void changeObserverIs(std::function<void()> observer) { changeObserver_ = std::move(observer); }

  [[nodiscard]] ForwardingAgent& agent() noexcept { return agent_; }
  /// The limits in force. An event may have changed the capacity of the chip.
  [[nodiscard]] ChangeableLimits limits() noexcept;
  /// How configurations are read.
  [[nodiscard]] Leniency leniency() const noexcept { return leniency_; }
  [[nodiscard]] const ConfigurationRecord& record() const noexcept { return record_; }

 private:
  std::vector<std::string> applyFile(ConfigurationSource source);
  void recordInForce(const std::string& file, ConfigurationSource source);
  void notifyObserver() const;

  ForwardingAgent agent_;
  std::chrono::milliseconds clientTimeout_;
  Leniency leniency_;  // of every configuration that is read
  WallClock clock_;
  ConfigurationRecord record_;
  std::function<void()> changeObserver_;
};

}  // namespace ZelAgent
