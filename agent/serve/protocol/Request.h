#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "agent/language/Limits.h"

namespace ZelAgent {

enum class Framing { text, json };

/// A request to a daemon.
///
/// A line that begins with '{' is `{"command": "...", "json": true|false, "columns": N}`. Only the
/// member `command` is required, and other members are errors. Every other line is itself the
/// command. Both are UTF-8 without NUL bytes.
struct Request {
  std::string command;
  bool asJson = false;        // whether the output is JSON, in either framing
  std::uint16_t columns = 0;  // the width of the tables in the output; 0 for no limit
};

[[nodiscard]] Framing framingOf(const std::string& line);
/// Throws a `RequestError`.
[[nodiscard]] Request readRequest(const std::string& line);
/// The request as a line of JSON, with its line end.
[[nodiscard]] std::string toLine(const Request& request);

/// A request line, or what arrived in place of one.
struct RequestLine {
  enum class Kind : std::uint8_t {
    whole,
    tooLong,     // the text is the beginning of the line
    unfinished,  // the bytes ended without a newline
  };

  Kind kind = Kind::whole;
  std::string text;  // without the line end
};

/// Cuts the bytes of a client into request lines.
///
/// The bytes may arrive in any pieces. Lines are returned in the order of their bytes. At most the
/// longest line and the last piece are kept. A line that is too long is the last line.
class RequestLines final {
 public:
  static constexpr std::size_t longest = Limits::requestBytes;

  void append(std::string_view bytes);
  /// No more bytes will arrive.
  void end() noexcept { isEnded_ = true; }

  [[nodiscard]] bool hasNext() const noexcept;
  /// Precondition: there is one.
  [[nodiscard]] RequestLine next();

 private:
  static constexpr std::size_t none = std::string::npos;
  static constexpr std::size_t shownOfTooLong = Limits::shownValueBytes;

  void findNewline();
  [[nodiscard]] RequestLine takeBeginning();

  std::string bytes_;
  std::size_t taken_ = 0;       // of bytes_
  std::size_t searched_ = 0;    // of bytes_; no line end is between taken_ and here
  std::size_t newline_ = none;  // the end of the line at taken_, if it has arrived
  bool isEnded_ = false;
  bool isBroken_ = false;  // a line was too long
};

}  // namespace ZelAgent
