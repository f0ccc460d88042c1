#include "agent/serve/console/Asker.h"

#include <ostream>

#include "Mox/QuotedString.h"
#include "agent/serve/protocol/SocketAddress.h"

namespace ZelAgent {

void Asker::needDaemon() const {
  static_cast<void>(client_.ask({"", false}));
}

ExitStatus Asker::ask(const std::string& command) {
  const Answer answer = client_.ask({command, json_});
  if (answer.status != ExitStatus::success) {
    showError(answer.output.get<std::string>());
  } else if (json_) {
    out_ << oneLine(answer.output) << '\n';
  } else {
    out_ << answer.output.get<std::string>();
  }
  out_.flush();
  return answer.status;
}

ExitStatus Asker::askAnyway(const std::string& command) {
  try {
    return ask(command);
  } catch (const SocketError& error) {
    showError(error.what());
    return ExitStatus::failure;
  }
}

std::vector<std::string> Asker::completionsOf(const std::string& line) const {
  try {
    const Answer answer = client_.ask({"complete " + Mox::quoted(line), true});
    if (answer.status == ExitStatus::success) return answer.output.get<std::vector<std::string>>();
  } catch (const SocketError&) {
    // Without a daemon there is nothing to offer; asking will say why.
  }
  return {};
}

void Asker::showError(const std::string& what) {
  out_.flush();
  err_ << "error: " << what << std::endl;
}

}  // namespace ZelAgent
