#include "agent/serve/protocol/Request.h"

#include <limits>
#include <nlohmann/json.hpp>

#include "agent/config/JsonText.h"
#include "agent/language/Errors.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

constexpr const char* expectedForm = R"({"command": "...", "json": true|false, "columns": N})";

bool isUtf8(const std::string& text) {
  try {
    return !json(text).dump().empty();  // throws for bytes that are not UTF-8
  } catch (const json::type_error&) {
    return false;
  }
}

void requireText(const std::string& line) {
  if (line.find('\0') != std::string::npos) {
    throw RequestError("a request must be text, found a NUL byte");
  }
  if (!isUtf8(line)) {
    throw RequestError("a request must be UTF-8, found " + inQuotes(line) +
                       "; other bytes are quoted, as '\\xff'");
  }
}

json parse(const std::string& line) {
  try {
    return parseJson(line, "request");
  } catch (const ConfigError& error) {
    throw RequestError(std::string(error.what()) + "; a request must be " + expectedForm);
  }
}

std::string textOf(const json& member) {
  if (!member.is_string()) throw RequestError("request: member command must be a text");
  return member.get<std::string>();
}

bool flagOf(const json& member) {
  if (!member.is_boolean()) throw RequestError("request: member json must be true or false");
  return member.get<bool>();
}

std::uint16_t columnsOf(const json& member) {
  constexpr auto most = std::numeric_limits<std::uint16_t>::max();
  if (!member.is_number_unsigned() || member > most) {
    throw RequestError("request: member columns must be a number from 0 to " +
                       std::to_string(most));
  }
  return member.get<std::uint16_t>();
}

Request fromJson(const json& document) {
  Request request;
  for (const auto& [name, member] : document.items()) {
    if (name == "command") {
      request.command = textOf(member);
    } else if (name == "json") {
      request.asJson = flagOf(member);
    } else if (name == "columns") {
      request.columns = columnsOf(member);
    } else {
      throw RequestError("request: unknown member " + inQuotes(name) + "; a request must be " +
                         expectedForm);
    }
  }
  if (!document.contains("command")) {
    throw RequestError(std::string("request: member command is missing; a request must be ") +
                       expectedForm);
  }
  return request;
}

}  // namespace

Framing framingOf(const std::string& line) {
  return line.starts_with('{') ? Framing::json : Framing::text;
}

Request readRequest(const std::string& line) {
  requireText(line);
  if (framingOf(line) == Framing::text) return {line, false};
  return fromJson(parse(line));
}

std::string toLine(const Request& request) {
  json document{{"command", request.command}, {"json", request.asJson}};
  if (request.columns > 0) document["columns"] = request.columns;
  return document.dump(-1, ' ', false, json::error_handler_t::replace) + '\n';
}

void RequestLines::append(std::string_view bytes) {
  if (isBroken_) return;
  bytes_.erase(0, taken_);
  searched_ -= taken_;
  if (newline_ != none) newline_ -= taken_;
  taken_ = 0;
  bytes_ += bytes;
  findNewline();
}

void RequestLines::findNewline() {
  if (newline_ != none) return;
  newline_ = bytes_.find('\n', searched_);
  searched_ = newline_ == none ? bytes_.size() : newline_;
}

bool RequestLines::hasNext() const noexcept {
  if (isBroken_) return false;
  const std::size_t left = bytes_.size() - taken_;
  return newline_ != none || left > longest || (isEnded_ && left > 0);
}

RequestLine RequestLines::next() {
  const std::size_t size = (newline_ == none ? bytes_.size() : newline_) - taken_;
  if (size > longest) return takeBeginning();
  RequestLine line{newline_ == none ? RequestLine::Kind::unfinished : RequestLine::Kind::whole,
                   bytes_.substr(taken_, size)};
  taken_ = newline_ == none ? bytes_.size() : newline_ + 1;
  searched_ = taken_;
  newline_ = none;
  findNewline();
  return line;
}

RequestLine RequestLines::takeBeginning() {
  isBroken_ = true;
  RequestLine line{RequestLine::Kind::tooLong, bytes_.substr(taken_, shownOfTooLong)};
  std::string().swap(bytes_);
  taken_ = 0;
  return line;
}

}  // namespace ZelAgent
