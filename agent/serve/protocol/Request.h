// Why: programs ask in JSON and people in plain lines, over the same socket.
// Always: a line that begins with '{' is `{"command": "...", "json": true|false}`, of which `json`
// may be left out, and anything else in it is an error; every other line is itself the command.
// Either is UTF-8 without NUL bytes, or an error.
#pragma once

#include <string>

namespace ZelAgent {

enum class Framing { text, json };

struct Request {
  std::string command;
  bool asJson = false;  // the output, whatever the framing
};

[[nodiscard]] Framing framingOf(const std::string& line);
[[nodiscard]] Request readRequest(const std::string& line);
// The same request as a line of JSON, with its line end.
[[nodiscard]] std::string toLine(const Request& request);

}  // namespace ZelAgent
