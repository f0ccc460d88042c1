#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace ZelAgent {

/// Shows on a terminal what takes long, and how far it is: "applying big.json: 120,000 of 1,000,000
/// rules".
///
/// It prints one line after the first second, and renews it in place at most five times a second.
/// Before the first step the line has no number. The end of the work erases the line. Without an
/// output it prints nothing.
///
///     Progress progress(Progress::terminal(STDERR_FILENO));
///     progress.begin("forwarding", "packets", 0);
///     progress.step();
///     progress.end();
class Progress final {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Output = std::function<void(std::string_view)>;
  using Clock = std::function<Time()>;

  explicit Progress(Output output, Clock clock = std::chrono::steady_clock::now);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  /// Ends the work.
  ~Progress() { end(); }

  /// Writes to the descriptor if it is a terminal, and never waits for it. Empty otherwise.
  [[nodiscard]] static Output terminal(int descriptor);

  /// Begins work of `total` steps, or of an unknown number if it is 0. `unit` names the steps.
  void begin(std::string what, std::string unit, std::uint64_t total);
  /// One step was made.
  void step();
  /// Work that is no step was done. Steps and looks read the clock once in `stepsOfALook` calls.
  void look();
  void end();

  static constexpr std::uint64_t stepsOfALook = 64;

 private:
  void show();
  [[nodiscard]] std::string text() const;

  Output output_;
  Clock clock_;
  std::string what_;
  std::string unit_;
  std::uint64_t total_ = 0;
  std::uint64_t done_ = 0;
  std::uint64_t looks_ = 0;
  Time next_;
  bool isShown_ = false;
};

/// Work that ends with this object.
class ProgressOf final {
 public:
  /// As `Progress::begin`. The progress must outlive this.
  ProgressOf(Progress& progress, std::string what, std::string unit, std::uint64_t total = 0)
      : progress_(progress) {
    progress_.begin(std::move(what), std::move(unit), total);
  }
  ProgressOf(const ProgressOf&) = delete;
  ProgressOf& operator=(const ProgressOf&) = delete;
  ~ProgressOf() { progress_.end(); }

 private:
  Progress& progress_;
};

}  // namespace ZelAgent
