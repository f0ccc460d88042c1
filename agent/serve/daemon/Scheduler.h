#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace ZelAgent {

/// A call that is repeated from `start` to `stop`. The call may destroy this object.
class RepeatedCall {
 public:
  RepeatedCall() = default;
  RepeatedCall(const RepeatedCall&) = delete;
  RepeatedCall& operator=(const RepeatedCall&) = delete;
  /// Stops.
  virtual ~RepeatedCall() = default;

  virtual void start() = 0;
  virtual void stop() noexcept = 0;
};

/// Makes calls later, one after the other, on the thread of its user. No call is made during
/// `start` or `stop`.
class Scheduler {
 public:
  using Call = std::function<void()>;

  /// A call at the end of each period, of which the first begins at `start`. A period is at least
  /// 1 ms.
  [[nodiscard]] virtual std::unique_ptr<RepeatedCall> every(std::chrono::milliseconds period,
                                                            Call call) = 0;
  /// A call in each round of the loop. The loop does not sleep between them.
  [[nodiscard]] virtual std::unique_ptr<RepeatedCall> everyRound(Call call) = 0;

 protected:
  ~Scheduler() = default;
};

}  // namespace ZelAgent
