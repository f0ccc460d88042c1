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
  std::string bytes;
  std::istringstream lines(textOf(answer));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with('.')) bytes += '.';
    bytes += line + '\n';
  }
  return bytes + ".\n";
}

}  // namespace ZelAgent
