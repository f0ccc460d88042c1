#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/config/OpenConfigReader.h"
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

/// A change of the configuration that is made in slices.
struct SlicedChange {
  bool isComplete = false;
  EventEffects effects;        // if it is complete and has not failed
  std::exception_ptr failure;  // null if it has not failed
};
using SlicedChangePtr = std::shared_ptr<const SlicedChange>;

/// The effects of a complete change, with the warnings of its file. Throws its failure.
[[nodiscard]] const EventEffects& effectsOf(const SlicedChange& change);

/// The agent of a daemon, with a record of its configurations. A wrong configuration changes only
/// the record. A reload that fails for another reason is recorded as refused, but may be applied in
/// part.
///
/// After the start a configuration is applied in slices of limited time. If an observer of slices
/// is set, its owner calls `makeSlice` for all but the first. Without one all slices are made at
/// once. When memory runs out during a slice, the process ends by `Duolog::outOfMemory`.
class ServedAgent final {
 public:
  /// How long a slice takes, if nothing else is set. Its last step may take longer.
  static constexpr std::chrono::milliseconds usualSliceTime{10};

  /// The timeout of clients is only shown. The clock gives the times of the record.
  ServedAgent(std::string file, const ChipOptions& chip,
              std::chrono::milliseconds clientTimeout = Limits::clientTimeout,
              Leniency leniency = Leniency::strict, WallClock clock = systemTime);
  ServedAgent(std::string file, std::uint32_t chipCapacity,
              std::chrono::milliseconds clientTimeout = Limits::clientTimeout,
              WallClock clock = systemTime)
      : ServedAgent(std::move(file), ChipOptions{.capacity = chipCapacity}, clientTimeout,
                    Leniency::strict, std::move(clock)) {}
  ServedAgent(const ServedAgent&) = delete;
  ServedAgent& operator=(const ServedAgent&) = delete;
  ~ServedAgent();

  /// Applies the file for the first time. Returns warnings. Throws a `ConfigError`.
  std::vector<std::string> start();
  /// Begins to read the file again and to apply it as a change. Records any failure. Its failure is
  /// a `ConfigError` if the file is wrong. Precondition of this and of all that change the agent:
  /// no change is in progress.
  [[nodiscard]] SlicedChangePtr beginReload();
  /// Begins the same with another file, as the event `config FILE`. Its failure is an `EventError`
  /// if the file is wrong.
  [[nodiscard]] SlicedChangePtr beginFile(const std::string& file);
  /// Makes a reload in one go, for callers without a loop. Throws its failure.
  EventEffects reload();
  /// Plays an event in one go. Throws an `EventError`. `ApplyConfig` makes all slices, for callers
  /// without a loop.
  EventEffects play(const Event& event);
  /// Replaces the observer, which is called after each of the above that succeeded. An empty one
  /// ends observation.
  void changeObserverIs(std::function<void()> observer) { changeObserver_ = std::move(observer); }

  /// Whether a change has slices left.
  [[nodiscard]] bool isChanging() const noexcept { return change_ != nullptr; }
  /// Makes the next slice. Precondition: a change has slices left.
  void makeSlice();
  /// Replaces the observer, which is called when a change has more slices than the first.
  void sliceObserverIs(std::function<void()> observer) { sliceObserver_ = std::move(observer); }
  /// A slice has at least one step, also without time.
  void sliceTimeIs(std::chrono::milliseconds time) noexcept { sliceTime_ = time; }

  [[nodiscard]] ForwardingAgent& agent() noexcept { return agent_; }
  /// The limits in force. An event may have changed the capacity of the chip.
  [[nodiscard]] ChangeableLimits limits() noexcept;
  /// How configurations are read.
  [[nodiscard]] Leniency leniency() const noexcept { return leniency_; }
  [[nodiscard]] const ConfigurationRecord& record() const noexcept { return record_; }

 private:
  struct ChangeInProgress;

  [[nodiscard]] SlicedChangePtr begin(ConfigurationSource source, const std::string& file);
  [[nodiscard]] const SlicedChange& makeAll(const SlicedChangePtr& change);
  [[nodiscard]] ReadConfiguration readFile() const;
  void makeSteps();
  void complete();
  void fail(std::string refusal);
  void end();
  template <class Make>
  void makePart(Make make);
  void recordInForce(const std::string& file, ConfigurationSource source);
  void notifyObserver() const;

  ForwardingAgent agent_;
  std::chrono::milliseconds clientTimeout_;
  Leniency leniency_;  // of every configuration that is read
  WallClock clock_;
  ConfigurationRecord record_;
  std::chrono::milliseconds sliceTime_ = usualSliceTime;
  std::unique_ptr<ChangeInProgress> change_;  // null if there is none
  std::function<void()> changeObserver_;
  std::function<void()> sliceObserver_;
};

}  // namespace ZelAgent
