#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace ZelAgent {

/// Shows on a terminal what takes long, and how far it is: "applying big.json: 120,000 of 1,000,000
/// rules".
///
/// It prints one line after the first second, and renews it in place at most five times a second.
/// The end of the work erases the line. Without an output it prints nothing.
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
  /// One step was made. The clock is read once in `stepsOfALook` steps.
  void step();
  void end();

  static constexpr std::uint64_t stepsOfALook = 64;

 private:
  void show();

  Output output_;
  Clock clock_;
  std::string what_;
  std::string unit_;
  std::uint64_t total_ = 0;
  std::uint64_t done_ = 0;
  Time next_;
  bool isShown_ = false;
};

}  // namespace ZelAgent
