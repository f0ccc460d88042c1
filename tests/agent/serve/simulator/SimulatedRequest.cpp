#include "tests/agent/serve/simulator/SimulatedRequest.h"

#include <utility>

namespace ZelAgent {
namespace {

std::string commandOf(const RequestKind& kind) {
  struct Visitor {
    std::string operator()(const Event& event) const { return toText(event); }
    std::string operator()(const ReloadCommand& /*reload*/) const { return "reload"; }
    std::string operator()(const ShowConfig& /*show*/) const { return "show config"; }
    std::string operator()(const ShowActions& /*show*/) const { return "show actions"; }
    std::string operator()(const OtherCommand& command) const { return command.text; }
    std::string operator()(const NoCommand& command) const { return command.text; }
    std::string operator()(const WrongRequest& wrong) const { return wrong.text; }
    std::string operator()(const TooLongLine& /*line*/) const {
      return std::string(RequestLines::longest + 1, 'x');
    }
    std::string operator()(const UnfinishedLine& /*line*/) const { return ""; }
  };
  return std::visit(Visitor{}, kind);
}

}  // namespace

SimulatedRequest requestOf(RequestKind kind, Framing framing, bool asJson) {
  const std::string command = commandOf(kind);
  const std::string bytes = framing == Framing::json ? toLine({command, asJson}) : command + '\n';
  return {std::move(kind), bytes, framing, asJson};
}

}  // namespace ZelAgent
