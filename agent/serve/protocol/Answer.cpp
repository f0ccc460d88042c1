#include "agent/serve/protocol/Answer.h"

#include <sstream>

#include "agent/language/Words.h"

namespace ZelAgent {
namespace {

std::string textOf(const Answer& answer) {
  if (!answer.output.is_string()) return oneLine(answer.output);
  const auto text = answer.output.get<std::string>();
  return answer.status == ExitStatus::success ? text : joined(errorLines(text), "\n");
}

}  // namespace

std::string toBytes(const Answer& answer, Framing framing) {
  if (framing == Framing::json) {
    return oneLine({{"status", static_cast<int>(answer.status)}, {"output", answer.output}}) + '\n';
  }
  return textLines(textOf(answer)) + endOfText;
}

std::string textLines(const std::string& output) {
  std::string bytes;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with('.')) bytes += '.';
    bytes += line + '\n';
  }
  return bytes;
}

}  // namespace ZelAgent
