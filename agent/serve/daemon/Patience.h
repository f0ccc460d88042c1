#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "agent/serve/daemon/Scheduler.h"
#include "agent/serve/daemon/ServerLimits.h"
#include "agent/serve/daemon/Stream.h"

namespace ZelAgent {

/// Limits how long a client may take for an answer.
///
/// The stream is checked twice in each `clientTimeout`. The patience ends after two checks in a row
/// without progress. It also ends when the answer has waited for `answerTimeouts` timeouts,
/// whatever the client has taken.
class Patience final {
 public:
  /// Calls `onEnd` at the end, which may destroy this. With a timeout of 0 there is no end. The
  /// scheduler and the stream must outlive this.
  Patience(Scheduler& scheduler, const Stream& stream, const ServerLimits& limits,
           std::function<void()> onEnd);

  /// An answer waits, of which `unwritten` bytes are left.
  void start(std::size_t unwritten);
  /// No answer waits.
  void stop() noexcept;

 private:
  void check();

  const Stream& stream_;
  std::function<void()> onEnd_;
  std::unique_ptr<RepeatedCall> checks_;  // null without an end
  unsigned mostChecks_;                   // of one answer
  std::size_t unwritten_ = 0;             // at the last check
  unsigned madeChecks_ = 0;               // of this answer
  unsigned quietChecks_ = 0;              // in a row, without progress
};

}  // namespace ZelAgent
