#pragma once

#include <stdexcept>

namespace ZelAgent {

/// A configuration, or a file that is named in place of one, cannot be used.
///
/// `what()` is one printable line. It names the file, the place in the file, and what would be
/// right. Nothing of the configuration has been applied when it is thrown.
class ConfigError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An event or a command cannot be read or run.
///
/// `what()` is one printable line, "FORM: WHAT", where FORM is how the event is written. Once the
/// place is known, "FILE:LINE: " stands in front. Nothing of the event has been played.
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
