#include "agent/serve/daemon/FailureLines.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "agent/language/Limits.h"

namespace ZelAgent {

FailureLines::FailureLines(Scheduler& scheduler, Print print)
    : print_(std::move(print)),
      seconds_(scheduler.every(std::chrono::seconds(1), [this] { endSecond(); })) {}

void FailureLines::failed(const std::string& subject, const std::string& why) {
  const auto found = subjects_.find(subject);
  if (found != subjects_.end()) return change(*found, why);
  if (subjects_.size() == Limits::logSubjects) return leaveOut(1);
  change(*subjects_.emplace(subject, Subject()).first, why);
}

void FailureLines::recovered(const std::string& subject) {
  const auto found = subjects_.find(subject);
  if (found != subjects_.end()) change(*found, std::nullopt);
}

void FailureLines::gone(const std::string& subject) {
  const auto found = subjects_.find(subject);
  if (found == subjects_.end()) return;
  found->second.failure.reset();
  found->second.unprinted = 0;
  if (found->second.left == 0) subjects_.erase(found);
}

void FailureLines::change(Subjects::reference entry, std::optional<std::string> failure) {
  Subject& subject = entry.second;
  if (subject.failure == failure) return;
  subject.failure = std::move(failure);
  if (subject.left == 0) {
    subject.left = static_cast<unsigned>(Limits::logPause.count());
    subject.lines = 0;
  }
  if (subject.lines == Limits::logLinesOfASubject) {
    ++subject.unprinted;
  } else {
    print(entry);
  }
}

void FailureLines::print(Subjects::reference entry) {
  auto& [name, subject] = entry;
  ++subject.lines;
  const unsigned unprinted = std::exchange(subject.unprinted, 0);
  if (printed_ == Limits::logLinesInASecond) return leaveOut(unprinted + 1);
  if (printed_++ == 0) seconds_->start();
  std::string line = subject.failure ? "warning: not programmed: " + name + ": " + *subject.failure
                                     : "programmed again: " + name;
  if (unprinted > 0) line += "; changes before this one: " + std::to_string(unprinted);
  print_(subject.failure ? LogPriority::warning : LogPriority::notice, line);
}

void FailureLines::leaveOut(unsigned lines) {
  if (printed_ == 0 && leftOut_ == 0) seconds_->start();
  leftOut_ += lines;
}

void FailureLines::endSecond() {
  printed_ = 0;
  if (const unsigned leftOut = std::exchange(leftOut_, 0); leftOut > 0) {
    print_(LogPriority::warning,
           "warning: " + std::to_string(leftOut) + " more lines about programming");
  }
  for (auto entry = subjects_.begin(); entry != subjects_.end();)
    entry = endSecondOf(*entry) ? std::next(entry) : subjects_.erase(entry);
  if (!needsTime()) seconds_->stop();
}

bool FailureLines::endSecondOf(Subjects::reference entry) {
  Subject& subject = entry.second;
  if (subject.left == 0 || --subject.left > 0) return true;
  if (subject.unprinted > 0) {
    subject.left = static_cast<unsigned>(Limits::logPause.count());
    subject.lines = 0;
    print(entry);
  }
  return subject.left > 0 || subject.failure.has_value();
}

bool FailureLines::needsTime() const {
  return printed_ > 0 || leftOut_ > 0 ||
         std::any_of(subjects_.begin(), subjects_.end(),
                     [](const auto& entry) { return entry.second.left > 0; });
}

}  // namespace ZelAgent
