#pragma once

#include <csignal>

namespace ZelAgent {

/// Holds back the signals that end a process, so that unfinished files can be removed first. A
/// signal that arrives during the lifetime of this object is delivered at its end. Signals that the
/// process ignores are still ignored.
class HeldSignals final {
 public:
  HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;
  ~HeldSignals();

  /// Whether such a signal has arrived.
  [[nodiscard]] bool anyArrived() const noexcept;

 private:
  sigset_t held_{};
  sigset_t before_{};
};

}  // namespace ZelAgent
