#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace ZelAgent {

/// A configuration, or a file that is named in place of one, cannot be used.
///
/// `what()` is one printable line for each thing that is wrong, at most `Limits::shownErrors` and
/// one with the number of the others. A line names the file, the place in the file, and what would
/// be right. Nothing of the configuration has been applied when it is thrown.
class ConfigError final : public std::runtime_error {
 public:
  using Lines = std::vector<std::string>;

  explicit ConfigError(const std::string& what, Lines warnings = {})
      : std::runtime_error(what), warnings_(std::make_shared<const Lines>(std::move(warnings))) {}

  /// The warnings about the same configuration, which only a check of it prints.
  [[nodiscard]] const Lines& warnings() const noexcept { return *warnings_; }

 private:
  std::shared_ptr<const Lines> warnings_;  // shared, so that a copy of the error cannot fail
};

/// An event or a command cannot be read or run.
///
/// `what()` is one printable line, "FORM: WHAT", where FORM is how the event is written. Once the
/// place is known, "FILE:LINE: " stands in front. Further lines follow if the configuration of the
/// event has several errors. Nothing of the event has been played.
class EventError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A file of captured packets cannot be read or written.
///
/// `what()` is one printable line. It names the file and says what would be right.
class CaptureError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A request to a daemon cannot be read. `what()` is one printable line.
class RequestError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A socket cannot be used. `what()` is one printable line that names its path.
class SocketError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace ZelAgent
