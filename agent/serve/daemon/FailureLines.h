#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "agent/language/LogLine.h"
#include "agent/serve/daemon/Scheduler.h"

namespace ZelAgent {

/// Prints a warning when a subject is not programmed, and a notice when it is programmed again.
///
///     warning: not programmed: actionVrf red: failureVrfResourceExhausted: no VRF resource is free
///     programmed again: actionVrf red
///
/// A subject has at most `logLinesOfASubject` lines in `logPause`. If it changed more often, one
/// line after the pause has its present state and the number of changes that were not printed. All
/// subjects together have at most `logLinesInASecond` lines in a second, and at most `logSubjects`
/// are remembered. One line at the end of the second has the number of lines that are left out. So
/// lines and memory are bounded, whatever happens. Limits.h has the numbers.
class FailureLines final {
 public:
  using Print = std::function<void(LogPriority, const std::string&)>;

  /// The scheduler must outlive this.
  FailureLines(Scheduler& scheduler, Print print);
  FailureLines(const FailureLines&) = delete;
  FailureLines& operator=(const FailureLines&) = delete;
  ~FailureLines() = default;

  /// The subject is not programmed. `subject` and `why` are printable.
  void failed(const std::string& subject, const std::string& why);
  /// The subject is programmed. Prints nothing if it has not failed before.
  void recovered(const std::string& subject);
  /// The subject does not exist any more.
  void gone(const std::string& subject);
  /// Whether a subject is remembered. Otherwise `recovered` and `gone` do nothing.
  [[nodiscard]] bool remembersAny() const noexcept { return !subjects_.empty(); }

 private:
  struct Subject {
    std::optional<std::string> failure;  // none while it is programmed
    unsigned lines = 0;                  // in this pause
    unsigned left = 0;                   // seconds of the pause
    unsigned unprinted = 0;              // changes since the last line
  };
  using Subjects = std::map<std::string, Subject>;

  void change(Subjects::reference entry, std::optional<std::string> failure);
  void print(Subjects::reference entry);
  void leaveOut(unsigned lines);
  void endSecond();
  // Returns whether the subject is remembered any longer.
  [[nodiscard]] bool endSecondOf(Subjects::reference entry);
  [[nodiscard]] bool needsTime() const;

  Print print_;
  Subjects subjects_;
  unsigned printed_ = 0;  // lines in this second
  unsigned leftOut_ = 0;  // lines in this second
  std::unique_ptr<RepeatedCall> seconds_;
};

}  // namespace ZelAgent
