#include "tests/agent/serve/simulator/ExpectedAnswer.h"

#include <nlohmann/json.hpp>

#include "Mox/QuotedString.h"

namespace ZelAgent {
namespace {

using nlohmann::json;

struct Received {
  int status = 0;
  json output;
};

constexpr std::string_view errorMark = "error: ";
constexpr std::string_view end = ".\n";

Received readAnswer(const std::string& bytes, Framing framing) {
  if (framing == Framing::json) {
    const json line = json::parse(bytes);
    return {line.at("status").get<int>(), line.at("output")};
  }
  const std::string text = bytes.substr(0, bytes.size() - end.size());
  // The text does not say which error it is.
  return {text.starts_with(errorMark) ? -1 : 0, text};
}

std::string withoutWarnings(std::string text) {
  while (text.starts_with("warning: "))
    text.erase(0, text.find('\n') + 1);
  return text;
}

bool namesEvent(const Received& received, const ExpectedAnswer& expected) {
  if (expected.asJson) return received.output.at("event").at("text") == expected.event;
  const std::string text = withoutWarnings(received.output.get<std::string>());
  return text.substr(0, text.find('\n')) == expected.event;
}

std::string textOf(const json& output) {
  return output.is_string() ? output.get<std::string>() : output.dump();
}

bool hasStatus(const Received& received, const ExpectedAnswer& expected) {
  const int status = static_cast<int>(expected.status);
  return received.status == status || (received.status == -1 && status != 0);
}

std::string firstWrong(const Received& received, const ExpectedAnswer& expected) {
  if (!hasStatus(received, expected)) return "it has another status";
  if (!expected.event.empty() && !namesEvent(received, expected)) {
    return "it does not name the event";
  }
  if (expected.isEmpty) {
    return received.output == (expected.asJson ? json() : json("")) ? "" : "it is not empty";
  }
  if (textOf(received.output).find(expected.part) == std::string::npos) {
    return "it does not contain " + Mox::quoted(expected.part);
  }
  return "";
}

}  // namespace

std::optional<std::size_t> sizeOfAnswer(std::string_view bytes, Framing framing) {
  if (framing == Framing::json) {
    const std::size_t newline = bytes.find('\n');
    return newline == std::string_view::npos ? std::nullopt : std::optional(newline + 1);
  }
  if (bytes.starts_with(end)) return end.size();
  const std::size_t dot = bytes.find("\n.\n");
  return dot == std::string_view::npos ? std::nullopt : std::optional(dot + 1 + end.size());
}

std::string differenceOf(const std::string& bytes, const ExpectedAnswer& expected) {
  std::string wrong;
  try {
    wrong = firstWrong(readAnswer(bytes, expected.framing), expected);
  } catch (const json::exception& error) {
    wrong = error.what();
  }
  if (wrong.empty()) return "";
  return "the request " + Mox::quoted(expected.request) + " got a wrong answer: " + wrong + ": " +
         Mox::quoted(bytes);
}

}  // namespace ZelAgent
